#!/usr/bin/python3
"""A desktop portal that lends hot keys, and answers everybody who wants to bind one with the number given (0 is yes). Says
what it bound, in another shape if there is a second argument; "press" on its standard input presses it, "change" gives it
another key, "close" takes it back. Each answer has somebody else's before it, who says the opposite.
"""

import sys

import dbus
import dbus.lowlevel
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

INTERFACE = "org.freedesktop.portal.GlobalShortcuts"
SESSION = "/org/freedesktop/portal/desktop/session/only"


def response_at(path, response, results):
    signal = dbus.lowlevel.SignalMessage(path, "org.freedesktop.portal.Request", "Response")
    signal.append(dbus.UInt32(response), dbus.Dictionary(results, signature="sv"), signature="ua{sv}")
    return signal


class Portal(dbus.service.Object):
    def respond(self, options, sender, response, results):
        path = f"/org/freedesktop/portal/desktop/request/{sender[1:].replace('.', '_')}/{options['handle_token']}"

        def send():  # an idle call that returned the message's number would be made again and again
            stranger.send_message(response_at(path, 1 - response, {}))
            stranger.flush()
            bus.send_message(response_at(path, response, results))

        GLib.idle_add(send)
        return dbus.ObjectPath(path)

    @dbus.service.method(INTERFACE, in_signature="a{sv}", out_signature="o", sender_keyword="sender")
    def CreateSession(self, options, sender=None):
        return self.respond(options, sender, 0, {"session_handle": SESSION})

    @dbus.service.method(INTERFACE, in_signature="oa(sa{sv})sa{sv}", out_signature="o", sender_keyword="sender")
    def BindShortcuts(self, session, shortcuts, _parent, options, sender=None):
        assert session == SESSION
        self.id, properties = shortcuts[0]
        print("bound", properties["preferred_trigger"], flush=True)
        bound = [(self.id, dbus.Dictionary({"trigger_description": "Press Ctrl+Alt+T"}, signature="sv"))]
        listed = dbus.Array(bound, signature="(sa{sv})") if len(sys.argv) < 3 else dbus.Array([("open", "x")], signature="(ss)")
        return self.respond(options, sender, int(sys.argv[1]), {"shortcuts": listed})

    @dbus.service.signal(INTERFACE, signature="osta{sv}")
    def Activated(self, session, shortcut, time, options):
        pass


    @dbus.service.signal(INTERFACE, signature="oa(sa{sv})")
    def ShortcutsChanged(self, session, shortcuts):
        pass


class Session(dbus.service.Object):
    @dbus.service.signal("org.freedesktop.portal.Session", signature="a{sv}")
    def Closed(self, details):
        pass


def command(source, _condition):
    word = source.readline().strip()
    if word == "press":
        portal.Activated(dbus.ObjectPath(SESSION), portal.id, 0, {})
    elif word == "change":
        portal.ShortcutsChanged(dbus.ObjectPath(SESSION), [(portal.id, {"trigger_description": "Press Meta+U"})])
    elif word == "close":
        session.Closed({})
    print("done", flush=True)
    return True


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus, stranger = dbus.SessionBus(), dbus.SessionBus(private=True)
name = dbus.service.BusName("org.freedesktop.portal.Desktop", bus)
portal, session = Portal(bus, "/org/freedesktop/portal/desktop"), Session(bus, SESSION)
GLib.io_add_watch(sys.stdin, GLib.IO_IN, command)
GLib.MainLoop().run()
