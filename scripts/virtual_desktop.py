#!/usr/bin/python3
"""A private desktop without a screen: display, window manager, session bus, tray and notices.

    with VirtualDesktop() as desktop:
        desktop.spawn("xclock")

Everything lives in a temporary folder and is ended, by process id, with the block. As a program
it runs one command on such a desktop:  virtual_desktop.py COMMAND [ARGUMENT...]
"""

import ctypes
import json
import os
import pathlib
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SCRIPTS = pathlib.Path(__file__).resolve().parent
STARTUP_SECONDS = 20
PR_SET_PDEATHSIG = 1  # linux/prctl.h

# No service folders: nothing is started on demand, so what a test leaves out is really absent.
BUS_CONFIGURATION = """
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/>
  </policy>
</busconfig>
"""


class Timeout(AssertionError):
    pass


def until(condition, what, seconds=10.0, interval=0.01):
    """The first true value of condition(); Timeout naming `what` when it stays false."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise Timeout(f"{what}: not within {seconds:g} s")
        time.sleep(interval)


def _die_with_parent():
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGTERM)


class VirtualDesktop:
    """tray: "item" (StatusNotifierItem), "embed" (XEmbed) or None.
    notices: "normal", "mute" (never answers) or None. bus: False for none at all, which leaves
    out what needs one. home: a folder to use as the home folder instead of a new one.
    """

    def __init__(self, tray="item", notices="normal", bus=True, size=(1920, 1080), home=None):
        self._tray, self._notices, self._bus = tray, notices, bus
        self.size = size
        self.folder = self.home = None
        self._given_home = home
        self.bus_process = None
        self._processes = []
        self._connection = None

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="desktop-"))
        try:
            self._start()
        except BaseException:
            self.close()
            raise
        return self

    def __exit__(self, *_):
        self.close()

    def _start(self):
        self.home = pathlib.Path(self._given_home or self.folder / "home")
        runtime = self.folder / "runtime"
        self.config = self.home / ".config"
        for path in (self.home, self.home / "Desktop", self.config, self.folder / "tmp"):
            path.mkdir(parents=True, exist_ok=True)
        runtime.mkdir(mode=0o700)
        kept = ("PATH", "TZ", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS")
        self.env = {key: os.environ[key] for key in kept if key in os.environ}
        self.env |= {
            "LANG": "C.UTF-8", "HOME": str(self.home), "TMPDIR": str(self.folder / "tmp"),
            "XDG_CONFIG_HOME": str(self.config), "XDG_RUNTIME_DIR": str(runtime),
            "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_STATE_HOME": str(self.home / ".local/state"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            # Also without a bus the address is set: libdbus would otherwise start one of its own.
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/bus",
            "QT_QPA_PLATFORM": "xcb", "NO_AT_BRIDGE": "1",
        }
        self._start_display()
        if self._bus:
            self._start_bus(runtime / "bus")
        self._start_window_manager()
        if self._notices and self._bus:
            mute = ["--mute"] if self._notices == "mute" else []
            self._start_service("notification_recorder.py", *mute)
        if self._tray == "item" and self._bus:
            self.start_tray_host()
        elif self._tray == "embed":
            self.start_embedding_tray()
        until(lambda: "_NET_SUPPORTING_WM_CHECK(WINDOW)" in self.root_properties(),
              "window manager", STARTUP_SECONDS)

    def _start_window_manager(self):
        self.spawn("openbox", "--sm-disable", "--config-file", "/etc/xdg/openbox/rc.xml")

    def _start_display(self):
        read_end, write_end = os.pipe()
        width, height = self.size
        self.spawn("Xvfb", "-displayfd", str(write_end), "-screen", "0",
                   f"{width}x{height}x24", "-nolisten", "tcp", "-noreset", pass_fds=[write_end])
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            ready, _, _ = select.select([pipe], [], [], STARTUP_SECONDS)
            number = pipe.readline().strip() if ready else ""
        if not number:
            raise Timeout("Xvfb did not start")
        self.env["DISPLAY"] = f":{number}"

    def _start_bus(self, socket):
        configuration = self.folder / "bus.conf"
        configuration.write_text(BUS_CONFIGURATION.format(socket=socket).lstrip())
        self.bus_process = self.spawn("dbus-daemon", "--nofork", f"--config-file={configuration}")
        until(socket.exists, "session bus", STARTUP_SECONDS)

    def start_embedding_tray(self):
        self.spawn("trayer", "--edge", "top", "--align", "right", "--height", "24")
        until(lambda: self.run("xdotool", "search", "--class", "trayer").stdout, "XEmbed tray",
              STARTUP_SECONDS)

    def start_tray_host(self):
        self._start_service("tray_host.py")

    def start_file_manager(self):
        self._start_service("file_manager.py")

    def _start_service(self, script, *arguments):
        self.spawn("/usr/bin/python3", SCRIPTS / script, *arguments, log=script)
        until(lambda: "ready\n" in self.log(script), script, STARTUP_SECONDS)

    # Processes

    def spawn(self, *command, log=None, env=None, **options):
        """Starts a process that ends with the desktop; output to FOLDER/LOG.log, by default the
        command's name."""
        command = [os.fspath(part) for part in command]
        name = log or os.path.basename(command[0])
        with open(self.folder / f"{name}.log", "ab") as output:
            process = subprocess.Popen(
                command, env={**self.env, **(env or {})}, stdin=subprocess.DEVNULL, stdout=output,
                stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=_die_with_parent,
                **options)
        self._processes.append(process)
        return process

    def run(self, *command, timeout=10, **options):
        """Runs a command to its end; bytes in stdout and stderr."""
        if "input" not in options:
            options.setdefault("stdin", subprocess.DEVNULL)
        options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE} | options
        return subprocess.run([os.fspath(part) for part in command], env=self.env,
                              timeout=timeout, **options)

    def log(self, name):
        """What the processes spawned under that name have printed."""
        path = self.folder / f"{name}.log"
        return path.read_text(errors="replace") if path.exists() else ""

    def end(self, process, seconds=5):
        """Ends a process started here and its children."""
        for number in (signal.SIGTERM, signal.SIGKILL):
            try:
                os.killpg(process.pid, number)
                process.wait(seconds)
                break
            except ProcessLookupError:
                process.wait(seconds)
                break
            except subprocess.TimeoutExpired:
                continue
        if process in self._processes:
            self._processes.remove(process)

    def close(self):
        if self._connection:
            self._connection.close_sync()
            self._connection = None
        while self._processes:
            self.end(self._processes[-1])
        if self.folder:
            shutil.rmtree(self.folder, ignore_errors=True)

    # What the desktop shows

    def root_properties(self):
        return self.run("xprop", "-root").stdout.decode(errors="replace")

    def windows_of(self, window_class):
        """Lines of xwininfo about the windows inside those of a class, e.g. icons in a tray."""
        found = self.run("xdotool", "search", "--class", window_class).stdout.decode().split()
        trees = [self.run("xwininfo", "-id", window, "-tree").stdout for window in found]
        return b"".join(trees).decode(errors="replace").splitlines()

    def clipboard(self, target, seconds=5):
        """The clipboard's bytes as `target`, e.g. "image/png"; None when it is not offered."""
        try:
            result = self.run("xclip", "-selection", "clipboard", "-t", target, "-o",
                              timeout=seconds)
        except subprocess.TimeoutExpired:
            return None
        return result.stdout if result.returncode == 0 else None

    def set_clipboard(self, data, target="UTF8_STRING"):
        # The owner stays behind in the background; its inherited pipes would never close.
        subprocess.run(["xclip", "-selection", "clipboard", "-t", target, "-i"], env=self.env,
                       input=data, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       check=True, timeout=10)

    def notices(self):
        """The notices so far: dictionaries with time, app, title, body."""
        return self._records("notification_recorder.py")

    def tray_items(self):
        """The registrations so far: dictionaries with time, bus, path."""
        return self._records("tray_host.py")

    def _records(self, script):
        lines = self.log(script).splitlines()
        return [json.loads(line) for line in lines if line.startswith("{")]

    def shown_by_file_manager(self):
        """What it was asked to show so far: dictionaries with method, urls."""
        return self._records("file_manager.py")

    def tray_property(self, name):
        return self._call_item("org.freedesktop.DBus.Properties", "Get", "(ss)",
                               ("org.kde.StatusNotifierItem", name))[0]

    def tray_click(self, x=0, y=0, method="Activate"):
        """method: Activate (left), SecondaryActivate (middle) or ContextMenu (right)."""
        self._call_item("org.kde.StatusNotifierItem", method, "(ii)", (x, y))

    def call(self, name, path, interface, method, signature="()", arguments=()):
        """Calls a service on the session bus; its answer's values."""
        from gi.repository import Gio, GLib
        return self.bus().call_sync(
            name, path, interface, method, GLib.Variant(signature, arguments), None,
            Gio.DBusCallFlags.NONE, 10000, None).unpack()

    def bus(self):
        """A connection to the session bus."""
        from gi.repository import Gio
        if not self._connection:
            flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT |
                     Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
            self._connection = Gio.DBusConnection.new_for_address_sync(
                self.env["DBUS_SESSION_BUS_ADDRESS"], flags)
        return self._connection

    def _call_item(self, interface, method, signature, arguments):
        item = self.tray_items()[-1]
        return self.call(item["bus"], item["path"], interface, method, signature, arguments)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__.strip())
    with VirtualDesktop() as one:
        sys.exit(subprocess.call(sys.argv[1:], env=one.env))
