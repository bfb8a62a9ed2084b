"""New screenshots reach the clipboard, whole and once; everything else stays away from it."""

import os
import pathlib
import shutil
import struct
import unittest

from desktop_case import (NOTICE_TITLE, DesktopTest, Marbelot, png, screenshot_name,
                          stays, until)


def catalogue(translations):
    """The bytes of a gettext catalogue."""
    pairs = [(a.encode(), b.encode()) for a, b in sorted(translations.items())]
    count = len(pairs)
    strings, tables = b"", [b"", b""]
    for side in (0, 1):
        for pair in pairs:
            tables[side] += struct.pack("<II", len(pair[side]), 28 + 16 * count + len(strings))
            strings += pair[side] + b"\0"
    return struct.pack("<7I", 0x950412de, 0, count, 28, 28 + 8 * count, 0,
                       28 + 16 * count) + tables[0] + tables[1] + strings


class WatcherTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.shots = self.screen.home / "Shots"
        self.shots.mkdir()

    def start(self, **options):
        self.program = Marbelot(self.screen, **options)

    def bodies(self):
        return [notice["body"] for notice in self.screen.notices()]

    def wait_copied(self, path):
        self.assert_on_clipboard(self.screen, path.read_bytes())
        until(lambda: path.name in self.bodies(), f"notice of {path.name}")
        self.assertEqual(self.program.line("Last: "), path.name)

    def nothing_copied(self):
        self.program.check_alive()
        return self.screen.clipboard("image/png") is None and not self.screen.notices()

    def test_screenshot_tools(self):
        self.start()
        first = self.shots / screenshot_name(1)
        self.screen.run("maim", first, check=True)
        self.wait_copied(first)
        notice = self.screen.notices()[0]
        self.assertEqual((notice["title"], notice["body"]), (NOTICE_TITLE, first.name))
        self.assertEqual(self.program.copied(), 1)

        self.screen.run("scrot", cwd=self.shots, check=True)  # by its own name
        second = next(path for path in self.shots.iterdir() if path != first)
        self.wait_copied(second)
        self.assertEqual(self.program.copied(), 2)

    def test_ways_a_file_arrives(self):
        self.start()
        capital = self.program.save("Screenshot from 2025-03-01 11-00-00.PNG", png(seed=1))
        self.wait_copied(capital)

        written = self.program.save("half.png.part", png(seed=2))
        moved = written.rename(self.shots / screenshot_name(2))
        self.wait_copied(moved)

        # Another path is another screenshot, though its bytes were copied before.
        again = moved.rename(self.shots / screenshot_name(3))
        self.wait_copied(again)

        jpeg = self.shots / "Screenshot from 2025-03-01 11-00-04.jpg"
        self.screen.run("maim", "--format", "jpg", jpeg, check=True)
        until(lambda: jpeg.name in self.bodies(), "notice of the JPEG")
        self.assertTrue(self.screen.clipboard("image/png").startswith(b"\x89PNG"))
        self.assertEqual(self.program.copied(), 4)

    def test_slowly_written_file_is_copied_when_complete(self):
        self.start()
        data = png(200, 200, seed=3)
        path = self.shots / screenshot_name(4)
        with open(path, "wb", buffering=0) as file:
            for start in range(0, len(data), len(data) // 9):
                file.write(data[start:start + len(data) // 9])
                stays(self.nothing_copied, "nothing copied of a half-written file", 0.12)
        self.wait_copied(path)
        self.assertEqual(self.program.copied(), 1)

    def test_other_files_are_left_alone(self):
        old = self.shots / screenshot_name(5)
        old.write_bytes(png(seed=5))
        self.start()
        os.utime(old)
        self.program.save("holiday.png", png(seed=6, text=b"Title\0Pilgrimage to a screenshot"))
        self.program.save("Captura de Zaragoza.png", png(seed=6, text=b"Software\0Grimoire"))
        self.program.save("Screenshot from 2025-03-01 12-00-00.gif", b"GIF89a")
        # Longer than a file may wait for its mark.
        stays(self.nothing_copied, "nothing copied", 2)
        self.wait_copied(self.program.save(screenshot_name(6), png(seed=7)))
        self.wait_copied(self.program.save("1.png", png(seed=8, text=b"Software\0xfce4-screenshooter")))
        self.assertEqual(self.program.copied(), 2)

    def test_files_that_only_look_like_screenshots(self):
        self.start()
        names = (screenshot_name(number) for number in range(100))
        for content in (b"", b"\x89PNG\r\n\x1a\n", b"not an image at all"):
            self.shots.joinpath(next(names)).write_bytes(content)
        os.mkfifo(self.shots / next(names))
        loop = self.shots / next(names)
        loop.symlink_to(loop)
        for _ in range(20):
            vanishing = self.shots / next(names)
            vanishing.write_bytes(png(seed=8))
            vanishing.unlink()
        # Its pixels would take 14 GB: whatever becomes of it, the program stays small.
        self.shots.joinpath(next(names)).write_bytes(png(seed=9, size=(60000, 60000)))
        self.wait_copied(self.program.save(screenshot_name(120), png(seed=10)))
        self.assertEqual([b for b in self.bodies() if b != screenshot_name(120) and
                          (self.shots / b).exists()], [])
        status = pathlib.Path(f"/proc/{self.program.process.pid}/status").read_text()
        peak = int(status.split("VmHWM:")[1].split()[0])
        self.assertLess(peak, 400_000, "peak resident memory in kB")

    def test_name_that_is_no_text(self):
        self.start()
        data = png(seed=11)
        with open(os.fsencode(self.shots) + b"/Screenshot from caf\xe9.png", "wb") as file:
            file.write(data)
        if b"Screenshot from caf\xe9.png" not in os.listdir(os.fsencode(self.shots)):
            self.skipTest("file names are made text here")
        self.assert_on_clipboard(self.screen, data)
        self.assertIn("Screenshot from caf", self.program.line("Last: "))

    def test_folder_that_is_made_anew(self):
        self.start()
        shutil.rmtree(self.shots)
        until(lambda: self.program.line("⚠︎ Allow screenshot access…") is not None,
              "folder known to be gone")
        self.shots.mkdir()
        until(self.program.watches_folder, "new folder watched")
        self.wait_copied(self.program.save(screenshot_name(7), png(seed=12)))
        until(lambda: self.program.line("⚠︎ Allow screenshot access…") is None,
              "folder known to be there")

    def watch_nothing_set(self, **env):
        """Starts the program as in an account where nothing was set yet."""
        location = self.screen.config / "marbelot/com.apple.screencapture.json"
        location.parent.mkdir(exist_ok=True)
        location.write_text("{}")
        self.start(env=env, watched=False)

    def take_first(self, folder):
        """Saves a screenshot as a tool does that makes its folder for it."""
        self.assertEqual(self.program.line("Watching: "), str(self.screen.home / "Desktop"))
        folder.mkdir(parents=True)
        path = folder / screenshot_name(1)
        self.screen.run("maim", path, check=True)
        self.wait_copied(path)
        self.assertEqual(self.program.line("Watching: "), str(folder))
        self.assertIsNone(self.program.line("⚠︎ Allow screenshot access…"))
        self.assertNotIn(b"alert", self.program.ctl("windows").stdout)
        second = folder / screenshot_name(2)
        second.write_bytes(png(seed=2))
        self.wait_copied(second)
        self.assertEqual(self.program.copied(), 2)

    def test_first_screenshot_of_a_new_account(self):
        for desktop, folder in (("ubuntu:GNOME", "Pictures/Screenshots"), ("KDE", "Pictures")):
            with self.subTest(desktop=desktop):
                self.setUp()
                self.watch_nothing_set(XDG_CURRENT_DESKTOP=desktop)
                # Longer than until the prompt for a folder that cannot be read.
                stays(self.nothing_copied, "nothing told", 3)
                self.take_first(self.screen.home / folder)

    def test_folder_named_in_the_users_language(self):
        self.screen.config.joinpath("user-dirs.dirs").write_text(
            'XDG_PICTURES_DIR="$HOME/Bilder"\n')
        catalogues = self.screen.home / "share/locale/de/LC_MESSAGES"
        catalogues.mkdir(parents=True)
        catalogues.joinpath("gnome-shell.mo").write_bytes(
            catalogue({"": "Content-Type: text/plain; charset=UTF-8\n",
                       "Screenshots": "Bildschirmfotos"}))
        self.watch_nothing_set(XDG_CURRENT_DESKTOP="GNOME", LANGUAGE="de",
                               XDG_DATA_DIRS=f"{self.screen.home}/none:{self.screen.home}/share")
        self.take_first(self.screen.home / "Bilder/Bildschirmfotos")

    def test_system_that_refuses_to_watch(self):
        alone = ("unshare", "--user", "--map-current-user", "--keep-caps")
        limit = "/proc/sys/user/max_inotify_instances"
        if self.screen.run(*alone, "test", "-w", limit).returncode != 0:
            self.skipTest("limits cannot be set here")
        (self.screen.config / "marbelot").mkdir(exist_ok=True)
        self.start(watched=False, through=(
            *alone, "sh", "-c", f'echo 0 > {limit}; exec "$@"', "sh"))
        until(lambda: self.program.line("Looking every second"), "line in the menu")
        until(lambda: len(self.screen.notices()) == 1, "notice")
        self.assertFalse(self.program.watches_folder())
        self.wait_copied(self.program.save(screenshot_name(1), png(seed=1)))

        self.screen.run("nsenter", "--user", "--preserve-credentials", "--target",
                        str(self.program.process.pid), "sh", "-c", f"echo 128 > {limit}",
                        check=True)
        until(self.program.watches_folder, "folder watched again")
        until(lambda: self.program.line("Looking every second") is None, "no line in the menu")
        self.wait_copied(self.program.save(screenshot_name(2), png(seed=2)))
        self.assertEqual(len(self.screen.notices()), 3, "the trouble is told once")


if __name__ == "__main__":
    unittest.main()
