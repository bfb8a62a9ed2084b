"""The panels on a real screen: what they show, what clicks and keys do, and who keeps the focus."""

import json
import struct
import unittest

from desktop_case import DesktopTest, Marbelot, png, stays, until


class HudTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.typed = self.screen.spawn("xev", "-event", "keyboard", "-geometry", "300x200+100+600")
        until(lambda: self.active() != "", "another program has the focus")
        self.program = Marbelot(self.screen)
        self.other = self.active()

    def active(self):
        return self.screen.run("xdotool", "getactivewindow").stdout.decode().strip()

    def windows(self, kind=None):
        result = self.program.ctl("windows", "--json")
        self.assertEqual(result.returncode, 0, result.stderr)
        return [one for one in json.loads(result.stdout) if kind in (None, one["kind"])]

    def window(self, kind):
        return until(lambda: self.windows(kind), kind)[0]

    def gone(self, kind):
        until(lambda: not self.windows(kind), f"no {kind}")

    def press(self, kind, spec):
        result = self.program.ctl("press", kind, spec)
        self.assertEqual(result.returncode, 0, result.stderr)

    def point_at(self, frame, x=0.5, y=0.5):
        """Moves the pointer to a place in a frame, told as shares of it from the upper left."""
        across = frame["x"] + frame["width"] * x
        down = self.screen.size[1] - frame["y"] - frame["height"] * (1 - y)
        self.screen.run("xdotool", "mousemove", str(round(across)), str(round(down)))

    def click(self, frame, x=0.5, y=0.5):
        self.point_at(frame, x, y)
        self.screen.run("xdotool", "click", "1")

    def keys(self, *names):
        for name in names:
            self.screen.run("xdotool", "key", name)

    def size_on_clipboard(self):
        data = self.screen.clipboard("image/png") or b""
        return struct.unpack(">II", data[16:24]) if len(data) > 24 else None

    def told(self):
        notices = self.screen.notices()
        return notices[-1]["body"] if notices else None

    def key_presses(self):
        return self.screen.log("xev").count("KeyPress event")

    def test_a_copy_shows_without_taking_the_focus_and_moves_by_arrow_keys(self):
        self.program.invoke("toggleClipboardHUD")
        self.window("hud")
        self.screen.set_clipboard(b"https://example.org/path")
        until(lambda: any(button["spec"] == "open" for button in self.window("hud")["buttons"]),
              "the link's button")
        before = self.window("hud")["frame"]
        self.assertEqual(before["x"] + before["width"], self.screen.size[0] - 16)
        typed = self.key_presses()
        self.point_at(before)
        self.keys("Left")
        until(lambda: self.window("hud")["frame"]["x"] < before["x"], "panel moved")
        # The other program has the key, and the focus, all the same.
        until(lambda: self.key_presses() > typed, "key arrived")
        self.assertEqual(self.active(), self.other)
        self.assertFalse(self.window("hud")["focused"])
        self.assertEqual(self.program.stored("hudPopupPlacement"), 1)
        self.screen.run("xdotool", "mousemove", "5", "1000")
        self.gone("hud")

    def edit(self, picture):
        """Copies a picture and gives it a border in the editor."""
        self.screen.set_clipboard(picture, "image/png")
        until(lambda: any(button["spec"] == "undo" for button in self.window("hud")["buttons"]),
              "the picture's panel")
        self.click(self.window("hud")["frame"], y=0.3)
        self.window("editor")
        self.assertEqual(self.active(), self.other)
        self.press("editor", "pin")
        self.press("editor", "group:border")
        self.window("menu")
        self.keys("Down", "Return")
        until(lambda: not self.windows("menu"), "menu closed")

    def test_edits_by_clicks_and_loses_none(self):
        self.program.invoke("toggleClipboardHUD")
        self.edit(png(400, 300))
        self.press("editor", "crop")
        crop = self.window("crop")["frame"]
        self.gone("editor")
        self.point_at(crop, 0.3, 0.3)
        self.screen.run("xdotool", "mousedown", "1")
        self.point_at(crop, 0.5, 0.5)
        self.point_at(crop, 0.6, 0.6)
        self.screen.run("xdotool", "mouseup", "1")
        self.keys("Return")
        self.window("editor")
        self.press("editor", "undo")
        self.press("editor", "done")
        self.gone("editor")
        until(lambda: self.size_on_clipboard() == (414, 314), "the border on the clipboard")
        self.gone("hud")

        self.edit(png(300, 200))
        self.program.ctl("quit")
        self.program.process.wait(10)
        self.program = Marbelot(self.screen)
        until(lambda: any("312 × 212" in entry for entry in self.program.history()), "edit kept")

    def test_the_widget_is_dragged_and_opens_the_large_preview(self):
        self.program.invoke("toggleAlwaysOnPreview")
        self.screen.set_clipboard(png(200, 100), "image/png")
        until(lambda: self.window("widget")["frame"]["height"] > 100, "the picture")
        frame = self.window("widget")["frame"]
        self.assertEqual(frame["x"] + frame["width"], self.screen.size[0] - 12)
        self.point_at(frame)
        self.screen.run("xdotool", "mousedown", "1")
        for step in range(1, 11):
            self.screen.run("xdotool", "mousemove_relative", "--", "-30", "20")
        self.screen.run("xdotool", "mouseup", "1")
        until(lambda: self.program.stored("alwaysHUDCorner") == -1, "free position stored")
        moved = self.window("widget")["frame"]
        self.assertLess(moved["x"], frame["x"] - 200)
        self.assertEqual(self.active(), self.other)
        self.point_at(moved)
        self.screen.run("xdotool", "click", "--repeat", "2", "--delay", "40", "1")
        self.assertEqual(self.window("preview")["title"], "Clipboard — 200 × 100")
        self.press("widget", "corner")
        until(lambda: self.window("widget")["frame"]["y"] == 12, "bottom right")
        self.press("widget", "close")
        self.gone("widget")

    def test_keyboard_cleaning_swallows_keys_until_the_third_escape(self):
        self.keys("a")
        until(lambda: self.key_presses() > 0, "key arrived")
        typed = self.key_presses()
        self.program.invoke("toggleKeyboardBlock")
        cleaning = self.window("cleaning")["frame"]
        self.assertEqual((cleaning["width"], cleaning["height"]), self.screen.size)
        self.keys("b", "super+e", "ctrl+q", "Escape", "alt+F4", "Escape")
        stays(lambda: self.key_presses() == typed and self.windows("cleaning"), "swallowed", 0.5)
        self.keys("Escape")
        self.gone("cleaning")
        self.keys("Escape")
        until(lambda: self.active() == self.other, "focus back")
        self.keys("c")
        until(lambda: self.key_presses() > typed, "keys arrive again")

        # A dialog would take the keys, and be answered unseen; one that is open has them.
        self.program.invoke("toggleKeyboardBlock")
        self.window("cleaning")
        self.program.invoke("addCanned")
        self.keys("Escape", "Return", "Escape")
        stays(lambda: not self.windows("alert"), "held back", 0.5)
        self.keys("Escape")
        self.window("alert")
        self.program.invoke("toggleKeyboardBlock")
        until(lambda: self.told() == "The keyboard can't be disabled: a dialog is open", "refused")
        self.keys("Escape")
        self.gone("alert")

        # A selection holds the keyboard, too.
        selection = self.screen.spawn("maim", "-s", self.screen.folder / "selection.png")
        until(lambda: b"slop" in self.screen.run("xwininfo", "-root", "-tree").stdout, "selection")
        self.program.invoke("toggleKeyboardBlock")
        until(lambda: self.told() == "The keyboard can't be disabled: another program holds it",
              "refused")
        self.assertFalse(self.windows("cleaning"))
        self.screen.end(selection)
        # Nobody is locked out by a program that dies.
        self.program.invoke("toggleKeyboardBlock")
        self.window("cleaning")
        self.program.kill()
        typed = self.key_presses()

        def arrives():
            self.keys("d")
            return self.key_presses() > typed
        until(arrives, "keys arrive after the end", interval=0.2)


if __name__ == "__main__":
    unittest.main()
