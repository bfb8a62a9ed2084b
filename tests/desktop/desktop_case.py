"""What the tests on a private desktop share."""

import ctypes
import os
import pathlib
import struct
import subprocess
import sys
import time
import unittest
import zlib

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts"))

from driver import BIN, Marbelot  # noqa: E402, F401
from virtual_desktop import VirtualDesktop, until  # noqa: E402

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


def png(width=40, height=30, seed=0, size=None, text=b"Comment\0number"):
    """A grey picture; another seed gives other bytes. size: of the header, when it is to lie.

    text: of its text chunk, a keyword, a zero and what comes before the seed."""
    rows = b"".join(b"\0" + bytes([(seed * 7 + y) % 256]) * width for y in range(height))
    header = struct.pack(">IIBBBBB", *(size or (width, height)), 8, 0, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
            chunk(b"tEXt", text + b" %d" % seed) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def screenshot_name(number):
    return f"Screenshot from 2025-03-01 10-{number // 60:02}-{number % 60:02}.png"


class DesktopTest(unittest.TestCase):
    """A test case whose desktops and programs end with it."""

    def desktop(self, **options):
        return self.enterContext(VirtualDesktop(**options))

    def mount(self, folder, options):
        """Mounts an empty tmpfs for this process and those it starts; skips where forbidden."""
        if not DesktopTest._own_mounts:
            if os.geteuid() != 0 or ctypes.CDLL(None).unshare(CLONE_NEWNS) != 0:
                self.skipTest("only root can mount")
            private = subprocess.run(["mount", "--make-rprivate", "/"], capture_output=True)
            if private.returncode != 0:
                self.skipTest("mounts cannot be kept to this process here")
            DesktopTest._own_mounts = True
        subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", folder], check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", folder], check=True)

    _own_mounts = False

    def assert_on_clipboard(self, desktop, data, seconds=5):
        until(lambda: desktop.clipboard("image/png") == data, "image on the clipboard", seconds)
