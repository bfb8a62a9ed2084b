"""Reading the text in pictures with the real recogniser, on a desktop."""

import json
import pathlib
import stat
import unittest

from desktop_case import DesktopTest, Marbelot, until

LINES = ["Invoice 2024-117 was paid", "on the third of March."]


class RecognitionTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.program = Marbelot(self.screen)

    def picture(self, lines=LINES, ground="#1e1e1e", color="#d4d4d4"):
        result = self.screen.run(
            "convert", "-size", "420x120", f"xc:{ground}", "-fill", color, "-font", "DejaVu-Sans",
            "-pointsize", "13", "-annotate", "+20+40", "\n".join(lines), "PNG24:-")
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def panel(self):
        windows = json.loads(self.program.ctl("windows", "--json").stdout)
        return next((window for window in windows if window["kind"] == "ocr"), None)

    def press(self, button):
        result = self.program.ctl("press", "ocr", button)
        self.assertEqual(result.returncode, 0, result.stderr)

    def helpers(self):
        """The recogniser's processes that the program has started."""
        found = []
        for task in pathlib.Path(f"/proc/{self.program.process.pid}/task").iterdir():
            for child in (task / "children").read_text().split():
                name = pathlib.Path(f"/proc/{child}/comm").read_text().strip()
                if name.startswith("marbelot-recog"):
                    found.append(child)
        return found

    def copied_text(self):
        self.press("copyOCRText")
        until(lambda: self.screen.notices() and
              self.screen.notices()[-1]["body"] == "Copied the scanned text", "text copied")
        return self.screen.clipboard("UTF8_STRING").decode()

    def test_a_copied_picture_is_read_quietly(self):
        self.screen.spawn("xclock")
        clock = until(lambda: self.screen.run("xdotool", "search", "--onlyvisible", "--class",
                                              "xclock").stdout.split(), "window")[0]
        self.screen.run("xdotool", "windowfocus", "--sync", clock)
        self.screen.set_clipboard(self.picture(), "image/png")
        until(self.panel, "panel shown", 60)
        self.assertEqual(self.screen.run("xdotool", "getwindowfocus").stdout.split()[0], clock)
        self.assertEqual(self.screen.notices(), [])
        entries = len(self.program.history())
        self.assertEqual(self.copied_text().splitlines(), LINES)
        self.assertEqual(len(self.program.history()), entries)
        self.assertEqual(len(self.helpers()), 1)

        frame = self.panel()["frame"]
        self.press("cycleHUDPlacement")
        until(lambda: self.panel()["frame"] != frame, "panel moved")
        self.press("closeOCRHUD")
        until(lambda: not self.panel(), "panel gone")

    def test_a_large_screen_is_read_while_the_program_goes_on(self):
        page = "\n".join(f"{number} words {number * 37} on a line of a large screen"
                         for number in range(40))
        screen = self.screen.run(
            "convert", "-size", "3840x2160", "xc:white", "-font", "DejaVu-Sans", "-pointsize", "15",
            "-annotate", "+40+60", page, "PNG24:-", check=True).stdout
        self.screen.set_clipboard(screen, "image/png")
        until(lambda: self.program.preview() == "Image 3840 × 2160", "picture recorded")
        answers = 0
        while not self.panel():
            answers += 1
        # A program that stood still for the scan would have answered once.
        self.assertGreater(answers, 5)

    def test_the_text_is_saved_where_the_user_says(self):
        self.program.ctl("invoke", "--action", "toggleAutoOCR", check=True)
        self.screen.set_clipboard(self.picture(), "image/png")
        until(lambda: self.program.preview().startswith("Image"), "picture recorded")
        self.program.ctl("invoke", "Scan text (OCR)…", check=True)
        until(self.panel, "panel shown", 60)
        self.assertEqual(self.screen.notices()[0]["body"], "Scanning image for text…")
        self.press("saveOCRText")
        until(lambda: b"save" in self.program.ctl("windows").stdout, "save panel")
        until(lambda: self.screen.run("xdotool", "search", "--name", "^Save$").stdout, "on screen")
        self.screen.run("xdotool", "key", "ctrl+a")
        target = self.screen.home / "Shots" / "read"
        self.screen.run("xdotool", "type", "--delay", "30", str(target))
        self.screen.run("xdotool", "key", "Return")
        saved = target.with_suffix(".txt")
        until(saved.exists, "file saved")
        self.assertEqual(saved.read_text().splitlines(), LINES)
        self.assertEqual(stat.S_IMODE(saved.stat().st_mode), 0o600)
        until(lambda: self.screen.notices()[-1]["body"] == "Saved read.txt", "told")


if __name__ == "__main__":
    unittest.main()
