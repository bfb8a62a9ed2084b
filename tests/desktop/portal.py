#!/usr/bin/python3
"""A desktop's portal that takes pictures and has global shortcuts: portal.py PICTURE FOLDER. Like
GNOME's it saves each picture as a new file in FOLDER first and answers a moment later; "Cancel" there
makes the user give up, "Wait" leaves everybody without an answer; "Early" makes it one that, like KDE's of 5.27, has the
shortcuts of which it hears with the session. After "ready" it prints a line for
each "interactive" or "whole" picture, request "withdrawn", "program NAME", shortcut's "session TOKEN"
and "bind ID DESCRIPTION". SIGUSR1 presses the key of the shortcut bound last.
"""

import pathlib
import signal
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))

from gi.repository import Gio, GLib  # noqa: E402

import bus_service  # noqa: E402

NAME, PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
REQUEST, SHORTCUTS = "org.freedesktop.portal.Request", "org.freedesktop.portal.GlobalShortcuts"


def method(name, *types, result='<arg type="o" direction="out"/>'):
    arguments = "".join(f'<arg type="{kind}" direction="in"/>' for kind in types)
    return f'<method name="{name}">{arguments}{result}</method>'


XML = (
    '<node><interface name="org.freedesktop.portal.Screenshot">'
    f'{method("Screenshot", "s", "a{sv}")}</interface>'
    f'<interface name="{SHORTCUTS}">{method("CreateSession", "a{sv}")}'
    f'{method("BindShortcuts", "o", "a(sa{sv})", "s", "a{sv}")}</interface>'
    '<interface name="org.freedesktop.host.portal.Registry">'
    f'{method("Register", "s", "a{sv}", result="")}</interface></node>')
REQUESTS = Gio.DBusNodeInfo.new_for_xml(
    f'<node><interface name="{REQUEST}"><method name="Close"/></interface></node>').interfaces[0]
picture, folder = map(pathlib.Path, sys.argv[1:])
taken = 0


def tell(*words):
    print(*words, flush=True)


def screenshot(_sender, _parent, options):
    tell("interactive" if options["interactive"] else "whole")

    def take():
        global taken
        taken += 1
        file = folder / f"Screenshot from 2026-01-01 10-00-{taken:02}.png"
        file.write_bytes(picture.read_bytes())
        return {"uri": GLib.Variant("s", file.as_uri())}
    return take


def create_session(sender, options):
    token = options["session_handle_token"]
    tell("session", token)

    def session():
        handle = f"{PATH}/session/{sender}/{token}"
        results = {"session_handle": GLib.Variant("s", handle)}
        if (folder / "Early").exists():
            taken = bind_shortcuts(sender, handle, options["shortcuts"], "", {})
            results |= taken()
        return results
    return session


def bind_shortcuts(sender, session, shortcuts, _parent, _options):
    (name, properties), = shortcuts

    def press():
        connection.emit_signal(None, PATH, SHORTCUTS, "Activated",
                               GLib.Variant("(osta{sv})", (session, name, 0, {})))
        return GLib.SOURCE_CONTINUE
    GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGUSR1, press)
    tell("bind", name, properties["description"])
    return lambda: {"shortcuts": GLib.Variant("a(sa{sv})", [(name, {})])}


METHODS = {"Screenshot": screenshot, "CreateSession": create_session,
           "BindShortcuts": bind_shortcuts}


def answer(handle, act):
    asks_user = act.__name__ != "session"
    results = {} if asks_user and (folder / "Cancel").exists() else act()
    response = GLib.Variant("(ua{sv})", (0 if results else 1, results))
    GLib.timeout_add(300, lambda: connection.emit_signal(None, handle, REQUEST, "Response",
                                                         response) is None)


def called(to, sender, name, arguments):
    global connection
    connection = to
    if name == "Register":
        return tell("program", arguments[0])
    sender = sender[1:].replace(".", "_")
    handle = f"{PATH}/request/{sender}/{arguments[-1]['handle_token']}"
    connection.register_object(handle, REQUESTS, lambda *_: tell("withdrawn"), None, None)
    act = METHODS[name](sender, *arguments)
    if not (folder / "Wait").exists():
        GLib.idle_add(lambda: answer(handle, act))
    return GLib.Variant("(o)", (handle,))


bus_service.serve(NAME, PATH, XML, called)
