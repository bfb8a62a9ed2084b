#!/usr/bin/python3
"""Measures the clipboard history of the real program on a private desktop.

    bench/history_bench.py [quick] [texts] [images] [huge] [large] [kill]      all by default

quick   200 copies, one each 20 ms, by one program and by one program each: how many are recorded
texts   the menu with a full history of 40 texts of 1 MB, beside that of an empty history
images  memory of 40 images of 3840x2160 above the empty state, copied as PNG, TIFF and BMP
huge    a text of 100 MB is copied: the longest time without an answer, and when it was stored
large   texts of 1 KB to 50 MB: how long after the menu shows them they are on disk
kill    200 times kill -9 while copying: all that the menu had shown is there after the restart
"""

import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "scripts"))

from driver import BIN, Marbelot  # noqa: E402
from measures import run  # noqa: E402
from virtual_desktop import VirtualDesktop, until  # noqa: E402

LIMIT = 40
MEGABYTE = 1 << 20
COPIES = 200
PACE = 20  # milliseconds
ROUNDS = 50
# Half a log and half source code; the number in front makes each its own.
PROSE = ("2025-03-01 10:00:00 worker[17]: request served in 12 ms\n"
         "if (index < items.size()) return items[index];  // the caller has counted\n")


def resident(program):
    """Proportional set size in MiB."""
    rollup = pathlib.Path(f"/proc/{program.process.pid}/smaps_rollup").read_text()
    return int(rollup.split("\nPss:")[1].split()[0]) / 1024


def settled(program):
    """The memory once nothing is worked on any more."""
    before = 0
    for _ in range(60):
        time.sleep(0.5)
        now = resident(program)
        if abs(now - before) < 0.2:
            return now
        before = now
    return before


def answers(program):
    times = sorted(program.answer_seconds() * 1000 for _ in range(ROUNDS))
    return statistics.median(times), times[-1]


def quick():
    print(f"\n{COPIES} copies, one each {PACE} ms", flush=True)
    for name, copy in (("one program", copy_series), ("many programs", copy_by_many)):
        with VirtualDesktop() as desktop:
            program = Marbelot(desktop)
            program.invoke("toggleConcat")
            began = time.monotonic()
            copy(desktop)
            took = time.monotonic() - began
            wanted = [f"copy {number}" for number in range(1, COPIES + 1)]
            try:
                until(lambda: program.stored("concatBuffer")[-1:] == wanted[-1:], "collected", 5)
            except AssertionError:
                pass  # lost, as the numbers will say
            collected = program.stored("concatBuffer")
            missed = len(set(wanted) - set(collected))
            order = "in order" if collected == [w for w in wanted if w in collected] \
                else "NOT IN ORDER"
            print(f"  {name:<14}{took:6.2f} s, {missed} missed, {order}", flush=True)


def copy_series(desktop):
    desktop.run(BIN / "clipboard_owner", "--series", "copy ", str(COPIES), str(PACE), timeout=60)


def copy_by_many(desktop):
    files = []
    for number in range(1, COPIES + 1):
        files.append(desktop.folder / f"copy-{number}")
        files[-1].write_text(f"copy {number}")
    for number, file in enumerate(files, 1):
        began = time.monotonic()
        desktop.spawn(BIN / "clipboard_owner", f"UTF8_STRING={file}")
        # Before it is ready the next one could be faster than this one; and one that was late is
        # not made up for, as nobody can tell of a copy that is replaced at once.
        until(lambda: desktop.log("clipboard_owner").count("ready") == number, "ready",
              interval=0.001)
        time.sleep(max(0.01, began + PACE / 1000 - time.monotonic()))


