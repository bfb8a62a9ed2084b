"""The main job on a Wayland desktop, beside its native programs."""

import hashlib
import pathlib
import unittest

from desktop_case import (BIN, DesktopTest, Marbelot, NOTICE_TITLE, png, screenshot_name, stays,
                          until)
from wayland_desktop import WaylandDesktop, installed

COPIES = 40


class WaylandTest(DesktopTest):
    def start(self, **options):
        if not installed("sway"):
            self.skipTest("sway is not installed")
        self.screen = self.enterContext(WaylandDesktop("sway", **options))
        self.program = Marbelot(self.screen)

    def keepers(self):
        """The process ids of marbelot-keeper on this desktop."""
        listed = self.screen.run("pgrep", "-f", f"^{BIN}/marbelot-keeper ").stdout.split()
        ours = f"XDG_RUNTIME_DIR={self.screen.env['XDG_RUNTIME_DIR']}\0".encode()
        return [int(number) for number in listed
                if ours in pathlib.Path(f"/proc/{int(number)}/environ").read_bytes()]

    def test_screenshots_can_be_pasted_and_copies_are_recorded(self):
        self.start()
        data = png(800, 600)
        self.program.save(screenshot_name(1), data)
        self.assert_on_clipboard(self.screen, data)
        until(self.screen.notices, "notice")
        self.assertEqual(self.screen.notices()[0]["title"], NOTICE_TITLE)
        self.assertEqual(self.program.copied(), 1)

        texts = [f"native copy {number}" for number in range(COPIES)]
        for number, text in enumerate(texts):
            self.screen.set_clipboard(text.encode())
            if number % 2:  # some follow each other at once, and some in peace
                until(lambda: text in self.program.stored_texts(), "copy recorded")
        recorded = until(lambda: texts[-1] in self.program.stored_texts() and
                         self.program.stored_texts(), "last copy recorded")
        kept = [text for text in reversed(recorded) if text in texts]
        self.assertEqual(kept, [text for text in texts if text in kept], "in their order")
        self.assertTrue(set(texts[1::2][-5:]) <= set(kept))
        self.assertEqual(self.program.preview(), f"“{texts[-1]}”")

        big = b"line of a large text\n" * (1 << 20)
        self.screen.set_clipboard(big)
        until(lambda: len(big) in self.program.stored_bytes(), "large text recorded")
        self.program.save(screenshot_name(2), data)
        self.assert_on_clipboard(self.screen, data)

    def test_secrets_stay_out_of_the_history(self):
        self.start()
        self.screen.set_clipboard(b"secret", "x-kde-passwordManagerHint")
        self.screen.set_clipboard(b"org.nspasteboard", "org.nspasteboard.ConcealedType")
        self.screen.set_clipboard(b"afterwards")
        until(lambda: "afterwards" in self.program.stored_texts(), "copy recorded")
        self.assertEqual(self.program.stored_texts(), ["afterwards"])

    def test_what_was_copied_outlives_the_program(self):
        self.start()
        data = png(800, 600, seed=3)
        self.program.save(screenshot_name(1), data)
        self.assert_on_clipboard(self.screen, data)
        self.program.invoke("quit")
        self.program.process.wait(10)
        self.assert_on_clipboard(self.screen, data)
        self.assertEqual(len(self.keepers()), 1)
        # The next run finds it there, and what is copied then ends the keeper.
        self.program = Marbelot(self.screen)
        digest = hashlib.sha256(self.screen.clipboard("image/png")).hexdigest()
        self.assertEqual(digest, hashlib.sha256(data).hexdigest())
        self.screen.set_clipboard(b"something else")
        until(lambda: "something else" in self.program.stored_texts(), "copy recorded")
        until(lambda: not self.keepers(), "keeper ended")

    def test_the_menu_opens_at_the_true_pointer_and_has_the_keys(self):
        self.start()
        for x, y in (600, 300), (200, 150):  # over no window of X11's
            self.screen.point(x, y)
            self.assertEqual(self.program.ctl("menu", "--popup").returncode, 0)
            self.assertEqual(until(self.program.popups, "menu on the screen")[0][:2], (x, y))
            self.screen.point(x - 100, y - 100, click=True)
            until(lambda: not self.program.popups(), "menu closed by a click beside it")
        self.screen.tray_click()
        until(self.program.popups, "menu on the screen")

        def closed_by_a_key():
            # The compositor gives a window the keys a moment after it is on the screen.
            self.screen.key("Escape")
            return not self.program.popups()
        until(closed_by_a_key, "menu closed by a key")

    def test_keyboard_cleaning_keeps_keys_from_native_windows(self):
        self.start()
        typed = self.screen.folder / "typed"
        self.screen.spawn("foot", "sh", "-c", f"stty raw -echo; cat > {typed}")

        def types(*words):
            # A new keyboard's first key may be lost.
            self.screen.run("wtype", "-k", "Shift_L", "-s", "100", *words)
        until(lambda: types("a") or typed.exists() and typed.read_bytes(), "a native window types")

        def cleaning():
            return b"cleaning" in self.program.ctl("windows").stdout
        self.program.invoke("toggleKeyboardBlock")
        until(cleaning, "dark window")
        # Nothing tells when the compositor has given it the keys.
        until(lambda: types(*["-k", "Escape", "-s", "100"] * 3) or not cleaning(), "ended")
        types("b")
        until(lambda: typed.read_bytes().endswith(b"b"), "keys arrive again")

        self.program.invoke("toggleKeyboardBlock")
        until(cleaning, "dark window")
        until(lambda: self.screen.run("xdotool", "getwindowfocus", "getwindowname").stdout ==
              b"marbelot\n", "the keys")
        before = typed.read_bytes()
        types("c")
        stays(lambda: typed.read_bytes() == before and cleaning(), "swallowed", 0.5)
        self.screen.run("swaymsg", "[app_id=foot] focus", check=True)
        until(lambda: not cleaning(), "nobody is locked out")
        self.assertIn("gave its keys", until(self.screen.notices, "notice")[-1]["body"])

    def test_pictures_are_taken_of_native_windows(self):
        self.start()
        self.screen.spawn("foot", "-o", "colors.background=206080", "sleep", "60")
        until(lambda: b'"app_id": "foot"' in self.screen.run("swaymsg", "-t", "get_tree").stdout,
              "a native window")
        width, height = self.screen.size
        self.screen.point(10, 10)  # there is a mouse, before anybody looks for one
        # A tiled window has a title bar above it, which is not part of it.
        self.check_capture(["Full screen"], None, lambda w, h: (w, h) == (width, height))
        self.check_capture(["Area"], lambda: self.screen.drag(400, 300, 200, 100),
                           lambda w, h: abs(w - 200) < 3 and abs(h - 100) < 3)
        self.check_capture(["Window", "Click a window…"],
                           lambda: self.screen.point(500, 500, click=True),
                           lambda w, h: width - 8 < w <= width and height - 40 < h < height)
        folder = self.screen.home / "Pictures/Marbelot"
        self.assertEqual(len(list(folder.iterdir())), 3)

    def check_capture(self, item, act, fits):
        before = self.program.copied()
        self.program.ctl("invoke", "Capture screenshot", *item, check=True)
        if act:
            def selecting():
                return self.screen.run("pgrep", "-x", "slurp").stdout
            until(selecting, "selection")
            # Nothing tells when it is on the screen; before, a hand does nothing to it.
            until(lambda: act() or not selecting(), "selected", interval=0.3)
        until(lambda: self.program.copied() > before, f"picture: {item}")
        header = self.screen.clipboard("image/png")[16:24]
        size = int.from_bytes(header[:4], "big"), int.from_bytes(header[4:], "big")
        self.assertTrue(fits(*size), size)

    def test_without_xwayland_it_says_once_what_is_missing(self):
        self.start(xwayland=False)
        data = png(800, 600)
        self.program.save(screenshot_name(1), data)
        self.assert_on_clipboard(self.screen, data)
        until(lambda: len(self.screen.notices()) == 2, "notices")
        self.assertIn("XWayland", self.screen.notices()[0]["title"])
        self.program.ctl("menu", "--popup")
        self.program.invoke("quit")
        self.program.process.wait(10)
        self.program = Marbelot(self.screen)
        self.program.save(screenshot_name(2), data)
        until(lambda: len(self.screen.notices()) == 3, "notice")
        self.assertEqual(self.screen.notices()[2]["title"], NOTICE_TITLE)


if __name__ == "__main__":
    unittest.main()
