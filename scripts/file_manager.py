#!/usr/bin/python3
"""A file manager without windows. After "ready" it prints one JSON line for each time that it is
asked to show something: the method's name and the URLs.
"""

import json

import bus_service

NAME = "org.freedesktop.FileManager1"
METHODS = "".join(
    f'<method name="{name}"><arg type="as" direction="in"/><arg type="s" direction="in"/></method>'
    for name in ("ShowFolders", "ShowItems", "ShowItemProperties"))


def called(connection, sender, method, arguments):
    print(json.dumps({"method": method, "urls": arguments[0]}), flush=True)


bus_service.serve(NAME, "/org/freedesktop/FileManager1",
                  f'<node><interface name="{NAME}">{METHODS}</interface></node>', called)
