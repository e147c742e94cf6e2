#!/usr/bin/python3
"""The hot key that opens the popover, on an X server and through the desktop portal. Runs inside script/desktop-session:

    script/desktop-session HOST Tests/Desktop/hot_key_test.py PROGRAM

where PROGRAM is tokwatch-desktop, with tokwatch beside it. The portal is fake_portal.py; the other program that wants a
key is this one.
"""

import ctypes
import os
import signal
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../gallery"))
import desktop
from application import Application, names, prepare, press, tokwatch, windows
from desktop import Program, StatusItem, step, until, wait_for

SETTINGS = os.path.join(os.environ["XDG_CONFIG_HOME"], "Tokwatch/Desktop.conf")
CONTROL, ALT, XK_Y = 4, 8, 0x79
BOUND = r"bound CTRL\+ALT\+t"  # what the portal says

x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
errors = []
on_error = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p)(lambda *_: errors.append(1) or 0)
x11.XSetErrorHandler(on_error)
server = ctypes.c_void_p(x11.XOpenDisplay(None))
root = x11.XDefaultRootWindow(server)


def grab(keysym):
    """Whether this program gets the key with Ctrl and Alt."""
    errors.clear()
    x11.XGrabKey(server, x11.XKeysymToKeycode(server, keysym), CONTROL | ALT, root, 0, 1, 1)
    x11.XSync(server, 0)
    return not errors


def choose(line):
    with open(SETTINGS, "w", encoding="utf-8") as file:
        file.write(line + "\n")


def chosen():
    with open(SETTINGS, encoding="utf-8") as file:
        return next((line[7:].strip().strip('"') for line in file if line.startswith("hotKey=")), "")


def toggles(what, keys="ctrl+alt+t"):
    for is_open in (True, False):
        time.sleep(0.4)  # beyond the guard against the click that closed it
        desktop.key(keys)
        wait_for(f"the popover to {'open' if is_open else 'close'} {what}", lambda: bool(windows()) == is_open)


def opens_on(*layout):
    """As soon as the program holds the key of that layout: until then the key does nothing."""
    desktop.run("setxkbmap", *layout)
    time.sleep(0.4)  # as in toggles
    until(f"the popover to open on {layout}", lambda: desktop.key("ctrl+alt+t"), windows, 3)
    time.sleep(0.4)  # it has the keyboard


def says(text):
    wait_for(f"{text!r} at the field", lambda: any(text in name for name in names()))


def record(keys):
    press("Hot key")
    time.sleep(0.3)  # the field has the keyboard, and the hot key is a key like any other
    desktop.key(keys)


def test_x11():
    choose("hotKey=Ctrl+Alt+T")
    with Application() as application:
        wait_for("the registration", StatusItem().is_registered, 30)
        step("opens and closes the popover, whatever the locks and the layout")
        toggles("by the key")
        desktop.key("Num_Lock")
        toggles("with the numbers locked")
        desktop.key("Num_Lock")
        opens_on("us", "dvorak")
        desktop.key("ctrl+alt+t")
        wait_for("the popover to close on another layout", lambda: not windows())
        opens_on("us")

        step("takes no plain letter for the end of a press whose release went elsewhere")
        desktop.run("xdotool", "keydown", "ctrl", "keydown", "alt", "keydown", "t", "click", "1")
        wait_for("the popover to close", lambda: not windows())
        desktop.run("xdotool", "keyup", "t", "keyup", "alt", "keyup", "ctrl")
        time.sleep(0.4)  # as in toggles
        item = StatusItem()
        item.call("Activate", 600, 4)
        wait_for("the popover", windows)
        press("Settings")
        settings = wait_for("the settings window", lambda: windows("Tokwatch Settings"))[0]
        desktop.run("xdotool", "windowfocus", "--sync", settings)
        wait_for("the popover to close", lambda: not windows())
        time.sleep(0.4)
        desktop.key("t")
        time.sleep(0.4)
        assert not windows(), "a plain letter opened the popover"

        step("says that a key is taken, and loses nothing by it")
        assert grab(XK_Y)
        record("ctrl+alt+y")
        says("Another program has Ctrl+Alt+Y. Ctrl+Alt+T stays.")
        desktop.save("hot-key-taken")
        assert chosen() == "Ctrl+Alt+T", chosen()
        toggles("by the key that stays")

        step("records another, and gives it back")
        record("ctrl+alt+u")
        wait_for("the setting", lambda: chosen() == "Ctrl+Alt+U")
        toggles("by the new key", "ctrl+alt+u")
        assert grab(0x74) and not grab(0x75), "the old key was kept, or the new one is not held"
        press("No hot key")
        wait_for("the setting", lambda: chosen() == "")
        wait_for("it to be given back", lambda: grab(0x75))
        step("takes nonsense for none, and says so")
        choose("hotKey=Ctrl+Nonsense\ntheme=7\npinned=maybe\npanelFrames=1 2 3")
        application.restart()
        for name in "hotKey", "theme", "pinned", "panelFrames":
            wait_for("a line in the log", lambda: f"{name} in " in application.complaints(), 30)
        wait_for("the registration", StatusItem().is_registered, 30)


def test_portal():
    portal_program = os.path.join(os.path.dirname(os.path.abspath(__file__)), "fake_portal.py")
    choose("hotKey=Ctrl+Alt+T")
    elsewhere = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    with Program(portal_program, "0") as portal, Application(elsewhere):
        item = StatusItem()
        wait_for("the registration", item.is_registered, 30)
        step("asks the portal where there is no X server, and its key toggles the popover")
        portal.hear(BOUND, 30)
        for is_open in (True, False):
            time.sleep(0.4)
            portal.say("press")
            wait_for("the popover, which takes the tooltip's place", lambda: (item.tooltip == "") == is_open)
        step("has it no more when the portal takes it back")
        portal.say("close")
        portal.say("press")
        assert item.tooltip != "", "a closed session's key was heard"
        step("asks a portal that starts anew, and takes no for an answer")
        portal.end()
        with Program(portal_program, "0", "odd") as odd:
            odd.hear(BOUND, 30)
            odd.say("press")
            assert item.tooltip != "", "an answer of another shape was taken"
        with Program(portal_program, "1") as refusing:
            refusing.hear(BOUND, 30)
            refusing.say("press")
            assert item.tooltip != "" and chosen() == "Ctrl+Alt+T"
            step("does not wait for one that hangs")
            refusing.process.send_signal(signal.SIGSTOP)
            choose("hotKey=Ctrl+Alt+U")
            time.sleep(0.2)
            assert item.get("XAyatanaLabel", seconds=4) is not None, "it waits"
            refusing.process.send_signal(signal.SIGCONT)


prepare()
tokwatch("preferences", "set", "hasCompletedOnboarding", "true")
desktop.move_away()
test_x11()
test_portal()
