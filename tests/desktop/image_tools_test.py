"""Editing and exporting pictures, seen by the programs that paste them."""

import re
import stat
import unittest

from desktop_case import DesktopTest, Marbelot, until

NAME = re.compile(r"Clipboard \d{4}-\d\d-\d\d at \d\d\.\d\d\.\d\d( \(\d+\))?\.png")


class ImageToolsTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.program = Marbelot(self.screen)

    def convert(self, *arguments, data=None):
        result = self.screen.run("convert", *arguments, input=data)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout

    def pixels(self, data):
        """Width, height and the pixels, red to alpha."""
        size = self.convert("-", "-format", "%w %h", "info:-", data=data)
        return size, self.convert("-", "-depth", "8", "rgba:-", data=data)

    def copy(self, data, kind="image/png"):
        """Another program copies; returns when it is recorded."""
        before = self.program.history()
        self.screen.set_clipboard(data, kind)
        until(lambda: self.program.history() != before, "copy recorded")

    def edit(self, *titles, message):
        result = self.program.ctl("invoke", *titles)
        self.assertEqual(result.returncode, 0, result.stderr)
        until(lambda: self.screen.notices() and self.screen.notices()[-1]["body"] == message,
              message)

    def pasted(self):
        return self.pixels(self.screen.clipboard("image/png"))

    def test_edits_are_pasteable(self):
        picture = self.convert("-size", "320x200", "plasma:#274060-#7fa3c7", "PNG24:-")
        self.copy(picture)
        edits = [(("Rotate", "Right 90°"), "Rotated 90°", ("-rotate", "-90")),
                 (("Rotate", "180°"), "Rotated 180°", ("-rotate", "180")),
                 (("Flip", "Horizontal"), "Flipped", ("-flop",)),
                 (("Flip", "Vertical"), "Flipped", ("-flip",)),
                 (("Add border", "Black"), "Added border",
                  ("-bordercolor", "black", "-border", "6"))]
        expected = picture
        for titles, message, options in edits:
            before = len(self.program.history())
            self.edit("Edit image", *titles, message=message)
            expected = self.convert("-", *options, "+repage", "PNG24:-", data=expected)
            self.assertEqual(self.pasted(), self.pixels(expected), message)
            until(lambda: len(self.program.history()) > before, "recorded")
        # Other forms come out as well, and the entry in the history has become a file.
        self.assertEqual(self.pixels(self.screen.clipboard("image/bmp")), self.pixels(expected))
        until(lambda: len(self.program.stored()) == 6, "all of them stored")
        with open(self.program.stored()[0]["path"], "rb") as file:
            self.assertEqual(self.pixels(file.read()), self.pixels(expected))

        self.edit("Clipboard history", self.program.history()[5], "Edit image", "Resize", "25%",
                  message="Resized to 25% — copied to clipboard")
        self.assertEqual(self.pasted()[0], b"80 50")
        self.screen.set_clipboard(b"a text now")
        until(lambda: "Edit image" not in self.program.titles(), "nothing to edit")

    def test_saving(self):
        picture = self.convert("-size", "30x20", "plasma:", "PNG24:-")
        self.copy(picture)
        folder = self.screen.home / "Wherever/deeper"
        for _ in range(3):
            self.program.invoke("saveClipImageTo:", "--object", str(folder))
        until(lambda: folder.exists() and len(list(folder.glob("*.png"))) == 3, "three files")
        for path in folder.iterdir():
            self.assertRegex(path.name, NAME)
            self.assertEqual(path.read_bytes(), picture)
            self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600)

        self.program.invoke("chooseAndSaveClipImage")
        until(lambda: b"folder" in self.program.ctl("windows").stdout, "panel on the screen")
        chosen = self.screen.home / "Chosen"
        chosen.mkdir()
        until(lambda: self.screen.run("xdotool", "getactivewindow", "getwindowname").stdout
              == b"Choose a folder to save the clipboard image into\n", "panel in front")
        self.screen.run("xdotool", "type", "--delay", "20", str(chosen))
        self.screen.run("xdotool", "key", "Return")
        until(lambda: list(chosen.iterdir()), "saved there")
        until(lambda: self.program.stored("favoriteSaveDirs") == [str(chosen)], "remembered")
        name = next(chosen.iterdir()).name
        self.assertEqual(self.screen.notices()[-1]["body"], f"Saved to Chosen/{name}")

        self.program.invoke("copyCurrentClipImagePath")
        until(lambda: (self.screen.clipboard("UTF8_STRING") or b"").endswith(b".png"), "path")
        with open(self.screen.clipboard("UTF8_STRING"), "rb") as file:
            self.assertEqual(file.read(), picture)


if __name__ == "__main__":
    unittest.main()
