#!/usr/bin/python3
"""A desktop's portal that takes pictures: portal.py PICTURE FOLDER. Like GNOME's it saves each as a
new file in FOLDER first and answers a moment later; "Cancel" there makes the user give up, "Wait"
leaves everybody without an answer. After "ready" it prints "interactive", "whole" or "withdrawn".
"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))

from gi.repository import Gio, GLib  # noqa: E402

import bus_service  # noqa: E402

NAME, PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
REQUEST = "org.freedesktop.portal.Request"
XML = ('<node><interface name="org.freedesktop.portal.Screenshot"><method name="Screenshot">'
       '<arg type="s" direction="in"/><arg type="a{sv}" direction="in"/>'
       '<arg type="o" direction="out"/></method></interface>'
       f'<interface name="{REQUEST}"><method name="Close"/></interface></node>')
REQUESTS = Gio.DBusNodeInfo.new_for_xml(XML).interfaces[1]
picture, folder = map(pathlib.Path, sys.argv[1:])
taken = 0


def answer(connection, handle):
    global taken
    results = {}
    if not (folder / "Cancel").exists():
        taken += 1
        file = folder / f"Screenshot from 2026-01-01 10-00-{taken:02}.png"
        file.write_bytes(picture.read_bytes())
        results["uri"] = GLib.Variant("s", file.as_uri())
    response = GLib.Variant("(ua{sv})", (0 if results else 1, results))
    GLib.timeout_add(300, lambda: connection.emit_signal(None, handle, REQUEST, "Response",
                                                         response) is None)


def called(connection, sender, method, arguments):
    options = arguments[1]
    handle = f"{PATH}/request/{sender[1:].replace('.', '_')}/{options['handle_token']}"
    connection.register_object(handle, REQUESTS, lambda *_: print("withdrawn", flush=True), None,
                               None)
    print("interactive" if options["interactive"] else "whole", flush=True)
    if not (folder / "Wait").exists():
        GLib.idle_add(lambda: answer(connection, handle))
    return GLib.Variant("(o)", (handle,))


bus_service.serve(NAME, PATH, XML, called)
