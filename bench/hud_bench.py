#!/usr/bin/python3
"""Measures the panels of the real program on a private desktop.

    bench/hud_bench.py [latency] [idle] [changes [NUMBER]]      all of them by default, 10000 changes

latency  from another program's copy to the panel's window on the screen: texts, 4K pictures
idle     processor time over a minute with a pinned panel
changes  copies with the panel on: memory and windows before and after, and whose the focus was
"""

import json
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

from driver import Marbelot  # noqa: E402
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

    def latency(self, name, data, kind):
        """Milliseconds; the panel is away before each copy. Includes what tells of the copy."""
        times = []
        for number in range(8):
            until(lambda: not self.kinds(), "no panel", 20)
            piece = data(number)
            self.screen.set_clipboard(piece, kind)
            copied = time.monotonic()
            until(self.kinds, "panel", 10, 0.001)
            times.append((time.monotonic() - copied) * 1000)
        print(f"{name}: median {statistics.median(times):.0f} ms, longest {max(times):.0f} ms "
              "from the copying program's end")

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
        focus, memory = self.active(), None
        for count in range(number):
            self.screen.set_clipboard(f"change {count} of the clipboard".encode() * 20)
            if count == number // 10:
                memory = self.memory()
        until(lambda: not self.kinds(), "no panel", 30)
        print(f"{number} changes: {memory:.1f} MB after a tenth, {self.memory():.1f} MB after all; "
              f"windows left: {len(self.windows())}; focus kept: {self.active() == focus}")


def main(wanted):
    with VirtualDesktop() as screen:
        bench = Bench(screen)
        if not wanted or "latency" in wanted:
            bench.latency("text", lambda number: f"text number {number}".encode(), "UTF8_STRING")
            base = subprocess.run(["convert", "-size", "3840x2160", "plasma:fractal", "-depth", "8",
                                   "png24:-"], check=True, capture_output=True).stdout
            bench.latency("4K picture", lambda number: base, "image/png")
        if not wanted or "idle" in wanted:
            bench.idle()
        if not wanted or "changes" in wanted:
            numbers = [int(one) for one in wanted if one.isdigit()]
            bench.changes(numbers[0] if numbers else 10000)


if __name__ == "__main__":
    main(sys.argv[1:])
