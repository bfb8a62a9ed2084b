"""The clipboard history with other programs' copies, good and bad ones."""

import os
import subprocess
import time
import unittest

from desktop_case import BIN, DesktopTest, Marbelot, chunk, png, stays, until

COPIES = 200
PACE = 20  # milliseconds
KILLS = int(os.environ.get("MARBELOT_KILLS", 10))
HINT = "x-kde-passwordManagerHint"
LIMIT = 40


def converted(data, form):
    return subprocess.run(["convert", "png:-", f"{form}:-"], input=data, check=True,
                          stdout=subprocess.PIPE).stdout


def signature(data):
    """The same for the same pixels, whatever the format."""
    return subprocess.run(["identify", "-format", "%wx%h %#", "-"], input=data, check=True,
                          stdout=subprocess.PIPE).stdout


class HistoryTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.images = self.screen.folder / f"tmp/marbelot-{os.getuid()}/Marbelot"

    def start(self):
        self.program = Marbelot(self.screen)

    def restart(self):
        self.program.kill()
        self.start()

    def copy_types(self, offers):
        """A program that offers each type with these bytes, and refuses those that are None."""
        arguments = []
        for number, (name, data) in enumerate(offers.items()):
            path = self.screen.folder / f"offer-{number}"
            if data is not None:
                path.write_bytes(data)
            arguments.append(f"{name}=" + ("" if data is None else str(path)))
        before = self.screen.log("clipboard_owner").count("ready")
        owner = self.screen.spawn(BIN / "clipboard_owner", *arguments)
        until(lambda: self.screen.log("clipboard_owner").count("ready") > before, "copied")
        return owner

    def copy_text(self, text):
        """Copies and waits until it is the newest entry."""
        before = self.program.stored()
        self.screen.set_clipboard(text if isinstance(text, bytes) else text.encode())
        until(lambda: self.program.stored() != before, "recorded")

    def check_still_records(self):
        """The next copy is recorded as if nothing had happened."""
        self.next = getattr(self, "next", 0) + 1
        self.copy_text(f"still recording {self.next}")
        self.assertEqual(self.program.stored_texts()[0], f"still recording {self.next}")

    def test_none_of_many_quick_copies_is_missed(self):
        self.start()
        self.program.invoke("toggleConcat")
        for prefix, series in (
                ("one program ", lambda p: self.screen.run(
                    BIN / "clipboard_owner", "--series", p, str(COPIES), "0", timeout=60)),
                ("many programs ", self.copy_by_many_programs)):
            self.program.invoke("resetConcat")
            series(prefix)
            expected = [f"{prefix}{number}" for number in range(1, COPIES + 1)]
            last = expected[-1:]
            # Collected and recorded in two steps.
            until(lambda: self.program.stored("concatBuffer")[-1:] == last and
                  self.program.stored_texts()[:1] == last, "last one recorded")
            self.assertEqual(self.program.stored("concatBuffer"), expected)
            self.assertEqual(self.program.stored_texts(), expected[:-LIMIT - 1:-1])

    def copy_by_many_programs(self, prefix):
        # Nobody can tell of a copy that was replaced before it could be asked for.
        for number in range(1, COPIES + 1):
            self.copy_types({"UTF8_STRING": f"{prefix}{number}".encode()})
            until(lambda: self.screen.log("clipboard_owner").count("asked") >= number, "asked for")

    def test_what_was_recorded_survives_being_killed(self):
        self.start()
        for kill in range(KILLS):
            prefix = f"before end {kill}: "
            owner = self.screen.spawn(BIN / "clipboard_owner", "--series", prefix, "1000", str(PACE))
            until(lambda: self.shown(prefix), "first copy recorded")
            # What was told just before the end, at a different moment each time.
            end = time.monotonic() + 0.05 + kill * 0.0137 % 0.2
            while time.monotonic() < end:
                seen = self.shown(prefix)
            self.program.kill()
            stored = self.program.stored_texts()
            self.assertTrue(stored[0].startswith(prefix), stored[0])
            numbers = [int(text.removeprefix(prefix)) for text in stored
                       if text.startswith(prefix)]
            self.assertEqual(numbers, sorted(set(numbers), reverse=True))
            self.assertLessEqual(set(seen), set(numbers) | set(range(numbers[0] - LIMIT)))
            self.screen.end(owner)
            self.start()
            self.assertEqual(len(self.program.history()), len(stored))
            self.assertIn(stored[0], self.program.history()[0])
            self.assertEqual(self.program.stored_texts(), stored)

    def shown(self, prefix):
        """The numbers of the texts that start so in the menu."""
        return [int(title.partition(prefix)[2].rstrip("”")) for title in self.program.history()
                if prefix in title]

    def test_secrets_stay_secret(self):
        self.start()
        self.copy_text("before")
        self.copy_types({"UTF8_STRING": b"open sesame", HINT: b"secret"})
        until(lambda: self.program.preview() == "(hidden by its owner)", "hidden")
        stays(lambda: "sesame" not in self.program.ctl("menu", "--json").stdout.decode() and
              self.program.stored_texts() == ["before"], "kept secret", 0.8)
        self.assertNotIn("sesame", self.program.store.read_text())
        # Nor when it is copied from a window that shows it, and to select it is not to offer it.
        self.program.invoke("showClipboardViewer")
        until(lambda: self.screen.run("xdotool", "getactivewindow", "getwindowname")
              .stdout.startswith("Clipboard — 11".encode()), "viewer")
        self.screen.run("xclip", "-selection", "primary", "-i", input=b"selected elsewhere",
                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.screen.run("xdotool", "key", "ctrl+a", "ctrl+c")
        until(lambda: self.screen.clipboard(HINT) == b"secret" and
              self.screen.clipboard("TARGETS").find(b"SAVE_TARGETS") >= 0, "copied")
        self.assertEqual(self.screen.run("xclip", "-selection", "primary", "-o").stdout, b"")
        stays(lambda: "sesame" not in self.program.ctl("menu", "--json").stdout.decode() and
              self.program.stored_texts() == ["before"], "kept secret", 0.8)

    def test_images(self):
        self.start()
        picture = png(60, 40, seed=3)
        self.copy_types({"image/png": picture})
        until(lambda: len(self.program.stored()) == 1, "recorded")
        saved = next(self.images.glob("Clip *.png"))
        self.assertEqual(saved.read_bytes(), picture, "the bytes that came in")
        self.assertEqual(saved.stat().st_mode & 0o777, 0o600)
        for number, form in enumerate(("tiff", "bmp"), 2):
            self.copy_types({f"image/{form}": converted(picture, form)})
            until(lambda: len(self.program.stored()) == number, form)
            with open(self.program.stored()[0]["path"], "rb") as file:
                newest = file.read()
            self.assertTrue(newest.startswith(b"\x89PNG\r\n"))
            self.assertEqual(signature(newest), signature(picture))
        self.assertEqual(sum("60 × 40" in title for title in self.program.history()), 3)

        # xclip sends the image whatever it is asked for, and one after the other.
        large = png(4000, 3000, seed=4)
        self.screen.set_clipboard(converted(large, "bmp"), "image/bmp")
        until(lambda: len(self.program.stored()) == 4, "large image")
        self.assertIn("4000 × 3000", self.program.history()[0])
        self.assertIn("4000 × 3000", self.program.preview())
        with open(self.program.stored()[0]["path"], "rb") as file:
            self.assertEqual(signature(file.read()), signature(large))
        self.program.invoke("deleteClipHistory:", "--object", "0")

        # The program's end comes before the image has been converted.
        self.screen.set_clipboard(converted(large, "bmp"), "image/bmp")
        until(lambda: "4000 × 3000" in self.program.history()[0], "large image in the menu")
        self.program.ctl("quit")
        self.program.process.wait(20)
        self.start()
        self.assertEqual(len(self.program.stored()), 4)
        self.assertIn("4000 × 3000", self.program.history()[0])

    def test_bad_copies(self):
        self.start()
        whole = png(400, 300, seed=1)
        hostile = {
            "truncated PNG": {"image/png": whole[:len(whole) // 2]},
            "no PNG at all": {"image/png": b"GIF89a" + os.urandom(200)},
            "100 gigapixels": {"image/png": png(size=(400000, 250000))},
            "endless TIFF": {"image/tiff": b"II*\0\x08\0\0\0\1\0" + b"\0" * 10 + b"\x08\0\0\0"},
            "truncated BMP": {"image/bmp": converted(whole, "bmp")[:90]},
            "broken WebP": {"image/webp": b"RIFF\xff\xff\xff\x7fWEBPVP8 " + b"\xff" * 40},
            "bad chunk": {"image/png": whole[:33] + chunk(b"IDAT", os.urandom(999)) + whole[-12:]},
            "refused": {"image/png": None, "UTF8_STRING": None},
            "empty": {"UTF8_STRING": b""},
            "blank": {"UTF8_STRING": b" \n\t "},
        }
        for name, offers in hostile.items():
            with self.subTest(name):
                self.copy_types(offers)
                self.check_still_records()
                self.program.check_alive()

        # xclip gives what it has to whoever asks for something else.
        for data, form in ((b"%PDF-1.7", "application/pdf"), (b"<b>bold</b>", "text/html")):
            self.screen.set_clipboard(data, form)
            until(lambda: self.program.preview() == "(empty)", "read")
            self.check_still_records()
            self.assertNotIn(data.decode(), self.program.stored_texts())

        for copied, recorded in ((b"broken \xff\xc3(", "broken \ufffd\ufffd("),
                                 (b"lone \xed\xa0\x80 surrogate", None),
                                 (b"a\0b", "a\0b")):
            self.copy_text(copied)
            newest = self.program.stored_texts()[0]
            self.assertTrue(newest == recorded if recorded else newest.startswith("lone \ufffd"))
            self.assertEqual(self.program.ctl("menu", "--json").returncode, 0)
        self.copy_types({"image/png": None, "UTF8_STRING": b"the text instead"})
        until(lambda: self.program.stored_texts()[0] == "the text instead", "text recorded")
        self.restart()
        self.assertIn("a\0b", self.program.stored_texts())


if __name__ == "__main__":
    unittest.main()
