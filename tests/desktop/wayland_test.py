"""The main job on a Wayland desktop, beside its native programs."""

import json
import pathlib
import signal
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
        self.screen.point(10, 10)  # a mouse and a keyboard, before anybody looks for one
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
        until(lambda: self.program.preview() == "Image 800 × 600", "found")
        self.screen.set_clipboard(b"something else")
        until(lambda: "something else" in self.program.stored_texts(), "copy recorded")
        until(lambda: not self.keepers(), "keeper ended")

    def test_the_menu_opens_at_the_true_pointer_and_has_the_keys(self):
        self.start(bar=True)

        def below_bar():
            workspaces = self.screen.run("swaymsg", "-t", "get_workspaces").stdout
            return json.loads(workspaces)[0]["rect"]["y"]
        until(below_bar, "bar")
        for x, y in (600, 300), (200, 150), (300, 5):  # over no window of X11's
            self.screen.point(x, y)
            self.assertEqual(self.program.ctl("menu", "--popup").returncode, 0)
            self.assertEqual(until(self.program.popups, "menu on the screen")[0][:2],
                             (x, max(y, below_bar())))
            self.screen.point(x - 100, y + 100, click=True)
            until(lambda: not self.program.popups(), "menu closed by a click beside it")
        self.screen.tray_click()
        until(self.program.popups, "menu on the screen")
        self.key_to_program("Escape")
        until(lambda: not self.program.popups(), "menu closed by a key")

    def key_to_program(self, *names):
        # The compositor gives a window the keys a moment after it is on the screen.
        until(lambda: self.screen.run("xdotool", "getwindowfocus").stdout in
              self.screen.run("xdotool", "search", "--class", "marbelot").stdout.splitlines(True),
              "keys go to the program")
        for name in names:
            self.screen.key(name)

    def test_a_shortcut_of_the_desktop_opens_the_menu(self):
        self.start()

        def asked():
            # Who quits before the answer withdraws.
            return [line for line in self.screen.log("portal").splitlines()
                    if line not in ("ready", "withdrawn")]
        once = ["program org.marbelot.Marbelot", "session marbelot",
                "bind menu Open the Marbelot menu"]
        for times in 1, 2:  # a portal that comes late, and again
            portal = self.screen.spawn("/usr/bin/python3",
                                       pathlib.Path(__file__).with_name("portal.py"), "/dev/null",
                                       self.screen.home, log="portal")
            until(lambda: asked() == once * times, "shortcut bound")
            portal.send_signal(signal.SIGUSR1)
            until(self.program.popups, "menu on the screen")
            if times == 1:
                self.key_to_program("Escape")
                self.screen.end(portal)
        self.key_to_program("Up", "Return")
        self.program.process.wait(10)  # the last item quits

        (self.screen.home / "Early").touch()  # who has it already does not bind it
        self.program = Marbelot(self.screen)
        until(lambda: asked() == once * 3, "shortcut asked for")
        until(lambda: portal.send_signal(signal.SIGUSR1) or self.program.popups(),
              "menu on the screen", interval=0.5)
        self.key_to_program("Up", "Return")
        self.program.process.wait(10)

        (self.screen.home / "Early").rename(self.screen.home / "Cancel")
        for _ in range(2):  # who wants none is asked once
            self.program = Marbelot(self.screen)
            until(lambda: self.program.stored("declinedMenuShortcut"), "declined")
            self.program.invoke("quit")
            self.program.process.wait(10)
        self.assertEqual(asked(), once * 4)

    def test_keyboard_cleaning_keeps_keys_from_windows_and_shortcuts(self):
        for xwayland in True, False:
            with self.subTest(xwayland=xwayland):
                self.start(xwayland=xwayland)
                self.clean_keyboard()
        # Where the compositor hands over no keys, they are the focused window's.
        self.start()
        self.program.invoke("quit")
        self.program.process.wait(10)
        self.program = Marbelot(self.screen, env={"WAYLAND_DISPLAY": "none"})
        typed = self.type_into_foot()
        self.program.invoke("toggleKeyboardBlock")
        until(lambda: self.cleaning() and self.focused() != "foot", "dark window")
        before = typed.read_bytes()
        self.screen.key("c")
        stays(lambda: typed.read_bytes() == before and self.cleaning(), "swallowed", 0.5)
        self.screen.run("swaymsg", "[app_id=foot] focus", check=True)
        until(lambda: not self.cleaning(), "nobody is locked out")
        until(lambda: any("gave its keys" in notice["body"] for notice in self.screen.notices()),
              "notice")

    def cleaning(self):
        return b"cleaning" in self.program.ctl("windows").stdout

    def focused(self):
        nodes = [json.loads(self.screen.run("swaymsg", "-t", "get_tree").stdout)]
        for node in nodes:
            nodes += node["nodes"] + node["floating_nodes"]
        return next((node.get("app_id", "") for node in nodes if node["focused"]), None)

    def press(self, *names):
        for name in names:
            self.screen.key(name)

    def type_into_foot(self):
        typed = self.screen.folder / "typed"
        self.screen.spawn("foot", "sh", "-c", f"stty raw -echo; cat > {typed}")
        until(lambda: self.press("a") or typed.exists() and typed.read_bytes(),
              "a native window types")
        return typed

    def clean_keyboard(self):
        typed, fired = self.type_into_foot(), self.screen.folder / "fired"
        self.screen.run("swaymsg", "bindsym", "F12", "exec", f"echo fired >> {fired}", check=True)
        self.press("F12")
        until(fired.exists, "shortcut of the desktop")
        before = typed.read_bytes()
        self.program.invoke("toggleKeyboardBlock")
        until(self.cleaning, "dark window")
        self.press("c", "F12", "Escape", "Escape", "Escape")
        until(lambda: not self.cleaning(), "ended")
        until(lambda: self.press("b") or typed.read_bytes().endswith(b"b"), "keys arrive again")
        self.assertEqual(typed.read_bytes().rstrip(b"b"), before)
        self.press("F12")
        until(lambda: len(fired.read_text().split()) > 1, "shortcut of the desktop again")
        self.assertEqual(len(fired.read_text().split()), 2, "not while the keyboard was cleaned")

    def test_pictures_are_taken_of_native_windows(self):
        self.start()
        self.screen.spawn("foot", "-o", "colors.background=206080", "sleep", "60")
        until(lambda: b'"app_id": "foot"' in self.screen.run("swaymsg", "-t", "get_tree").stdout,
              "a native window")
        width, height = self.screen.size
        # A tiled window has a title bar above it, which is not part of it.
        self.check_capture(["Full screen"], None, lambda w, h: (w, h) == (width, height))
        self.check_capture(["Area"], lambda: self.screen.drag(400, 300, 200, 100),
                           lambda w, h: abs(w - 200) < 3 and abs(h - 100) < 3)
        self.check_capture(["Window", "Click a window…"],
                           lambda: self.screen.point(500, 500, click=True),
                           lambda w, h: width - 8 < w <= width and height - 40 < h < height)
        self.assertNotIn("No other apps running",
                         self.program.ctl("menu").stdout.decode())
        self.check_capture(["Window", "Foot"], None,
                           lambda w, h: width - 8 < w <= width and height - 40 < h < height)
        folder = self.screen.home / "Pictures/Marbelot"
        self.assertEqual(len(list(folder.iterdir())), 4)
        # A selection ends with the program.
        self.program.ctl("invoke", "Capture screenshot", "Window", "Click a window…", check=True)
        tool = int(until(self.selecting, "selection"))
        self.program.invoke("quit")
        self.program.process.wait(10)
        until(lambda: not pathlib.Path(f"/proc/{tool}").exists(), "selection gone")

    def selecting(self):
        return self.screen.run("pgrep", "-x", "slurp", "-P",
                               str(self.program.process.pid)).stdout

    def test_a_compositor_that_hangs_is_asked_again(self):
        self.start()
        self.program.invoke("quit")
        self.program.process.wait(10)
        self.screen.compositor.send_signal(signal.SIGSTOP)
        self.program = Marbelot(self.screen)
        self.program.invoke("captureFullScreen")
        until(self.screen.notices, "no picture")
        self.screen.compositor.send_signal(signal.SIGCONT)
        self.program.invoke("captureFullScreen")
        until(self.program.copied, "picture")

    def check_capture(self, item, act, fits):
        before = self.program.copied()
        self.program.ctl("invoke", "Capture screenshot", *item, check=True)
        if act:
            until(self.selecting, "selection")
            # Nothing tells when it is on the screen; before, a hand does nothing to it.
            until(lambda: act() or not self.selecting(), "selected", interval=0.3)
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
        self.assertIn("XWayland", self.screen.notices()[0]["body"])
        self.program.ctl("menu", "--popup", check=True)
        until(lambda: self.focused() == "org.marbelot.Marbelot", "menu on the screen")
        self.program.invoke("quit")
        self.program.process.wait(10)
        self.program = Marbelot(self.screen)
        self.program.save(screenshot_name(2), data)
        until(lambda: len(self.screen.notices()) == 3, "notice")
        self.assertEqual(self.screen.notices()[2]["body"], screenshot_name(2))


if __name__ == "__main__":
    unittest.main()
