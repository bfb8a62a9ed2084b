"""One object on the session bus, as the desktop's stand-ins in this folder offer it."""

import sys

from gi.repository import Gio, GLib


def serve(name, path, interfaces_xml, called, properties=None):
    """Offers the object under `name` until the process is ended; prints "ready" once it is there.

    called(connection, sender, method, arguments) returns the reply's GLib.Variant, None for an
    empty reply, or NO_REPLY to leave the caller waiting.
    """
    unanswered = []  # a dropped invocation would be answered with an error

    def on_call(connection, sender, _path, _interface, method, arguments, invocation):
        reply = called(connection, sender, method, arguments.unpack())
        if reply is NO_REPLY:
            unanswered.append(invocation)
        else:
            invocation.return_value(reply)

    def on_get(_connection, _sender, _path, _interface, key):
        return properties()[key]

    connection = Gio.bus_get_sync(Gio.BusType.SESSION)
    for interface in Gio.DBusNodeInfo.new_for_xml(interfaces_xml).interfaces:
        connection.register_object(path, interface, on_call, on_get if properties else None, None)

    def lost(*_):
        sys.exit(f"{name} is not to be had")

    Gio.bus_own_name_on_connection(
        connection, name, Gio.BusNameOwnerFlags.DO_NOT_QUEUE,
        lambda *_: print("ready", flush=True), lost)
    GLib.MainLoop().run()


NO_REPLY = object()
