"""Which sources scripts/tidy checks, with a linter that only writes down what it was asked."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

TIDY = pathlib.Path(__file__).resolve().parents[2] / "scripts/tidy"
LINTER = """#!/bin/sh
for word; do case "$word" in *.cpp) echo "$word" >> asked; grep -q BAD "$word" && exit 1; esac; done
exit 0
"""


class TidyTest(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        for name in ("scripts", "bin", "build", "room"):
            (self.root / name).mkdir()
        shutil.copy(TIDY, self.root / "scripts/tidy")
        linter = self.root / "bin/clang-tidy-19"
        linter.write_text(LINTER)
        linter.chmod(0o755)
        (self.root / ".clang-tidy").write_text("Checks: one")
        self.sources = [self.root / "room/a.cpp", self.root / "room/b.cpp", self.root / "c.cpp"]
        for source in self.sources:
            source.write_text("int x;")
        (self.root / "build/compile_commands.json").write_text(json.dumps([
            {"file": str(source), "directory": str(self.root / "build"),
             "command": f"c++ -include /far/cmake_pch.hxx -o {source.stem}.o -c {source}"}
            for source in [*self.sources, self.root / "build/made.cpp"]]))

    def tidy(self, *arguments, ci=False):
        """The exit status, the last line, and the names of the sources that were looked at."""
        asked = self.root / "asked"
        asked.unlink(missing_ok=True)
        result = subprocess.run(
            [self.root / "scripts/tidy", *arguments], capture_output=True, text=True,
            env={**os.environ, "PATH": f"{self.root / 'bin'}:{os.environ['PATH']}",
                 "CI": "true" if ci else ""})
        names = sorted(pathlib.Path(line).name for line in asked.read_text().split()) \
            if asked.exists() else []
        return result.returncode, result.stdout.splitlines()[-1], names

    def test_tells_what_is_left_and_leaves_nothing_to_ci(self):
        status, line, names = self.tidy("--seconds", "0")
        self.assertEqual((status, names), (0, []))
        self.assertIn("3 left unchecked", line)
        status, line, names = self.tidy("--seconds", "0", ci=True)
        self.assertEqual((status, names), (0, ["a.cpp", "b.cpp", "c.cpp"]))
        self.assertIn("0 left unchecked", line)

    def test_checks_anew_what_changed(self):
        self.tidy(ci=True)
        self.assertEqual(self.tidy(ci=True)[2], [])
        self.sources[0].write_text("int y; // BAD")
        self.assertEqual(self.tidy(ci=True)[::2], (1, ["a.cpp"]))
        self.assertEqual(self.tidy(ci=True)[::2], (1, ["a.cpp"]))
        self.sources[0].write_text("int x;")
        self.tidy(ci=True)
        (self.root / "room/.clang-tidy").write_text("InheritParentConfig: true")
        self.assertEqual(self.tidy(ci=True)[2], ["a.cpp", "b.cpp"])
        (self.root / ".clang-tidy").write_text("Checks: one,two")
        self.assertEqual(self.tidy(ci=True)[2], ["a.cpp", "b.cpp", "c.cpp"])


if __name__ == "__main__":
    unittest.main()
