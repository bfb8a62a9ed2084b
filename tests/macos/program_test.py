"""The whole program on AppKit, as GNUstep has it: from a screenshot in the folder to the clipboard,
its menu, its editor and an alert, by mouse and keyboard. Pictures go to the tour's folder."""

import os
import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "desktop"))

from desktop_case import BIN, MARK, NOTICE_TITLE, png  # noqa: E402
from driver import ROOT, Marbelot  # noqa: E402
from gnustep_desktop import GNUstepDesktop  # noqa: E402
import virtual_desktop  # noqa: E402

PICTURES = ROOT / "build/tour"
PATIENCE = 60.0  # seconds, on a busy machine
ITEM = re.compile(r"^menu item (\d+) (\d+) ([+-]) (.*)$", re.MULTILINE)


def until(condition, what, interval=0.02):
    return virtual_desktop.until(condition, what, PATIENCE, interval)


class ProgramTest(unittest.TestCase):
    def setUp(self):
        self.screen = self.enterContext(GNUstepDesktop(os.environ["MARBELOT_GNUSTEP"]))
        for domain, key, value in (("com.apple.screencapture", "location", "~/Shots"),
                                   ("marbelot", "autoOCRImages", "no"),
                                   ("marbelot", "showClipboardHUD", "YES")):
            self.screen.set_default(domain, key, value)
        self.shot = self.seen = None
        (self.screen.home / "Shots").mkdir()
        self.program = Marbelot(self.screen, bus=False, watched=False,
                                env={"MARBELOT_DESCRIBE_MENUS": "1"})
        until(self.program.watches_folder, "folder watched")

    def log(self):
        self.program.check_alive()
        return self.screen.log("marbelot")

    def settled(self, what):
        """What the screen shows once that is something new, and stays as it is."""
        def shot():
            former = self.shot
            self.shot = self.screen.run("maim", check=True, timeout=PATIENCE).stdout
            return former == self.shot != self.seen
        until(shot, what, interval=0.2)
        self.seen = self.shot
        return self.shot

    def picture(self, name):
        PICTURES.mkdir(parents=True, exist_ok=True)
        (PICTURES / f"macos-{name}.png").write_bytes(self.settled(name))

    def mouse(self, *words):
        self.screen.run("xdotool", *map(str, words), check=True, timeout=PATIENCE)

    def open_menu(self):
        """The items of the status menu, which stays open while the button is held."""
        before = len(self.log())
        self.mouse("mousemove", self.screen.size[0] - 20, 10, "mousedown", 1)
        until(lambda: "Quit Marbelot" in self.log()[before:], "menu")
        return self.items(before)

    def items(self, start):
        """Where each item is that was shown since, whether it can be chosen, by its title."""
        return {title: (int(x), int(y), mark == "+")
                for x, y, mark, title in ITEM.findall(self.log()[start:])}

    def point_at(self, items, title):
        before = len(self.log())
        self.mouse("mousemove", *items[title][:2])
        until(lambda: f"menu at {title}\n" in self.log()[before:], title)

    def choose(self, items, title):
        self.point_at(items, title)
        self.mouse("mouseup", 1)

    def windows(self, name):
        return self.screen.run("xdotool", "search", "--onlyvisible", "--name", f"^{name}$",
                               timeout=PATIENCE).stdout.split()

    def type_into(self, name, *words):
        """Clicks on the middle of the window of that name, and types."""
        window = until(lambda: self.windows(name), name)[0]
        self.settled(name)
        self.mouse("mousemove", "--window", window.decode(), "--polar", 0, 0, "click", 1)
        self.mouse(*words)

    def test_a_screenshot_is_copied_told_counted_and_edited(self):
        image = png(240, 160, 3)
        path = self.program.shots / "Screenshot 1.png"
        path.write_bytes(image)
        os.setxattr(path, MARK, b"1")
        until(lambda: self.screen.clipboard("image/png") == image, "screenshot on the clipboard")
        self.assertTrue(self.screen.clipboard("image/tiff"))
        until(lambda: re.search(f'title: "{NOTICE_TITLE}" informativeText: "{path.name}"',
                                self.log()), "notice")
        until(lambda: self.windows("Clipboard preview"), "panel, turned on by a text")
        self.picture("panel")

        items = self.open_menu()
        self.assertIn("Image 240 × 160", items)
        self.assertIn("Copied this session: 1", items)
        self.assertFalse(items["Copied this session: 1"][2])
        self.assertIn(f"Watching: {self.program.shots}", items)
        self.picture("menu")
        before = len(self.log())
        self.point_at(items, "Canned responses")
        until(lambda: "Add canned response…" in self.items(before), "submenu")
        self.choose(self.items(before), "Add canned response…")
        self.type_into("New canned response", "type", "Thank you")
        self.picture("alert")
        self.mouse("key", "alt+Return")
        self.settled("alert closed")

        self.screen.set_clipboard("der Größe nach".encode())
        items = self.open_menu()
        before = len(self.log())
        self.point_at(items, "Canned responses")
        until(lambda: "“Thank you”" in self.items(before), "canned response kept")
        self.choose(items, "Edit clipboard text…")
        self.type_into("Edit clipboard text", "key", "ctrl+End", "type", " sortiert")
        self.picture("editor")
        self.mouse("key", "alt+Return")
        edited = "der Größe nach sortiert".encode()
        until(lambda: self.screen.clipboard("UTF8_STRING") == edited, "edited text copied")

        second = self.screen.run(BIN / "marbelot", timeout=PATIENCE)
        self.assertEqual((second.returncode, second.stderr), (0, b"marbelot: already running\n"))
        self.program.check_alive()


if __name__ == "__main__":
    unittest.main()
