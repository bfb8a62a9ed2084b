#!/usr/bin/python3
"""Measures the panels of the real program on a private desktop.

    bench/hud_bench.py [latency] [edits] [idle] [changes [NUMBER]]
                                                       all of them by default, 10000 changes

latency  from a copy in another program, which then has to hand over what it copied, to the panel
         on the screen: texts, 4K pictures
edits    from the choice of an edit of a 4K picture to the panel that shows it. Where other work
         keeps the processors busy, the shortest time and the program's own processor time tell
idle     processor time over a minute with a pinned panel
changes  copies with the panel on: memory and windows before and after, and whose the focus was
"""

import ctypes
import json
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

from driver import BIN, Marbelot  # noqa: E402
from virtual_desktop import VirtualDesktop, until  # noqa: E402

TICKS = 100  # of /proc's processor time, a second
NAME = "org.marbelot.Marbelot"


class ScreenPatch:
    """Part of the screen, read in less than a millisecond."""

    def __init__(self, display, x, y, width, height):
        self.x11 = ctypes.CDLL("libX11.so.6")
        for function in (self.x11.XOpenDisplay, self.x11.XGetImage):
            function.restype = ctypes.c_void_p
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(display.encode()))
        self.root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))
        self.area = (x, y, width, height)

    def pixels(self):
        planes, by_pixel = ctypes.c_ulong(-1), 2
        image = self.x11.XGetImage(self.display, self.root, *self.area, planes, by_pixel)
        data = ctypes.c_void_p.from_address(image + 16).value  # XImage::data
        pixels = ctypes.string_at(data, 4 * self.area[2] * self.area[3])
        self.x11.XDestroyImage(ctypes.c_void_p(image))
        return pixels


