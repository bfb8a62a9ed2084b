#!/usr/bin/python3
"""A tray without a panel: the StatusNotifierWatcher and the one host it knows.

After "ready" it prints one JSON line for each item that registers: its bus name, its object path
and the time in seconds (CLOCK_MONOTONIC). Whoever wants to click speaks to the item itself.
"""

import json
import time

from gi.repository import GLib

import bus_service

NAME = "org.kde.StatusNotifierWatcher"
PATH = "/StatusNotifierWatcher"
XML = f"""
<node><interface name="{NAME}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>
"""

items = []


def called(connection, sender, method, arguments):
    if method == "RegisterStatusNotifierItem":
        # By the protocol the argument is a bus name; by Ayatana's older habit an object path.
        service = arguments[0]
        bus, path = (sender, service) if service.startswith("/") else (
            service, "/StatusNotifierItem")
        items.append(bus + path)
        print(json.dumps({"time": time.monotonic(), "bus": bus, "path": path}), flush=True)
        connection.emit_signal(None, PATH, NAME, "StatusNotifierItemRegistered",
                               GLib.Variant("(s)", (bus + path,)))


def properties():
    return {"RegisteredStatusNotifierItems": GLib.Variant("as", items),
            "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
            "ProtocolVersion": GLib.Variant("i", 0)}


bus_service.serve(NAME, PATH, XML, called, properties)