def texts():
    with VirtualDesktop() as desktop:
        program = Marbelot(desktop)
        empty = answers(program)
        memory = settled(program)
        copying = 0
        for number in range(LIMIT):
            text = f"{number} " + PROSE * (MEGABYTE // len(PROSE))
            desktop.set_clipboard(text.encode())
            copying = max(copying, program.longest_answer(
                lambda: len(program.history()) == number + 1, "recorded"))
        time.sleep(2)
        full = answers(program)
        grown = settled(program) - memory
        print(f"\nMenu told over the bus, median and slowest of {ROUNDS}: empty history "
              f"{empty[0]:.2f} and {empty[1]:.2f} ms, {LIMIT} texts of 1 MB {full[0]:.2f} and "
              f"{full[1]:.2f} ms; while they were copied, {copying * 1000:.0f} ms at the longest; "
              f"{grown:.0f} MiB more memory", flush=True)


def picture(form):
    """A photograph's kind of noise: a few MB as PNG."""
    return subprocess.run(
        ["convert", "-seed", "7", "-size", "1920x1080", "plasma:#274060-#7fa3c7",
         "-scale", "3840x2160!", "-depth", "8", "-define", "png:compression-level=1",
         "png24:-" if form == "png" else f"{form}:-"], check=True, capture_output=True).stdout


def images():
    print(f"\n{LIMIT} images of 3840x2160", flush=True)
    for form in ("png", "tiff", "bmp"):
        with VirtualDesktop() as desktop:
            program = Marbelot(desktop)
            empty = settled(program)
            data = picture(form)
            longest = peak = 0
            for number in range(LIMIT):
                desktop.set_clipboard(data, f"image/{form}")
                longest = max(longest, program.longest_answer(
                    lambda: len(program.history()) == number + 1, "recorded"))
                peak = max(peak, resident(program))
            until(lambda: len(program.stored()) == LIMIT, "all saved", 300, 0.5)
            above = settled(program) - empty
            print(f"  as {form}, {len(data) / 1e6:.1f} MB each: {above:.1f} MiB above the empty "
                  f"state of {empty:.1f}; while copying {peak - empty:.0f} MiB, longest time "
                  f"without an answer {longest * 1000:.0f} ms", flush=True)


def huge():
    size = 100 * MEGABYTE
    print("\nA text of 100 MB, longest time without an answer and until stored", flush=True)
    for name, text in (("log", PROSE * (size // len(PROSE))), ("one line", "x" * size),
                       ("blanks", " " * (size - 1) + "x"), ("base64", "eyJhbGci" * (size // 8))):
        with VirtualDesktop() as desktop:
            program = Marbelot(desktop)
            desktop.set_clipboard(text.encode())
            began = time.monotonic()
            longest = program.longest_answer(
                lambda: program.stored_bytes() == [len(text)], "stored")
            stored = time.monotonic() - began
            # The analysis for the menu may come after it.
            end = time.monotonic() + 5
            longest = max(longest, program.longest_answer(lambda: time.monotonic() > end, "idle"))
            again = program.stored_texts() == [text]
            print(f"  {name:<10}{longest * 1000:8.0f} ms {stored:8.2f} s"
                  + ("" if again else "   NOT STORED AS COPIED"), flush=True)


def on_disk(program, text):
    if len(text) > 32768:
        return len(text) in program.stored_bytes()
    return text in program.stored_texts()


def large():
    print("\nFrom the menu's showing a text to its being on disk, 20 of each size", flush=True)
    with VirtualDesktop() as desktop:
        program = Marbelot(desktop)
        for size in (1000, 40000, 1000000, 4000000, 8000000, 50000000):
            waits = []
            longest = 0
            for number in range(20):
                text = f"{size + number} is the size ".ljust(size + number, "x")
                desktop.set_clipboard(text.encode())
                longest = max(longest, program.longest_answer(
                    lambda: text[:20] in program.menu_json(), "shown"))
                began = time.monotonic()
                if not on_disk(program, text):
                    until(lambda: on_disk(program, text), "stored", interval=0.001)
                    waits.append((time.monotonic() - began) * 1000)
            program.invoke("clearClipHistory")
            print(f"  {size / 1e6:8.3f} MB: {20 - len(waits)} at once"
                  + (f", the others within {max(waits):.0f} ms" if waits else "")
                  + f"; longest time without an answer {longest * 1000:.0f} ms", flush=True)


def kill():
    test = ROOT / "tests/desktop/history_test.py"
    began = time.monotonic()
    result = subprocess.run(
        ["/usr/bin/python3", "-B", test,
         "HistoryTest.test_what_was_recorded_survives_being_killed"],
        env={**os.environ, "MARBELOT_KILLS": "200", "MARBELOT_BIN": str(BIN)},
        capture_output=True, text=True)
    print(f"\n200 × kill -9 while copying, {time.monotonic() - began:.0f} s: "
          + ("nothing lost, nothing damaged" if result.returncode == 0 else result.stderr))


if __name__ == "__main__":
    run(__doc__, quick, texts, images, huge, large, kill)
