#!/usr/bin/python3
"""Measures the real program on a private desktop, beside the shell pipeline one would use instead.

    bench/desktop_bench.py [latency] [capture] [burst] [idle] [start] [large]   all by default

latency  from a screenshot file's last close to another X client having read its last byte
capture  from the command for a picture of the screen to another X client having read it
burst    200 screenshots within two seconds: all counted, and when the last could be pasted
idle     processor time and wake-ups of all threads over a minute
start    from the process's start to its item in the tray; memory a while later
large    the longest time without an answer while 50 MB of text are copied and shown, and at rest
"""

import json
import os
import pathlib
import statistics
import struct
import subprocess
import sys
import time
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

from driver import BIN, Marbelot  # noqa: E402
from measures import run  # noqa: E402
from virtual_desktop import VirtualDesktop, until  # noqa: E402

SCREENSHOTS = 200
CAPTURES = 20
BLOCK = 50  # the program and the pipeline take turns, so that both see the same machine
PAUSE = 0.04  # seconds; lets what a screenshot sets off in the background fall on the next ones
PIPELINE = ('inotifywait --quiet --monitor --event close_write --format %w%f "$0" |'
            ' while read -r file; do xclip -selection clipboard -t image/png -i "$file"; done')


def numbered(png, number):
    """The picture with a text of its own, so that no two are alike, nor of the same length."""
    text = b"tEXtComment\0" + b"x" * number
    end = png.rindex(b"\0\0\0\0IEND")
    comment = struct.pack(">I", len(text) - 4) + text + struct.pack(">I", zlib.crc32(text))
    return png[:end] + comment + png[end:]


