#!/usr/bin/python3
"""A notification service that shows nothing and writes down everything.

    notification_recorder.py [--mute]

After "ready" it prints one JSON line for each notice: time in seconds (CLOCK_MONOTONIC), app,
title, body. With --mute the one who posts is left without an answer, as by a service that hangs.
"""

import json
import sys
import time

from gi.repository import GLib

import bus_service

NAME = "org.freedesktop.Notifications"
XML = f"""
<node><interface name="{NAME}">
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
    <arg type="a{{sv}}" direction="in"/><arg type="i" direction="in"/>
    <arg type="u" direction="out"/>
  </method>
  <method name="CloseNotification"><arg type="u" direction="in"/></method>
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="GetServerInformation">
    <arg type="s" direction="out"/><arg type="s" direction="out"/>
    <arg type="s" direction="out"/><arg type="s" direction="out"/>
  </method>
  <signal name="NotificationClosed"><arg type="u"/><arg type="u"/></signal>
  <signal name="ActionInvoked"><arg type="u"/><arg type="s"/></signal>
</interface></node>
"""

mute = "--mute" in sys.argv[1:]
posted = 0


def called(_connection, _sender, method, arguments):
    global posted
    if method == "Notify":
        app, replaced, _icon, title, body = arguments[:5]
        posted += 1
        print(json.dumps({"time": time.monotonic(), "app": app, "title": title, "body": body}),
              flush=True)
    if mute:
        return bus_service.NO_REPLY
    if method == "Notify":
        return GLib.Variant("(u)", (replaced or posted,))
    if method == "GetCapabilities":
        return GLib.Variant("(as)", (["body"],))
    if method == "GetServerInformation":
        return GLib.Variant("(ssss)", ("recorder", "Marbelot", "1", "1.2"))
    return None


bus_service.serve(NAME, "/org/freedesktop/Notifications", XML, called)
