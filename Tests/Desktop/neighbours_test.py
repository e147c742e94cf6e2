#!/usr/bin/python3
"""What the application has to do with other programs on the desktop: it pastes into their windows, and gives its main
menu to whoever shows such menus. Runs inside script/desktop-session:

    script/desktop-session HOST Tests/Desktop/neighbours_test.py PROGRAM

where PROGRAM is tokwatch-desktop, with tokwatch beside it. With "editor" or "registrar" instead of PROGRAM it is such a
neighbour itself, and prints what it is told.
"""

import os
import subprocess
import sys


def be_editor():
    """A text with the caret in its middle; says what it holds whenever that changes."""
    import gi
    gi.require_version("Gtk", "3.0")
    from gi.repository import Gtk
    window = Gtk.Window(title="Editor")
    view = Gtk.TextView()
    text = view.get_buffer()
    text.set_text("<>")
    text.place_cursor(text.get_iter_at_offset(1))
    text.connect("changed", lambda _: print(repr(text.get_property("text")), flush=True))
    window.add(view)
    window.set_default_size(300, 200)
    window.show_all()
    window.present()
    Gtk.main()


def be_registrar():
    import dbus
    import dbus.mainloop.glib
    import dbus.service
    from gi.repository import GLib
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    name = "com.canonical.AppMenu.Registrar"

    class Registrar(dbus.service.Object):
        @dbus.service.method(name, in_signature="uo", sender_keyword="sender")
        def RegisterWindow(self, window, path, sender):
            menu = dbus.Interface(dbus.SessionBus().get_object(sender, path), "com.canonical.dbusmenu")
            menu.GetLayout(0, -1, ["label"], reply_handler=lambda _, root: self.show(menu, root), error_handler=print)

        def show(self, menu, root):
            (title,) = root[2]
            entries = {str(entry[1].get("label", "-")): entry[0] for entry in title[2]}
            print(title[1]["label"], *entries, flush=True)
            menu.Event(entries["Quit Tokwatch"], "clicked", dbus.Int32(0), dbus.UInt32(0))

    owner = dbus.service.BusName(name, dbus.SessionBus())
    Registrar(dbus.SessionBus(), "/com/canonical/AppMenu/Registrar")
    GLib.MainLoop().run()
    del owner


if sys.argv[1] in ("editor", "registrar"):
    {"editor": be_editor, "registrar": be_registrar}[sys.argv[1]]()
    sys.exit()

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../gallery"))
import dbus
import desktop
from application import PROGRAM, Application, prepare, press, tokwatch, windows
from desktop import StatusItem, step, wait_for

SUMMARY = r"'<(Today|No usage today).*\\nLast 30 days: \$.*· API estimate\\nCodex · Session 60% left.*>'"


def neighbour(kind, **environment):
    os.environ.update(environment)
    return desktop.Program(os.path.abspath(__file__), kind)


def paste_summary():
    subprocess.run([PROGRAM], timeout=10, check=True)
    wait_for("the popover", windows)
    press("Copy or paste the summary")
    press("Paste Summary")


def check_pasting(way, **environment):
    step("pastes " + way)
    with neighbour("editor", **environment) as editor:
        wait_for("the editor", lambda: windows("Editor"))
        paste_summary()
        editor.hear(SUMMARY)
        assert not windows(), "the popover is still there"


def check_copying():
    step("says that it could only copy")
    with desktop.Program("dunst"):
        wait_for("the service", lambda: dbus.SessionBus().name_has_owner("org.freedesktop.Notifications"))
        paste_summary()
        told = lambda: subprocess.run(["dunstctl", "history"], capture_output=True, text=True).stdout
        shown = lambda: subprocess.run(["dunstctl", "count", "displayed"], capture_output=True, text=True).stdout
        wait_for("the word about it", lambda: shown().strip() == "1")
        subprocess.run(["dunstctl", "close-all"], check=True)
        wait_for("the word", lambda: "Copied to the clipboard" in told())


def check_main_menu(application):
    step("has its menu where the desktop shows one, also when that comes late")
    with neighbour("registrar") as registrar:
        subprocess.run([PROGRAM], timeout=10, check=True)
        press("Settings")  # whose window is registered, and at once told to quit
        registrar.hear("Tokwatch Refresh Settings… - Quit Tokwatch")
        wait_for("the end", lambda: not application.is_running())


prepare()
tokwatch("preferences", "set", "hasCompletedOnboarding", "true")
with Application() as application:
    wait_for("the registration", StatusItem().is_registered, 30)
    check_pasting("where the caret is, by the accessibility interface", NO_AT_BRIDGE="0")
    check_pasting("by a key, where there is no such interface", NO_AT_BRIDGE="1")
    check_copying()
    check_main_menu(application)
