"""The text tools with real keys and the clipboard of another program."""

import json
import re
import unittest

from desktop_case import DesktopTest, Marbelot, until


class TextToolsTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.program = Marbelot(self.screen)
        self.screen.run("xdotool", "mousemove", "300", "200")

    def copy(self, text):
        """Another program copies; returns when the menu can know of it."""
        before = self.program.preview()
        self.screen.set_clipboard(text.encode())
        until(lambda: self.program.preview() != before, "copy noticed")

    def text(self):
        data = self.screen.clipboard("UTF8_STRING")
        return None if data is None else data.decode()

    def until_text(self, text):
        until(lambda: self.text() == text, f"{text!r} on the clipboard")

    def said(self):
        notices = self.screen.notices()
        return notices[-1]["body"] if notices else None

    def until_said(self, message):
        until(lambda: self.said() == message, message)

    def key(self, *keys):
        self.screen.run("xdotool", "key", *keys, check=True)

    def type(self, text):
        self.screen.run("xdotool", "type", "--delay", "30", text, check=True)

    def window(self, name):
        """The title of the visible window; None when there is none."""
        windows = json.loads(self.program.ctl("windows", "--json").stdout)
        return next((w["title"] for w in windows if w["kind"] == name), None)

    def active(self, *facts):
        """What xdotool tells of the active window, its number by default."""
        return self.screen.run("xdotool", "getactivewindow", *facts).stdout.decode().strip()

    def xprop(self, name):
        return self.screen.run("xprop", "-id", self.active(), name).stdout.decode()

    def place(self):
        """Of the active window without its decorations: x, y, width, height."""
        facts = self.screen.run("xwininfo", "-id", self.active()).stdout.decode()
        return tuple(int(re.search(name + r": +(-?\d+)", facts)[1]) for name in (
            "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))

    def focus(self, name):
        title = until(lambda: self.window(name), f"window {name}")
        until(lambda: self.active("getwindowname") == title, f"{name} active")

    def menu_key(self, key):
        self.program.ctl("menu", "--popup")
        until(self.program.popups, "menu on the screen")
        self.key(key)
        until(lambda: not self.program.popups(), "menu closed")

    def test_flatten_and_trim(self):
        self.copy("one\n two \nthree")
        self.assertEqual(self.program.submenu("Flatten newlines")[2]["title"],
                         "Comma-separated → “one, two …”")
        self.menu_key("ctrl+f")
        self.until_text("one two three")
        self.until_said("Clipboard flattened to one line")
        # Keyboards without Latin letters, and with them on a second layout.
        for layout in ("ru", "gr,fr"):
            self.screen.run("setxkbmap", "-layout", layout, check=True)
            self.copy(f"{layout}\nflat")
            self.menu_key("ctrl+41")  # the key of F
            self.until_text(f"{layout} flat")
        self.screen.run("setxkbmap", "-layout", "us", check=True)
        self.copy("  left\n  over ")
        self.program.ctl("invoke", "Trim clipboard", self.program.submenu("Trim clipboard")[0]["title"])
        self.until_text("left\nover ")
        self.until_said("Clipboard trimmed (left)")
        recorded = [item.get("title", "") for item in self.program.submenu("Clipboard history")]
        self.assertTrue(any("one two three" in title for title in recorded), recorded)

    def test_canned_response(self):
        self.program.invoke("addCanned")
        self.focus("alert")
        self.type("Kind regards,")
        self.key("Return")
        # Asking again brings the open dialog back, with what was typed.
        self.screen.run("xdotool", "getactivewindow", "windowminimize", check=True)
        until(lambda: self.active("getwindowname") != "Marbelot", "minimised")
        self.program.invoke("addCanned")
        self.focus("alert")
        sizes = re.findall(r"(?:min|max)imum size: (\d+ by \d+)", self.xprop("WM_NORMAL_HINTS"))
        self.assertEqual(sizes, sizes[:1] * 2, "cannot be pulled apart")
        self.type("M. Marble")
        self.key("ctrl+Return")
        title = "“Kind regards,⏎M. Marble”"
        until(lambda: self.program.submenu("Canned responses")[0]["title"] == title, "canned response")
        self.program.invoke("addCanned")
        self.focus("alert")
        self.type("never mind")
        self.key("Escape")
        until(lambda: not self.window("alert"), "cancelled")
        self.program.ctl("invoke", "Canned responses", title)
        self.until_text("Kind regards,\nM. Marble")
        self.assertEqual(self.program.submenu("Canned responses")[1], {"separator": True})

    def test_editor(self):
        self.copy("a\r\nb\r\n")
        self.program.invoke("editClipboardText")
        self.focus("editor")
        self.type("new")
        self.key("Return", "Escape", "ctrl+Return")
        self.until_said("Saved edited text to clipboard")
        self.until_text("new\r\na\r\nb\r\n")
        self.assertEqual(self.window("editor"), "Edit clipboard text")
        self.key(*["ctrl+z"] * 8, "ctrl+Return")
        self.until_text("a\r\nb\r\n")
        self.key(*["ctrl+y"] * 8, "ctrl+Return")
        self.until_text("new\r\na\r\nb\r\n")
        x, y, width, height = self.place()
        self.screen.run("xdotool", "mousemove", str(x + width - 90), str(y + height - 22),
                        "click", "1", check=True)
        until(lambda: len(self.screen.notices()) == 4, "saved by a click")
        self.type("er")
        self.key("ctrl+Return")
        self.until_text("new\r\nera\r\nb\r\n")
        self.key("ctrl+w")
        until(lambda: not self.window("editor"), "closed")

    def test_maximised_viewer_stays_on_the_screen(self):
        def show(text):
            self.copy(text)
            self.program.invoke("showClipboardViewer")
            self.focus("viewer")

        def state(change):
            """Asks the window manager, which then has done all that it was asked before."""
            self.screen.run("wmctrl", "-r", ":ACTIVE:", "-b", change, check=True)

        show("one")
        before = self.place()
        state("add,maximized_vert,maximized_horz")
        until(lambda: self.place() != before, "maximised")
        maximised = self.place()
        show("two words")
        state("add,above")
        until(lambda: "ABOVE" in self.xprop("_NET_WM_STATE"), "above")
        self.assertEqual(self.place(), maximised)
        self.key("Escape")
        until(lambda: not self.window("viewer"), "closed")
        show("and three words")
        until(lambda: self.place() == maximised, "maximised again")


if __name__ == "__main__":
    unittest.main()