class Bench:
    def __init__(self, screen):
        self.screen = screen
        screen.spawn("xev", "-geometry", "300x200+100+600")
        until(self.active, "another program has the focus")
        self.program = Marbelot(screen)
        self.program.invoke("toggleClipboardHUD")
        until(lambda: self.kinds() == ["hud"], "sample")

    def active(self):
        return self.screen.run("xdotool", "getactivewindow").stdout.strip()

    def windows(self):
        answer = self.screen.call(NAME, "/org/marbelot/Marbelot", NAME, "Windows")[0]
        return json.loads(answer)

    def kinds(self):
        return [one["kind"] for one in self.windows()]

    def memory(self):
        """Resident memory of its own, in MB."""
        fields = pathlib.Path(f"/proc/{self.program.process.pid}/status").read_text().split("\n")
        return int(next(f for f in fields if f.startswith("RssAnon")).split()[1]) / 1000

    def processor(self):
        stat = pathlib.Path(f"/proc/{self.program.process.pid}/stat").read_text().split()
        return (int(stat[13]) + int(stat[14])) / TICKS

    def owner(self, *arguments):
        """Another program with contents of its own, which tells what becomes of them."""
        return subprocess.Popen([BIN / "clipboard_owner", *arguments], env=self.screen.env,
                                stdout=subprocess.PIPE, text=True)

    def latency(self, name, data, kind):
        """Milliseconds; the panel is away before each copy."""
        times, spent = [], []
        # Within every panel in the upper right corner.
        patch = ScreenPatch(self.screen.env["DISPLAY"], self.screen.size[0] - 200, 40, 100, 20)
        until(lambda: not self.kinds(), "no panel", 20)
        desktop = patch.pixels()
        for number in range(9):
            until(lambda: not self.kinds() and patch.pixels() == desktop, "no panel", 20)
            file = self.screen.folder / "copied"
            file.write_bytes(data(number))
            spent_before = self.spent()
            owner = self.owner(f"{kind}={file}")
            while owner.stdout.readline() != "ready\n":
                pass
            given = time.monotonic()
            until(lambda: patch.pixels() != desktop, "panel", 10, 0.0005)
            times.append((time.monotonic() - given) * 1000)
            spent.append(self.spent() - spent_before)
            owner.terminate()
            owner.wait()
        self.report(name, times, spent)

    @staticmethod
    def report(name, times, spent):
        print(f"{name}: shortest {min(times):.0f} ms, median {statistics.median(times):.0f} ms, "
              f"longest {max(times):.0f} ms; processor time {min(spent):.0f} to "
              f"{max(spent):.0f} ms, load {os.getloadavg()[0]:.1f}", flush=True)

    def spent(self):
        """Processor time of all threads so far, in milliseconds."""
        tasks = pathlib.Path(f"/proc/{self.program.process.pid}/task").glob("*/schedstat")
        return sum(int(task.read_text().split()[0]) for task in tasks) / 1e6

    def edits(self, data):
        self.screen.set_clipboard(data, "image/png")
        until(self.kinds, "panel")
        assert self.program.ctl("press", "hud", "pin").returncode == 0
        until(lambda: self.kinds() == ["editor"], "pinned", 20)
        time.sleep(3)
        # Of a panel in the upper right corner, the middle, where every edit shows.
        frame = self.windows()[0]["frame"]
        x, y = frame["x"] + frame["width"] / 2 - 150, frame["y"] + frame["height"] - 200
        patch = ScreenPatch(self.screen.env["DISPLAY"], round(x),
                            round(self.screen.size[1] - y - 100), 150, 100)
        for op in ("rotate:90", "flip:h", "resize:0.75", "border:red", "shadow:grow:large",
                   "shadow:same:large", "transparent:white", "emblem:circle:clear",
                   "emblem:circle:white"):
            times, spent = [], []
            for _ in range(9):
                before, began, spent_before = patch.pixels(), time.monotonic(), self.spent()
                self.screen.call(NAME, "/org/marbelot/Marbelot", NAME, "InvokeActionOn", "(ss)",
                                 ("hudMenuPicked:", op))
                until(lambda: patch.pixels() != before, "edit on the screen", 10, 0.0005)
                times.append((time.monotonic() - began) * 1000)
                spent.append(self.spent() - spent_before)
                edited = patch.pixels()
                self.program.ctl("press", "editor", "undo")
                until(lambda: patch.pixels() != edited, "edit undone")
                time.sleep(0.3)
            self.report(op, times, spent)
        self.program.ctl("press", "editor", "done")
        until(lambda: not self.kinds(), "no panel", 20)

    def idle(self, seconds=60):
        self.screen.set_clipboard(b"pinned")
        until(lambda: "hud" in self.kinds(), "panel")
        assert self.program.ctl("press", "hud", "pin").returncode == 0
        until(lambda: self.kinds() == ["editor"], "pinned", 20)
        time.sleep(2)
        before = self.processor()
        time.sleep(seconds)
        share = (self.processor() - before) / seconds * 100
        print(f"idle with a pinned panel: {share:.2f} % of a core over {seconds} s")
        self.program.ctl("press", "editor", "done")

    def changes(self, number):
        focus, memory, most = self.active(), None, 0
        began = time.monotonic()
        owner = self.owner("--series", "change of the clipboard " * 20, str(number), "20")
        for line in owner.stdout:
            if line.strip() == str(number // 10):
                memory = self.memory()
            if line.strip().endswith("00"):
                most = max(most, len(self.windows()))
        print(f"{number} changes in {time.monotonic() - began:.0f} s")
        until(lambda: not self.kinds(), "no panel", 30)
        print(f"{memory:.1f} MB after a tenth, {self.memory():.1f} MB after all; windows at most: "
              f"{most}, left: {len(self.windows())}; focus kept: {self.active() == focus}")


def main(wanted):
    with VirtualDesktop() as screen:
        bench = Bench(screen)
        if not wanted or "latency" in wanted:
            bench.latency("text", lambda number: f"text number {number}".encode(), "UTF8_STRING")
            base = subprocess.run(["convert", "-size", "3840x2160", "plasma:fractal", "-depth", "8",
                                   "png24:-"], check=True, capture_output=True).stdout
            bench.latency("4K picture", lambda number: base, "image/png")
        if not wanted or "edits" in wanted:
            base = subprocess.run(["convert", "-size", "3840x2160", "plasma:fractal", "-depth", "8",
                                   "png24:-"], check=True, capture_output=True).stdout
            bench.edits(base)
        if not wanted or "idle" in wanted:
            bench.idle()
        if not wanted or "changes" in wanted:
            numbers = [int(one) for one in wanted if one.isdigit()]
            bench.changes(numbers[0] if numbers else 10000)


if __name__ == "__main__":
    main(sys.argv[1:])
