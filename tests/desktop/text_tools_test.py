"""The text tools with real keys and the clipboard of another program."""

import json
import time
import unittest

from desktop_case import DesktopTest, Marbelot, until

MEGABYTE = 1 << 20


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
        return next((w["title"] for w in windows if w["id"] == name), None)

    def focus(self, name):
        title = until(lambda: self.window(name), f"window {name}")
        until(lambda: self.screen.run("xdotool", "getactivewindow", "getwindowname").stdout.decode()
              .strip() == title, f"{name} active")

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

    def test_collect(self):
        self.program.invoke("toggleConcat")
        self.until_said("Collecting copies")
        for number, piece in enumerate(("first", "second"), 1):
            self.copy(piece)
            until(lambda: f"Collect copies ({number})" in self.program.titles(), piece)
        self.program.invoke("setConcatSeparator:", "--object", "comma")
        self.program.invoke("copyConcat")
        self.until_text("first, second")
        self.until_said("Copied 2 pieces")
        self.assertIn("Collect copies (2)", self.program.titles(), "its own copy")

    def test_canned_response(self):
        self.program.invoke("addCanned")
        self.focus("alert")
        self.type("Kind regards,")
        self.key("Return")
        # Asking again brings the open dialog back, with what was typed.
        self.screen.run("xdotool", "getactivewindow", "windowminimize", check=True)
        until(lambda: self.screen.run("xdotool", "getactivewindow", "getwindowname").returncode or
              b"Marbelot" not in self.screen.run("xdotool", "getactivewindow",
                                                 "getwindowname").stdout, "minimised")
        self.program.invoke("addCanned")
        self.focus("alert")
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
        self.key("ctrl+z", "ctrl+z", "ctrl+z", "ctrl+z", "ctrl+Return")
        self.until_text("a\r\nb\r\n")
        self.key("ctrl+w")
        until(lambda: not self.window("editor"), "closed")

    def test_large_texts(self):
        self.program.ctl("quit")
        self.program.process.wait(10)
        texts = ["a line of fifty bytes, as there are many in a log\n" * MEGABYTE + "end",
                 "x" * (50 * MEGABYTE)]
        settings = self.screen.config / "marbelot/org.marbelot.Marbelot.json"
        settings.write_text(json.dumps({"cannedResponses": texts}))
        self.program = Marbelot(self.screen)
        for number, text in enumerate(texts):
            self.program.invoke("copyCanned:", "--object", str(number))
            self.program.invoke("showClipboardViewer")
            end = time.monotonic() + 3
            self.assertLess(
                self.program.longest_answer(lambda: time.monotonic() > end, "three seconds"), 1)
            lines = text.count("\n") + 1
            until(lambda: self.window("viewer") == f"Clipboard — {len(text)} chars, {lines} line"
                  + ("" if lines == 1 else "s"), "counted")


if __name__ == "__main__":
    unittest.main()
