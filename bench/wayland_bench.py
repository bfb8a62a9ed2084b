#!/usr/bin/python3
"""How fast the clipboard is on headless sway, beside wl-copy and wl-paste in the same run.

    bench/wayland_bench.py        MARBELOT_BIN: the folder of the programs, by default build/bin
"""

import pathlib
import signal
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "scripts"), str(ROOT / "tests/desktop")]

from desktop_case import png, screenshot_name  # noqa: E402
from driver import Marbelot  # noqa: E402
from virtual_desktop import until  # noqa: E402
from wayland_desktop import WaylandDesktop  # noqa: E402

ROUNDS = 20
COPIES = 200
LARGE = 50_000_000  # bytes


def milliseconds(action):
    began = time.monotonic()
    action()
    return (time.monotonic() - began) * 1000


def tell(what, values):
    print(f"{what:58} median {statistics.median(values):7.1f} ms, most {max(values):7.1f} ms")


class Bench:
    def __init__(self, screen):
        self.screen = screen
        self.program = Marbelot(screen)
        self.program.desktop.bus()

    def known(self, text):
        until(lambda: text in self.program.menu_json(), text, 20, 0.001)

    def recorded(self, text):
        """Asks nobody: the program would be busy answering."""
        until(lambda: text.encode() in self.program.store.read_bytes(), text, 20, 0.0005)

    def pasted(self, data):
        until(lambda: self.screen.clipboard("image/png") == data, "pasted", 20, 0)

    def screenshots(self):
        ours, theirs = [], []
        for number in range(ROUNDS):
            data = png(1920, 1080, seed=number)
            self.program.save(screenshot_name(number), data)
            ours.append(milliseconds(lambda data=data: self.pasted(data)))
            other = png(1920, 1080, seed=number + 100)
            theirs.append(milliseconds(lambda other=other: (
                self.screen.set_clipboard(other, "image/png"), self.pasted(other))))
        tell("screenshot closed to read by wl-paste", ours)
        tell("the same by wl-copy", theirs)

    def copies(self):
        started, known = [], []
        self.screen.set_clipboard(b"first")
        self.known("first")
        for number in range(ROUNDS):
            text = f"native copy {number}."
            began = time.monotonic()
            self.screen.set_clipboard(text.encode())
            started.append((time.monotonic() - began) * 1000)
            self.recorded(text)
            known.append((time.monotonic() - began) * 1000)
        tell("wl-copy started to its end", started)
        tell("wl-copy started to recorded on disk", known)

    def bursts(self):
        self.program.ctl("invoke", "Collect copies", "Start collecting copies", check=True)
        start = time.monotonic()
        for number in range(COPIES):
            time.sleep(max(0, start + number / 50 - time.monotonic()))
            self.screen.set_clipboard(f"burst {number}.".encode())
        rate = COPIES / (time.monotonic() - start)
        self.known(f"burst {COPIES - 1}.")
        collected = "\n".join(map(str, self.program.stored("concatBuffer")))
        places = [collected.find(f"burst {number}.") for number in range(COPIES)]
        print(f"{COPIES} copies at {rate:.0f} a second: {sum(place >= 0 for place in places)} "
              f"recorded, in order: {places == sorted(places)}")

    def large(self):
        data = (b"%07d\n" * (LARGE // 8)) % tuple(range(LARGE // 8))
        tell("50 MB in, wl-copy started to known", [milliseconds(lambda: (
            self.screen.set_clipboard(data), self.known("0000000")))])
        self.screen.set_clipboard(b"between")
        self.known("between")
        self.program.ctl("invoke", "Clipboard history", self.program.history()[1],
                         "Copy to clipboard", check=True)
        until(lambda: len(self.screen.clipboard("text/plain")) >= LARGE, "large text put there")
        tell("50 MB out, read by wl-paste",
             [milliseconds(lambda: self.screen.clipboard("text/plain")) for _ in range(3)])

    def silence(self):
        silent = subprocess.Popen(["wl-copy", "--foreground", "silent"], env=self.screen.env)
        self.known("silent")
        silent.send_signal(signal.SIGSTOP)
        late = Marbelot.answer_seconds  # the program answers all the while
        self.screen.set_clipboard(b"after the silent one")
        tell("a copy after an owner that has stopped", [milliseconds(
            lambda: self.known("after the silent one"))])
        tell("an answer of the program meanwhile", [late(self.program) * 1000])
        silent.kill()
        silent.wait()


def main():
    with WaylandDesktop("sway") as screen:
        bench = Bench(screen)
        bench.screenshots()
        bench.copies()
        bench.bursts()
        bench.large()
        bench.silence()


if __name__ == "__main__":
    main()
