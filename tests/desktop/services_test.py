"""What the desktop lacks, or what hangs in it, does not hold up the program."""

import shutil
import signal
import unittest

from desktop_case import (BIN, DesktopTest, Marbelot, VirtualDesktop, png, screenshot_name,
                          until)

POINTER = (700, 400)
SECONDS = 5  # what waits for a service waits at least for twice as long


class ServicesTest(DesktopTest):
    def start(self, **options):
        self.screen = self.desktop(**options)
        self.program = Marbelot(self.screen, bus=options.get("bus", True))

    def check_copies(self, number=1):
        data = png(seed=number)
        self.program.save(screenshot_name(number), data)
        self.assert_on_clipboard(self.screen, data)

    def check_answers_at_once(self):
        self.assertLess(self.program.answer_seconds(), SECONDS)

    def check_popup_at_pointer(self):
        x, y, width, height = until(self.program.popups, "menu on the screen")[0]
        # A menu keeps a frame's width off the pointer.
        self.assertTrue(x - 3 <= POINTER[0] <= x + width + 3, (x, width))
        self.assertTrue(y - 3 <= POINTER[1] <= y + height + 3, (y, height))
        self.screen.run("xdotool", "key", "Escape")
        until(lambda: not self.program.popups(), "menu closed")

    def check_second_start_opens_menu(self):
        self.screen.run("xdotool", "mousemove", *map(str, POINTER))
        second = self.screen.run(BIN / "marbelot")
        self.assertEqual(second.returncode, 0, second.stderr)
        self.check_popup_at_pointer()
        self.check_copies(2)

    def test_a_host_that_draws_the_menu_itself(self):
        self.screen = self.desktop(tray="embed")  # GNOME and KDE have one of those, too
        self.screen.start_tray_host()
        self.program = Marbelot(self.screen)
        until(self.screen.tray_items, "status item")
        item = self.screen.tray_items()[-1]
        path = until(lambda: self.screen.tray_property("Menu"), "menu for the host")

        def call(method, signature, *arguments):
            return self.screen.call(item["bus"], path, "com.canonical.dbusmenu", method, signature,
                                    arguments)

        def labels():
            entries = call("GetLayout", "(iias)", 0, -1, [])[1][2]
            return {entry[1].get("label", "").replace("_", ""): entry[0] for entry in entries}
        self.assertIn("Quit Marbelot", labels(), "before it is opened")
        self.screen.set_clipboard(b"on the clipboard now")
        until(lambda: self.program.preview(), "copy recorded")
        call("AboutToShow", "(i)", 0)
        until(lambda: any("on the clipboard now" in label for label in labels()), "menu up to date")
        quit_item = next(number for label, number in labels().items() if "Quit" in label)
        call("Event", "(isvu)", quit_item, "clicked", self.variant("s", ""), 0)
        self.program.process.wait(10)

    @staticmethod
    def variant(signature, value):
        from gi.repository import GLib
        return GLib.Variant(signature, value)

    def test_no_session_bus(self):
        self.start(bus=False, tray="embed")
        self.check_embedded()
        self.check_copies()
        refused = self.program.ctl("menu")
        self.assertEqual(refused.returncode, 1)
        self.assertEqual(refused.stderr.count(b"\n"), 1, refused.stderr)

    def test_session_bus_that_never_answers(self):
        self.screen = self.desktop()
        self.screen.bus_process.send_signal(signal.SIGSTOP)
        self.program = Marbelot(self.screen, bus=False)
        self.check_copies()
        self.screen.bus_process.send_signal(signal.SIGCONT)
        until(lambda: self.program.ctl("menu").returncode == 0, "menu answered")
        until(self.screen.tray_items, "status item")
        until(self.screen.notices, "notice of the screenshot")
        self.check_second_start_opens_menu()

    def test_end_while_the_session_bus_does_not_answer(self):
        self.screen = self.desktop()
        self.screen.bus_process.send_signal(signal.SIGSTOP)
        program = Marbelot(self.screen, bus=False).process
        program.terminate()
        self.assertEqual(program.wait(5), 0)

    def test_no_notification_service(self):
        self.start(notices=None)
        self.check_copies()
        self.check_answers_at_once()

    def test_notification_service_that_never_answers(self):
        self.start(notices="mute")
        for number in range(3):
            self.check_copies(number)  # gives up long before the call of the service does
            self.check_answers_at_once()

    def test_no_tray(self):
        self.start(tray=None)
        until(self.screen.notices, "notice that there is no tray")
        self.assertEqual(self.program.titles()[0], "Marbelot — auto-copy screenshots")
        self.check_second_start_opens_menu()
        told = [n for n in self.screen.notices() if "Screenshot from" not in n["body"]]
        self.assertEqual(len(told), 1)

    def test_tray(self):
        self.start()
        until(self.screen.tray_items, "status item")
        self.screen.run("xdotool", "mousemove", *map(str, POINTER))
        self.screen.tray_click(*POINTER)
        self.check_popup_at_pointer()

        def icon():
            return [self.screen.tray_property(name) for name in ("IconName", "IconPixmap")]

        camera = icon()
        self.program.save(screenshot_name(1), png(seed=1))
        until(lambda: icon() != camera, "check mark", 3)
        until(lambda: icon() == camera, "camera again", 3)
        self.check_second_start_opens_menu()

    def check_embedded(self):
        until(lambda: any("marbelot" in line for line in self.screen.windows_of("trayer")),
              "icon in the tray")

    def test_xembed_tray(self):
        self.start(tray="embed")
        self.check_embedded()

    def test_trays_that_come_late(self):
        for start, check in ((VirtualDesktop.start_embedding_tray, self.check_embedded),
                             (VirtualDesktop.start_tray_host,
                              lambda: until(self.screen.tray_items, "status item"))):
            self.start(tray=None)
            until(self.screen.notices, "nobody looks for a tray any more")
            start(self.screen)
            check()

    def test_clipboard_owner_that_never_answers(self):
        self.start()
        for _ in range(2):
            owner = self.screen.spawn(BIN / "clipboard_owner", "--silent")
            until(lambda: "ready" in self.screen.log("clipboard_owner"), "silent owner")
            # Through several of the clipboard's polls.
            for _ in range(8):
                self.check_answers_at_once()
            self.screen.end(owner)
        self.screen.set_clipboard("an answer at last".encode())
        until(lambda: "an answer at last" in self.program.preview(), "text shown")
        self.check_copies()

    def press_privacy_button(self):
        """Opens the prompt about the folder's access and presses its first button; the notice."""
        told = len(self.screen.notices())
        self.program.invoke("openScreenshotAccessSettings")
        until(lambda: b"alert" in self.program.ctl("windows").stdout, "prompt")

        def pressed():
            self.screen.run("xdotool", "key", "Return")
            return b"alert" not in self.program.ctl("windows").stdout
        until(pressed, "prompt answered", interval=0.2)
        until(lambda: len(self.screen.notices()) > told, "notice")
        self.assertEqual(len(self.screen.notices()), told + 1)
        return self.screen.notices()[-1]["body"]

    def test_folder_without_access(self):
        self.screen = self.desktop()
        self.program = Marbelot(self.screen, watched=False)
        shots = self.program.shots
        warning = until(lambda: [item for item in self.program.menu()
                                 if item.get("title") == "⚠︎ Allow screenshot access…"], "warning")
        self.assertEqual(warning[0]["toolTip"], f"{shots}: No such file or directory")
        # There is neither a file manager on the bus nor anything else that could open a folder.
        if not shutil.which("xdg-open"):
            advice = self.press_privacy_button()
            self.assertIn(f"{shots}: No such file or directory", advice)
            self.assertIn(f"There is no file manager to open. Make the folder: mkdir -p '{shots}'",
                          advice)

        # The ordinary way, with an opener that knows no program for folders, and one that does.
        opener = self.screen.folder / "bin/xdg-open"
        opener.parent.mkdir()
        self.screen.end(self.program.process)
        path = f"{opener.parent}:{self.screen.env['PATH']}"
        self.program = Marbelot(self.screen, watched=False, env={"PATH": path})
        for script, shown in (("exit 3", False), (f'echo "$1" > {opener}.told', True)):
            opener.write_text(f"#!/bin/sh\n{script}\n")
            opener.chmod(0o755)
            self.assertEqual("no file manager" not in self.press_privacy_button(), shown)
        told = opener.with_suffix(".told").read_text()
        self.assertEqual(told, f"{self.screen.home}\n")

        # The file manager: where the folder should be, and what is in its place.
        self.screen.start_file_manager()
        self.press_privacy_button()
        shots.write_text("")
        self.assertIn(f"{shots}: Not a directory", self.press_privacy_button())
        self.assertEqual(self.screen.shown_by_file_manager(), [
            {"method": "ShowFolders", "urls": [self.screen.home.as_uri()]},
            {"method": "ShowItemProperties", "urls": [shots.as_uri()]}])

    def test_command_line(self):
        self.start()
        for arguments in (["frobnicate"], ["invoke"], ["menu", "--frobnicate"]):
            self.assertEqual(self.program.ctl(*arguments).returncode, 2, arguments)
        for arguments in (["invoke", "No such item"], ["invoke", "--action", "noSuchAction:"],
                          ["classify", "/"]):
            failed = self.program.ctl(*arguments)
            self.assertEqual(failed.returncode, 1, arguments)
            self.assertEqual(failed.stderr.count(b"\n"), 1, failed.stderr)
        help_text = self.program.ctl("help").stdout.decode()
        for default in ("one space", "both", "36"):
            self.assertIn(f"default: {default}", help_text)
        preview = self.program.ctl("preview", "--limit", str(1 << 62), input=b"a\nb\xff")
        self.assertEqual(preview.stdout.decode(), "“a⏎b\ufffd”\n")
        self.assertEqual(preview.stderr.count(b"not valid UTF-8"), 1)
        # What was copied does not drive the terminal.
        self.screen.set_clipboard("these words \x1b[2J were \u202e copied \x07 here".encode())
        until(lambda: any("copied" in title for title in self.program.history()), "copied")
        printed = self.program.ctl("menu").stdout.decode()
        self.assertIn("words [2J were", " ".join(printed.split()))
        self.assertEqual([c for c in printed if c != "\n" and not c.isprintable()], [])
        self.screen.run("xdotool", "mousemove", *map(str, POINTER))
        self.assertEqual(self.program.ctl("menu", "--popup").returncode, 0)
        self.check_popup_at_pointer()
        self.assertEqual(self.program.ctl("quit").returncode, 0)
        self.assertEqual(self.program.process.wait(5), 0)
        self.assertEqual(self.program.ctl("menu").returncode, 1)


if __name__ == "__main__":
    unittest.main()
