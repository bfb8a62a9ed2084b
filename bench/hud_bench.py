#!/usr/bin/python3
"""Measures the panels of the real program on a private desktop.

    bench/hud_bench.py [latency] [edits] [idle] [changes [NUMBER]]
                                                       all of them by default, 10000 changes

latency  from the moment at which another program has handed over what it copied to the panel's
         window on the screen: texts, 4K pictures
edits    from the choice of an edit of a 4K picture to the panel that shows it
idle     processor time over a minute with a pinned panel
changes  copies with the panel on: memory and windows before and after, and whose the focus was
"""

import hashlib
import json
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
        times = []
        for number in range(8):
            until(lambda: not self.kinds(), "no panel", 20)
            file = self.screen.folder / "copied"
            file.write_bytes(data(number))
            owner = self.owner(f"{kind}={file}")
            while owner.stdout.readline() != "asked\n":
                pass
            given = time.monotonic()
            until(self.kinds, "panel", 10, 0.001)
            times.append((time.monotonic() - given) * 1000)
            owner.terminate()
            owner.wait()
        print(f"{name}: median {statistics.median(times):.0f} ms, longest {max(times):.0f} ms")

    def shown(self):
        """What the panel's picture looks like, of a patch in its middle."""
        frame = self.windows()[0]["frame"]
        x, y = frame["x"] + frame["width"] / 2 - 150, frame["y"] + frame["height"] - 200
        patch = self.screen.run("import", "-window", "root", "-crop",
                                f"150x100+{x:.0f}+{self.screen.size[1] - y - 100:.0f}", "rgb:-")
        return hashlib.sha1(patch.stdout).digest()

    def edits(self, data):
        """Looking at the screen takes as long as is told."""
        self.screen.set_clipboard(data, "image/png")
        until(self.kinds, "panel")
        assert self.program.ctl("press", "hud", "pin").returncode == 0
        until(lambda: self.kinds() == ["editor"], "pinned", 20)
        time.sleep(3)
        began = time.monotonic()
        self.shown()
        print(f"a look at the screen: {(time.monotonic() - began) * 1000:.0f} ms")
        for op in ("rotate:90", "flip:h", "resize:0.75", "shadow:grow:large", "shadow:same:large",
                   "transparent:white", "emblem:circle:clear"):
            times = []
            for _ in range(3):
                before = self.shown()
                began = time.monotonic()
                self.program.invoke("hudMenuPicked:", "--object", op)
                while self.shown() == before and time.monotonic() < began + 3:
                    pass
                times.append((time.monotonic() - began) * 1000)
                self.program.ctl("press", "editor", "undo")
                time.sleep(0.5)
            print(f"{op}: " + ", ".join(f"{one:.0f}" for one in times) + " ms")
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
