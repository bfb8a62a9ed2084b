"""Pictures of the screen taken on command with the real tool, keys and clicks; their history."""

import os
import pathlib
import re
import shutil
import unittest

from desktop_case import BIN, DesktopTest, Marbelot, png, stays, until

NAME = re.compile(r"Capture \d{4}-\d\d-\d\d at \d\d\.\d\d\.\d\d( \(\d+\))?\.png")


class CapturesTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        # Its threads would wait for each other on a busy machine.
        self.screen.env["MAGICK_THREAD_LIMIT"] = "1"
        wallpaper = self.screen.folder / "wallpaper.png"
        self.screen.run("convert", "-size", "96x96", "gradient:#274060-#7fa3c7", wallpaper,
                        check=True)
        self.screen.run("display", "-window", "root", wallpaper)  # exits with 1 when done, too
        self.folder = self.screen.home / "Pictures/Marbelot"
        self.env = None

    def start(self, **options):
        self.program = Marbelot(self.screen, **options)

    def clock(self):
        """The rectangle of a window, with what the window manager has put around it."""
        self.screen.spawn("xclock", "-geometry", "240x200+500+300", "-update", "3600")
        window = until(lambda: self.screen.run("xdotool", "search", "--onlyvisible", "--class",
                                               "xclock").stdout.decode().split(), "xclock")[0]

        def extents():
            told = self.screen.run("xprop", "-id", window, "_NET_FRAME_EXTENTS").stdout.decode()
            return [int(side) for side in re.findall(r"\d+", told)]
        left, right, top, bottom = until(extents, "a frame around it")
        facts = self.screen.run("xwininfo", "-id", window).stdout.decode()
        values = dict(line.strip().split(":", 1) for line in facts.splitlines() if ":" in line)
        x, y, width, height = (int(values[key]) for key in (
            "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
        return x - left, y - top, width + left + right, height + top + bottom

    def tools(self):
        """The running capture tools."""
        return self.screen.run("pgrep", "-x", "maim", "-P",
                               str(self.program.process.pid)).stdout.split()

    def selecting(self):
        """Waits until a selection has the pointer."""
        until(self.tools, "tool started")
        until(lambda: b"slop" in self.screen.run("xwininfo", "-root", "-tree").stdout,
              "selection on the screen")

    def drag(self, x, y, width, height):
        self.screen.run("xdotool", "mousemove", str(x), str(y), "sleep", "0.1", "mousedown", "1",
                        "sleep", "0.2", "mousemove", str(x + width // 2), str(y + height // 2),
                        "sleep", "0.1", "mousemove", str(x + width), str(y + height), "sleep",
                        "0.2", "mouseup", "1", check=True)

    def said(self):
        return [notice["body"] for notice in self.screen.notices()]

    def size(self, data):
        return self.screen.run("identify", "-format", "%w %h", "-", input=data).stdout.decode()

    def same(self, data, reference):
        """Whether the two pictures have the same pixels."""
        for name, picture in (("one", data), ("other", reference)):
            (self.screen.folder / f"{name}.png").write_bytes(picture)
        return self.screen.run("compare", "-metric", "AE", self.screen.folder / "one.png",
                               self.screen.folder / "other.png", "null:").stderr == b"0"

    def taken(self, message, before):
        """The picture on the clipboard once the message is there."""
        until(lambda: self.said()[before:] == [message], message)
        data = self.screen.clipboard("image/png")
        newest = max(self.folder.iterdir(), key=lambda path: path.stat().st_mtime_ns)
        self.assertTrue(NAME.fullmatch(newest.name), newest.name)
        self.assertEqual(newest.stat().st_mode & 0o077, 0)
        self.assertEqual(newest.read_bytes(), data)
        return data

    def reference(self, *options):
        return self.screen.run("maim", "-u", *options, check=True).stdout

    def test_each_way_of_taking_one(self):
        self.start()
        x, y, width, height = self.clock()

        self.program.ctl("invoke", "Capture screenshot", "Full screen", check=True)
        data = self.taken("Captured: Full screen", 0)
        self.assertTrue(self.same(data, self.reference()))

        self.program.ctl("invoke", "Capture screenshot", "Area", check=True)
        self.selecting()
        self.drag(400, 200, 299, 249)
        data = self.taken("Captured: Area selection", 1)
        self.assertTrue(self.same(data, self.reference("-g", "300x250+400+200")), self.size(data))

        self.program.ctl("invoke", "Capture screenshot", "Window", "Click a window…", check=True)
        self.selecting()
        self.screen.run("xdotool", "mousemove", str(x + width // 2), str(y + height // 2), "sleep",
                        "0.2", "mousedown", "1", "sleep", "0.3", "mouseup", "1", check=True)
        data = self.taken("Captured: Window", 2)
        frame = self.reference("-g", f"{width}x{height}+{x}+{y}")
        self.assertTrue(self.same(data, frame), self.size(data))

        # Also of a program that lies behind another: it comes to the front first.
        entries = self.screen.home / ".local/share/applications"
        entries.mkdir(parents=True)
        (entries / "icon.png").write_bytes(png(16, 16))
        (entries / "xmessage.desktop").write_text(
            f"[Desktop Entry]\nName=Messages\nIcon={entries}/icon.png\n")
        self.screen.spawn("xmessage", "-geometry", "400x300+450+250", "in front")
        until(lambda: ("Messages", True) in [(item.get("title"), bool(item.get("image")))
                                             for item in self.windows()], "both listed")
        self.program.ctl("invoke", "Capture screenshot", "Window", "XClock", check=True)
        data = self.taken("Captured: App window", 3)
        self.assertEqual(self.size(data), f"{width} {height}")
        self.assertTrue(self.same(data, self.reference("-g", f"{width}x{height}+{x}+{y}")))
        self.assertEqual(self.program.copied(), 4)

    def windows(self):
        return next(item["submenu"] for item in self.program.submenu("Capture screenshot")
                    if item.get("title") == "Window")

    def test_the_menu_is_not_in_the_picture(self):
        self.start()
        self.clock()
        self.screen.run("xdotool", "mousemove", "480", "280", check=True)
        self.program.ctl("menu", "--popup", check=True)
        until(self.program.popups, "menu on the screen")
        titles = [item["title"] for item in self.program.menu() if item.get("enabled")]
        downs = ["Down"] * (titles.index("Capture screenshot") + 1)
        self.screen.run("xdotool", "key", *downs, "Right", check=True)
        until(lambda: len(self.program.popups()) > 1, "submenu on the screen")
        self.screen.run("xdotool", "key", "Down", "Down", "Return", check=True)
        data = self.taken("Captured: Full screen", 0)
        self.assertTrue(self.same(data, self.reference()))

    def test_a_selection_gives_way(self):
        self.start()
        self.program.invoke("captureArea")
        self.selecting()
        first = self.tools()
        self.program.invoke("captureArea")
        until(lambda: len(self.tools()) == 1 and self.tools() != first, "another selection")
        self.selecting()
        self.screen.run("xdotool", "keydown", "Escape", "sleep", "0.3", "keyup", "Escape")
        until(lambda: not self.tools(), "given up")
        self.program.invoke("captureArea")
        self.selecting()
        self.program.invoke("captureFullScreen")
        data = self.taken("Captured: Full screen", 0)
        self.assertTrue(self.same(data, self.reference()))
        self.assertEqual(len(list(self.folder.iterdir())), 1)
        # A selection ends with the program.
        self.program.invoke("captureArea")
        self.selecting()
        tool = int(self.tools()[0])
        self.program.ctl("quit")
        self.assertEqual(self.program.process.wait(5), 0)
        until(lambda: not pathlib.Path(f"/proc/{tool}").exists(), "selection gone")

    def test_a_missing_tool_is_named_with_its_package(self):
        tools = self.screen.folder / "tools"
        tools.mkdir()
        self.start(env={"PATH": str(tools)})
        self.program.invoke("captureFullScreen")
        until(self.said, "notice")
        self.assertEqual(self.said()[0], "Taking pictures of the screen needs maim: install the "
                         "package “maim”.")

    def test_the_portal_where_nobody_else_sees_the_screen(self):
        socket = self.screen.folder / "compositor"
        self.screen.spawn(BIN / "fake_wayland_desktop", "ext", socket)
        until(socket.exists, "a compositor")
        self.start(env={"WAYLAND_DISPLAY": str(socket), "XDG_CURRENT_DESKTOP": "GNOME"})
        self.program.invoke("captureFullScreen")
        until(self.said, "notice")
        self.assertEqual(self.said()[0], "Taking pictures of the screen needs the desktop's "
                         "portal: install the package “xdg-desktop-portal-gnome”.")

        picture = self.screen.folder / "picture.png"
        picture.write_bytes(png(seed=7))
        shots = self.program.shots
        portal = self.screen.spawn("/usr/bin/python3",
                                   pathlib.Path(__file__).with_name("portal.py"),
                                   picture, shots, log="portal")

        def asked():
            lines = self.screen.log("portal").splitlines()
            return [line for line in lines if " " not in line]  # those about pictures
        until(asked, "portal")
        said = 1
        for action, kind in (("captureFullScreen", "whole"), ("captureArea", "interactive")):
            self.program.invoke(action)
            until(lambda: len(self.said()) > said, "notice")
            self.assertRegex(self.said()[said], "^Captured: ")
            self.assertEqual(asked()[said], kind)
            said += 1
        # Saved where screenshots are watched for, and counted once all the same.
        stays(lambda: self.program.copied() == 2 and len(self.said()) == said, "counted once", 1.5)
        self.assertEqual(list(shots.iterdir()), [])
        files = list(self.folder.iterdir())
        self.assertEqual([file.read_bytes() for file in files], [png(seed=7)] * 2)

        (shots / "Wait").touch()
        self.program.invoke("captureArea")
        until(lambda: len(asked()) == 4, "asked")
        (shots / "Wait").rename(shots / "Cancel")
        self.program.invoke("captureWindowInteractive")
        until(lambda: asked()[4:] == ["withdrawn", "interactive"], "asked anew")
        stays(lambda: self.program.copied() == 2 and len(self.said()) == said, "given up", 0.6)

        (shots / "Cancel").rename(shots / "Wait")
        self.program.invoke("captureFullScreen")
        until(lambda: asked()[6:] == ["whole"], "asked")
        self.screen.end(portal)
        until(lambda: self.said()[said:] == ["The desktop's portal cannot take pictures of the "
                                             "screen right now"], "nobody to wait for")
        self.program.menu()
        self.program.check_alive()

    def test_the_trash_of_another_file_system(self):
        self.folder.mkdir(parents=True)
        self.mount(self.folder, "mode=700")
        self.start()
        home = self.screen.home / ".local/share/Trash"
        own = self.folder / f".Trash-{os.getuid()}"

        def delete(name):
            path = self.folder / name
            path.write_bytes(png(seed=1))
            self.program.invoke("deleteHistory:", "--object", str(path))
            return path
        path = delete("a.png")
        until(lambda: not path.exists(), "moved")
        self.assertEqual((own / "files/a.png").read_bytes(), png(seed=1))
        self.assertIn("Path=a.png\n", (own / "info/a.png.trashinfo").read_text())
        # Where there can be none, the file is copied into that of the home folder.
        shutil.rmtree(own)
        own.symlink_to("/nowhere")
        path = delete("b.png")
        until(lambda: not path.exists(), "copied")
        self.assertEqual((home / "files/b.png").read_bytes(), png(seed=1))
        self.assertRegex((home / "info/b.png.trashinfo").read_text(),
                         r"^\[Trash Info\]\nPath=/.*/Marbelot/b.png\n"
                         r"DeletionDate=\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\n$")
        # Where that is impossible as well, it stays.
        shutil.rmtree(home)
        home.write_text("in the way")
        path = delete("c.png")
        stays(path.exists, "not lost", 0.5)
        self.assertEqual(path.read_bytes(), png(seed=1))


if __name__ == "__main__":
    unittest.main()