def picture_of(width, height):
    """A PNG of a desktop's kind: smooth areas, sharp edges, some photographic noise."""
    lines = []
    for y in range(height // 5, height * 4 // 5, 20):
        lines += ["-annotate", f"+{width // 20}+{y}", "The quick brown fox jumps over the lazy dog"]
    return subprocess.run(
        ["convert", "-seed", "7", "-size", f"{width}x{height}", "gradient:#274060-#7fa3c7",
         "(", "-size", f"{width // 4}x{height // 4}", "plasma:fractal", ")",
         "-geometry", f"+{width // 2}+{height // 3}", "-composite",
         "-fill", "white", "-font", "DejaVu-Sans", "-pointsize", "15", *lines,
         # As screenshot tools write them: 8 bits a channel, no colour correction, no dates.
         "-define", "png:exclude-chunks=all", "png24:-"],
        check=True, capture_output=True).stdout


def save(folder, name, data):
    """Writes the file; the moment just before its last close, in nanoseconds."""
    with open(folder / name, "wb", buffering=0) as file:
        file.write(data)
        return time.monotonic_ns()


class Reader:
    """Another program that pastes each image as soon as it is there."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._process = desktop.spawn(BIN / "clipboard_reader")
        until(lambda: desktop.log("clipboard_reader"), "clipboard reader")
        self._log = open(desktop.folder / "clipboard_reader.log")

    def wait_for(self, size=None, seconds=20):
        """When the image of that size, or the next one, had been read, in nanoseconds."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            line = self._log.readline()
            if line.endswith("\n") and len(line.split()) == 3:
                _, read, got = map(int, line.split())
                if got == size or (size is None and got > 0):
                    return read
            else:
                time.sleep(0.0005)
        raise AssertionError(f"an image of {size} bytes was not read within {seconds} s")


def row(name, milliseconds):
    ordered = sorted(milliseconds)
    p99 = ordered[min(len(ordered) - 1, int(len(ordered) * 0.99))]
    print(f"  {name:<28}{statistics.median(ordered):9.2f}{p99:9.2f}{ordered[-1]:9.2f}", flush=True)


def latency():
    print("\nFrom close to read, ms              median      p99      max")
    for width, height in ((1920, 1080), (3840, 2160)):
        picture = picture_of(width, height)
        times = {"program": [], "pipeline": []}
        with VirtualDesktop(size=(width, height)) as desktop:
            reader = Reader(desktop)
            number = 0
            while number < 2 * SCREENSHOTS:
                kind = "program" if number // BLOCK % 2 == 0 else "pipeline"
                if kind == "program":
                    running = Marbelot(desktop)
                    process = running.process
                else:
                    process = desktop.spawn("sh", "-c", PIPELINE, running.shots)
                    until(lambda: watches(process.pid, running.shots), "pipeline watching")
                for number in range(number, number + BLOCK):
                    data = numbered(picture, number)
                    name = f"Screenshot from {width} {number:04}.png"
                    closed = save(running.shots, name, data)
                    times[kind].append((reader.wait_for(len(data)) - closed) / 1e6)
                    time.sleep(PAUSE)
                number += 1
                desktop.end(process)
        size = f"{width}x{height}, {len(picture) / 1e6:.1f} MB"
        row(f"Marbelot {size}", times["program"])
        row(f"inotifywait | xclip {size[:9]}", times["pipeline"])


def capture():
    """In turns, with the start of marbelotctl, beside the pipeline that does as much."""
    print("\nFrom command to read, ms             median      p99      max")
    picture = picture_of(1920, 1080)
    times = {"program": [], "pipeline": []}
    with VirtualDesktop() as desktop:
        wallpaper = desktop.folder / "wallpaper.png"
        wallpaper.write_bytes(picture)
        desktop.run("display", "-window", "root", wallpaper)  # exits with 1 when done, too
        program = Marbelot(desktop)
        reader = Reader(desktop)
        commands = {"program": [BIN / "marbelotctl", "invoke", "--action", "captureFullScreen"],
                    "pipeline": ["sh", "-c", "maim | xclip -selection clipboard -t image/png"]}
        for _ in range(CAPTURES):
            for kind, command in commands.items():
                began = time.monotonic_ns()
                desktop.spawn(*command)
                times[kind].append((reader.wait_for() - began) / 1e6)
                time.sleep(1)  # lets what it sets off in the background end
    row("Marbelot 1920x1080", times["program"])
    row("maim | xclip", times["pipeline"])
    ratio = statistics.median(times["program"]) / statistics.median(times["pipeline"])
    print(f"  ratio {ratio:.2f}")


def watches(group, folder):
    """Whether a process of the group has an inotify watch on the folder."""
    wanted = f"ino:{folder.stat().st_ino:x} "
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if os.getpgid(int(process.name)) == group and any(
                    wanted in info.read_text() for info in (process / "fdinfo").iterdir()):
                return True
        except OSError:
            continue  # gone meanwhile
    return False


def burst():
    picture = picture_of(1920, 1080)
    with VirtualDesktop() as desktop:
        reader = Reader(desktop)
        program = Marbelot(desktop)
        images = [numbered(picture, number) for number in range(SCREENSHOTS)]
        began = time.monotonic_ns()
        for number, data in enumerate(images):
            closed = save(program.shots, f"Screenshot from burst {number:04}.png", data)
            # An even pace; a screen is never captured faster.
            while time.monotonic_ns() < began + (number + 1) * 2e9 / SCREENSHOTS:
                time.sleep(0.001)
        until(lambda: program.copied() >= SCREENSHOTS, "all counted", 60)
        counted = time.monotonic_ns()
        last = program.line("Last: ")
        read = reader.wait_for((program.shots / last).stat().st_size)
        print(f"\n{SCREENSHOTS} screenshots of 1920x1080 within {(closed - began) / 1e9:.2f} s: "
              f"{program.copied()} counted at the latest {(counted - closed) / 1e6:.0f} ms, the "
              f"last one ({last}) read {(read - closed) / 1e6:.0f} ms after the last close")


def usage(pid):
    """Processor seconds of a process, and by thread how often it was woken."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    seconds = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
    woken = {
        status.parent.name: int(status.read_text().split("\nvoluntary_ctxt_switches:")[1].split()[0])
        for status in pathlib.Path(f"/proc/{pid}/task").glob("*/status")}
    return seconds, woken


def idle(seconds=60):
    print()
    for tray, name in (("item", "item in the tray"), ("embed", "older tray"), (None, "no tray")):
        with VirtualDesktop(tray=tray) as desktop:
            program = Marbelot(desktop)
            time.sleep(10)  # what starting leaves to do is done by then
            before, woken_before = usage(program.process.pid)
            time.sleep(seconds)
            after, woken_after = usage(program.process.pid)
            # A thread that ended meanwhile was a worker that had nothing to do.
            woken = sum(count - woken_before.get(thread, 0) for thread, count in woken_after.items())
            print(f"Idle for {seconds} s, {name}: {(after - before) * 1000:.0f} ms of processor "
                  f"time, {woken / seconds:.2f} wake-ups a second", flush=True)


def start(times=20):
    shown, memory = [], []
    for _ in range(times):
        with VirtualDesktop() as desktop:
            (desktop.home / "Shots").mkdir()
            began = time.monotonic()
            program = Marbelot(desktop)
            item = until(desktop.tray_items, "status item")[0]
            shown.append((item["time"] - began) * 1000)
            time.sleep(1)
            rollup = pathlib.Path(f"/proc/{program.process.pid}/smaps_rollup").read_text()
            memory.append(int(rollup.split("\nPss:")[1].split()[0]) / 1024)
    print(f"\nStart to status item, {times} times: median {statistics.median(shown):.0f} ms, "
          f"slowest {max(shown):.0f} ms; proportional set size {statistics.median(memory):.1f} MiB")


def large():
    texts = {"many lines": "a line of fifty bytes, as there are many in a log\n" * (1 << 20),
             "one line": "x" * (50 << 20)}
    print("\nLongest time without an answer, ms")
    for name, text in texts.items():
        with VirtualDesktop() as desktop:
            settings = desktop.config / "marbelot/org.marbelot.Marbelot.json"
            settings.parent.mkdir()
            settings.write_text(json.dumps({"cannedResponses": [text]}))
            program = Marbelot(desktop)

            def during(seconds):
                end = time.monotonic() + seconds
                return program.longest_answer(lambda: time.monotonic() > end, "the end") * 1000
            rest = during(3)
            program.invoke("copyCanned:", "--object", "0")
            program.invoke("showClipboardViewer")
            print(f"  {name:<28}{during(5):9.1f}   at rest {rest:.1f}", flush=True)


if __name__ == "__main__":
    run(__doc__, latency, capture, burst, idle, start, large)
