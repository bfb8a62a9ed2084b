"""The program under test on a private desktop, and the images and waits the tests share."""

import ctypes
import json
import os
import pathlib
import struct
import subprocess
import sys
import time
import unittest
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

from virtual_desktop import VirtualDesktop, until  # noqa: E402

BIN = pathlib.Path(os.environ.get("MARBELOT_BIN", ROOT / "build/bin")).resolve()
MARK = "user.com.apple.metadata:kMDItemIsScreenCapture"
NOTICE_TITLE = "Screenshot copied to clipboard"
CLONE_NEWNS = 0x00020000  # sched.h


def stays(condition, what, seconds):
    """Fails as soon as condition() is not true within the given time."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if not condition():
            raise AssertionError(f"{what}: no longer so")
        time.sleep(0.02)


def chunk(kind, data):
    return (struct.pack(">I", len(data)) + kind + data +
            struct.pack(">I", zlib.crc32(kind + data)))


def png(width=40, height=30, seed=0, size=None):
    """A grey picture; another seed gives other bytes. size: of the header, when it is to lie."""
    rows = b"".join(b"\0" + bytes([(seed * 7 + y) % 256]) * width for y in range(height))
    header = struct.pack(">IIBBBBB", *(size or (width, height)), 8, 0, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
            chunk(b"tEXt", b"Comment\0number %d" % seed) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def screenshot_name(number):
    return f"Screenshot from 2025-03-01 10-{number // 60:02}-{number % 60:02}.png"


class Marbelot:
    """One running instance that keeps its screenshots in ~/Shots."""

    def __init__(self, desktop, bus=True):
        self.desktop = desktop
        self.shots = desktop.home / "Shots"
        self.shots.mkdir(exist_ok=True)
        location = desktop.config / "marbelot/com.apple.screencapture.json"
        if not location.exists():
            location.parent.mkdir(exist_ok=True)
            location.write_text(json.dumps({"location": "~/Shots"}))
        self.process = desktop.spawn(BIN / "marbelot")
        until(self.watches_folder, "folder watched")
        if bus:
            until(lambda: self.ctl("menu").returncode == 0, "menu answered")

    def watches_folder(self):
        """Whether an inotify watch of the process is on the folder as it is now."""
        self.check_alive()
        wanted = f"ino:{self.shots.stat().st_ino:x} "
        for info in pathlib.Path(f"/proc/{self.process.pid}/fdinfo").iterdir():
            try:
                lines = info.read_text().splitlines()
            except OSError:
                continue  # closed meanwhile
            if any(line.startswith("inotify ") and wanted in line for line in lines):
                return True
        return False

    def check_alive(self):
        status = self.process.poll()
        if status is not None:
            raise AssertionError(
                f"the program ended with {status}:\n{self.desktop.log('marbelot')}")

    def ctl(self, *arguments, **options):
        return self.desktop.run(BIN / "marbelotctl", *arguments, **options)

    def invoke(self, action, *arguments):
        result = self.ctl("invoke", "--action", action, *arguments)
        assert result.returncode == 0, result.stderr

    def menu(self):
        """The visible items of the menu's first level."""
        self.check_alive()
        result = self.ctl("menu", "--json")
        assert result.returncode == 0, result.stderr
        return [item for item in json.loads(result.stdout) if not item.get("hidden")]

    def titles(self):
        return [item["title"] for item in self.menu() if "title" in item]

    def line(self, start):
        """What follows `start` in the menu line that begins so; None without such a line."""
        for title in self.titles():
            if title.startswith(start):
                return title[len(start):]
        return None

    def copied(self):
        return int(self.line("Copied this session: "))

    def preview(self):
        titles = self.titles()
        return titles[titles.index("On clipboard:") + 1] if "On clipboard:" in titles else None

    def save(self, name, data):
        path = self.shots / name
        path.write_bytes(data)
        return path

    def popups(self):
        """Rectangles (x, y, width, height) of the program's menus on the screen."""
        found = self.desktop.run("xdotool", "search", "--onlyvisible", "--class", "marbelot")
        rectangles = []
        for window in found.stdout.decode().split():
            kind = self.desktop.run("xprop", "-id", window, "_NET_WM_WINDOW_TYPE").stdout
            if b"_MENU" not in kind:
                continue
            shell = self.desktop.run("xdotool", "getwindowgeometry", "--shell", window).stdout
            values = dict(line.split("=") for line in shell.decode().split())
            rectangles.append(tuple(int(values[k]) for k in ("X", "Y", "WIDTH", "HEIGHT")))
        return rectangles


class DesktopTest(unittest.TestCase):
    """A test case whose desktops and programs end with it."""

    def desktop(self, **options):
        return self.enterContext(VirtualDesktop(**options))

    def mount(self, folder, options):
        """Mounts an empty tmpfs for this process and those it starts; skips where forbidden."""
        if not DesktopTest._own_mounts:
            if os.geteuid() != 0 or ctypes.CDLL(None).unshare(CLONE_NEWNS) != 0:
                self.skipTest("only root can mount")
            subprocess.run(["mount", "--make-rprivate", "/"], check=True)
            DesktopTest._own_mounts = True
        subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", folder], check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", folder], check=True)

    _own_mounts = False

    def assert_on_clipboard(self, desktop, data, seconds=5):
        until(lambda: desktop.clipboard("image/png") == data, "image on the clipboard", seconds)
