#!/usr/bin/python3
"""A private Wayland desktop without screen, GPU or login, with a session bus, tray and notices.

    with WaylandDesktop("sway") as desktop:
        desktop.spawn("foot")

As a program it runs one command on such a desktop:
    wayland_desktop.py sway|kwin|mutter COMMAND [ARGUMENT...]
and exits with 77, having said so, where that compositor is not installed.
"""

import contextlib
import os
import shutil
import signal
import subprocess
import sys

from driver import BIN
from virtual_desktop import STARTUP_SECONDS, VirtualDesktop, until

NOT_INSTALLED = 77  # what CTest takes for a skipped test
PROGRAMS = {"sway": "sway", "kwin": "kwin_wayland", "mutter": "mutter"}
# As in linux/input-event-codes.h.
KEYS = {"Escape": 1, "Return": 28, "a": 30, "c": 46, "b": 48, "F12": 88, "Up": 103}
# The compositor runs this once it is ready. kwin and mutter end with it; sway's would outlive sway.
TELL = """#!/bin/sh
{ echo "WAYLAND_DISPLAY=${WAYLAND_DISPLAY:-wayland-0}"; echo "DISPLAY=$DISPLAY"
  echo "XAUTHORITY=$XAUTHORITY"; echo "SWAYSOCK=$SWAYSOCK"; } > "$0.part"
mv "$0.part" "$0.env"
[ -n "$SWAYSOCK" ] || exec sleep infinity
"""


def installed(kind):
    return shutil.which(PROGRAMS[kind]) is not None


class WaylandDesktop(VirtualDesktop):
    """kind: one of PROGRAMS. xwayland: False for a desktop without X11. bar: whether sway has one, at
    the top. The rest is as for VirtualDesktop."""

    def __init__(self, kind="sway", xwayland=True, bar=False, **options):
        super().__init__(**options)
        self.kind = kind
        self._xwayland, self._bar = xwayland, bar
        self._plugged = None
        self.compositor = None

    def _start_display(self):
        """The compositor needs the bus; see _start_window_manager."""

    def _start_window_manager(self):
        del self.env["QT_QPA_PLATFORM"]  # it is for the program to find out
        tell = self.folder / "tell"
        tell.write_text(TELL)
        tell.chmod(0o700)
        self.env["XDG_SESSION_TYPE"] = "wayland"
        self.compositor = getattr(self, f"_start_{self.kind}")(tell)
        told = tell.with_suffix(".env")
        until(told.exists, f"{self.kind}: {self.log(self.kind)}", STARTUP_SECONDS)
        lines = (line.split("=", 1) for line in told.read_text().splitlines())
        self.env |= {key: value for key, value in lines if value}

    def _start_sway(self, tell):
        # Refuses to run as root, so root runs it under another name.
        as_user = ["unshare", "-U", "--map-user=1000", "--map-group=1000"]
        width, height = self.size
        config = self.folder / "sway.conf"
        config.write_text(f"output HEADLESS-1 resolution {width}x{height}\n"
                          f"xwayland {'force' if self._xwayland else 'disable'}\nexec {tell}\n" +
                          ("bar {\nposition top\ntray_output none\n}\n" if self._bar else ""))
        self.env["XDG_CURRENT_DESKTOP"] = "sway"
        return self.spawn(*(as_user if os.geteuid() == 0 else []), "sway", "-c", config, log="sway",
                          env={"WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman",
                               "WLR_LIBINPUT_NO_DEVICES": "1"})

    def _start_kwin(self, tell):
        # A copy has none of the capabilities that a container may not grant.
        copy = self.folder / "kwin_wayland"
        shutil.copyfile(shutil.which("kwin_wayland"), copy)
        copy.chmod(0o700)
        self.env["XDG_CURRENT_DESKTOP"] = "KDE"
        width, height = self.size
        return self.spawn(copy, "--virtual", "--width", str(width), "--height", str(height),
                          *(["--xwayland"] if self._xwayland else []), "--no-lockscreen",
                          "--no-global-shortcuts", "--exit-with-session", tell, log="kwin")

    def _start_mutter(self, tell):
        self.env["XDG_CURRENT_DESKTOP"] = "GNOME"
        width, height = self.size
        return self.spawn("mutter", "--headless", "--virtual-monitor", f"{width}x{height}",
                          "--wayland", *([] if self._xwayland else ["--no-x11"]), "--", tell,
                          log="mutter")

    def root_properties(self):
        if not self._xwayland:
            return "_NET_SUPPORTING_WM_CHECK(WINDOW)"
        return super().root_properties()

    def clipboard(self, target, seconds=5):
        """As a native program pastes it."""
        try:
            result = self.run("wl-paste", "--no-newline", "--type", target, timeout=seconds)
        except subprocess.TimeoutExpired:
            return None
        return result.stdout if result.returncode == 0 else None

    def set_clipboard(self, data, target="text/plain"):
        subprocess.run(["wl-copy", "--type", target], env=self.env, input=data, check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=10)

    def point(self, x, y, click=False):
        """Moves sway's pointer, as a hand would, and presses its left button."""
        self._hand(f"move {x} {y}", *(["sleep 50", "press", "sleep 50", "release"] if click else []))

    def drag(self, x, y, width, height):
        self._hand(f"move {x} {y}", "sleep 50", "press", f"move {x + width // 2} {y}",
                   f"move {x + width} {y + height}", "sleep 50", "release")

    def _hand(self, *words):
        if not self._plugged:
            width, height = self.size
            self._plugged = subprocess.Popen([BIN / "wayland_hand", str(width), str(height)],
                                           env=self.env, stdin=subprocess.PIPE,
                                           stdout=subprocess.PIPE, text=True)
        self._plugged.stdin.write(" ".join((*words, "done\n")))
        self._plugged.stdin.flush()
        self._plugged.stdout.readline()

    def key(self, name):
        """Presses and releases a key of that name, for whatever window has the focus."""
        self._hand(f"key {KEYS[name]}")

    def close(self):
        if self._plugged:
            self._plugged.communicate()
            self._plugged = None
        super().close()
        if self.compositor:
            # What it was just starting, XWayland for one, heeds nothing milder.
            with contextlib.suppress(ProcessLookupError):
                os.killpg(self.compositor.pid, signal.SIGKILL)

    def offered(self):
        """The types on the clipboard."""
        return self.run("wl-paste", "--list-types").stdout.decode().split("\n")[:-1]


def main():
    if len(sys.argv) < 3 or sys.argv[1] not in PROGRAMS:
        sys.exit(__doc__.strip())
    kind, *command = sys.argv[1:]
    if not installed(kind):
        print(f"{PROGRAMS[kind]} is not installed")
        sys.exit(NOT_INSTALLED)
    with WaylandDesktop(kind) as desktop:
        # The clipboard's tests then run on this desktop instead of one of their own.
        sys.exit(subprocess.call(command, env=desktop.env | {"MARBELOT_TEST_DESKTOP": kind}))


if __name__ == "__main__":
    main()
