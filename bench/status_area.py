#!/usr/bin/python3
"""status_area.py: a status area that takes every item and shows none, on the session bus, for as long as that lives. With
one a desktop application stays in it, instead of opening its window. Needs the system's own interpreter, which has gi."""
from gi.repository import Gio, GLib

NAME = "org.kde.StatusNotifierWatcher"
INTERFACE = """<node><interface name="%s">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
</interface></node>""" % NAME
PROPERTIES = {"IsStatusNotifierHostRegistered": GLib.Variant("b", True), "ProtocolVersion": GLib.Variant("i", 0),
              "RegisteredStatusNotifierItems": GLib.Variant("as", [])}


def answer(_bus, _sender, _path, _interface, _method, _arguments, invocation):
    invocation.return_value(None)


def main():
    bus, loop = Gio.bus_get_sync(Gio.BusType.SESSION), GLib.MainLoop()
    bus.register_object("/StatusNotifierWatcher", Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], answer,
                        lambda *asked: PROPERTIES[asked[4]], None)
    for name in ("org.kde.StatusNotifierHost-1", NAME):
        Gio.bus_own_name_on_connection(bus, name, Gio.BusNameOwnerFlags.NONE, None, None)
    loop.run()  # the end of the bus ends the process


if __name__ == "__main__":
    main()
