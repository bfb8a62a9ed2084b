"""Starts the program on a private desktop and speaks to it through marbelotctl."""

import json
import os
import pathlib
import time

from virtual_desktop import until

ROOT = pathlib.Path(__file__).resolve().parent.parent
BIN = pathlib.Path(os.environ.get("MARBELOT_BIN", ROOT / "build/bin")).resolve()


class Marbelot:
    """One running instance that keeps its screenshots in ~/Shots."""

    def __init__(self, desktop, bus=True, watched=True, through=(), env=None):
        """bus, watched: whether it can be reached over the session bus, and has the folder.
        through: a command that runs it, env: what else is in its environment."""
        self.desktop = desktop
        self.shots = desktop.home / "Shots"
        if watched:
            self.shots.mkdir(exist_ok=True)
        self.store = desktop.config / "marbelot/org.marbelot.Marbelot.json"
        self.texts = self.store.with_suffix(".texts")
        location = desktop.config / "marbelot/com.apple.screencapture.json"
        if not location.exists():
            location.parent.mkdir(exist_ok=True)
            location.write_text(json.dumps({"location": "~/Shots"}))
        self.process = desktop.spawn(*through, BIN / "marbelot", log="marbelot", env=env)
        if watched:
            until(self.watches_folder, "folder watched")
        if bus:
            until(lambda: self.ctl("menu").returncode == 0, "menu answered")

    def watches_folder(self):
        """Whether an inotify watch of the process is on the folder as it is now."""
        self.check_alive()
        wanted = f"ino:{self.shots.stat().st_ino:x} "
        for info in pathlib.Path(f"/proc/{self.process.pid}/fdinfo").iterdir():
            try:
                lines = info.read_text().splitlines()
            except OSError:
                continue  # closed meanwhile
            if any(line.startswith("inotify ") and wanted in line for line in lines):
                return True
        return False

    def check_alive(self):
        status = self.process.poll()
        if status is not None:
            raise AssertionError(
                f"the program ended with {status}:\n{self.desktop.log('marbelot')}")

    def ctl(self, *arguments, **options):
        return self.desktop.run(BIN / "marbelotctl", *arguments, **options)

    def invoke(self, action, *arguments):
        result = self.ctl("invoke", "--action", action, *arguments)
        assert result.returncode == 0, result.stderr

    def stored(self, key="clipTextHistory"):
        """A value of the settings, large texts in place; fails when the file is not whole."""
        return json.loads(self.store.read_text(), object_hook=self.whole).get(key, []) \
            if self.store.exists() else []

    def whole(self, fields):
        """The large text that the fields refer to, None when it is not there; else the fields."""
        if set(fields) != {"textFile", "bytes"}:
            return fields
        try:
            data = (self.texts / f"{fields['textFile']}.txt").read_bytes()
        except OSError:
            return None
        return data.decode() if len(data) == fields["bytes"] else None

    def stored_texts(self):
        """As the program would load them."""
        return [entry["text"] for entry in self.stored()
                if entry["type"] == "text" and entry["text"] is not None]

    def stored_bytes(self):
        """The size of each large text that is on disk."""
        return sorted(file.stat().st_size for file in self.texts.glob("*.txt"))

    def menu(self):
        """The visible items of the menu's first level."""
        self.check_alive()
        result = self.ctl("menu", "--json")
        assert result.returncode == 0, result.stderr
        return [item for item in json.loads(result.stdout) if not item.get("hidden")]

    def checked(self, action):
        """Whether the item of the Settings submenu that sends the action has its check mark."""
        settings = next(item for item in self.menu() if item.get("title") == "Settings")
        return next(item["checked"] for item in settings["submenu"]
                    if item.get("action") == action)

    def submenu(self, title):
        """The items of the submenu whose title starts so."""
        return next(item["submenu"] for item in self.menu()
                    if item.get("title", "").startswith(title))

    def history(self):
        """The titles of the clipboard history's entries."""
        return [item["title"] for item in self.submenu("Clipboard history")
                if "submenu" in item and not item["title"].startswith("Filter by type")]

    def answer_seconds(self):
        """How long the program takes to tell its menu, without the start of a process."""
        self.desktop.bus()
        began = time.monotonic()
        self.menu_json()
        return time.monotonic() - began

    def menu_json(self):
        """The menu as the program tells it."""
        name = "org.marbelot.Marbelot"
        return self.desktop.call(name, "/org/marbelot/Marbelot", name, "Menu")[0]

    def longest_answer(self, condition, what, seconds=60):
        """The longest time without an answer until condition() holds."""
        longest = [0.0]

        def asked():
            longest[0] = max(longest[0], self.answer_seconds())
            return condition()
        until(asked, what, seconds, 0.002)
        return longest[0]

    def kill(self):
        """Ends it as a crash or a power cut would, in the middle of whatever it is doing."""
        self.process.kill()
        self.process.wait()

    def titles(self):
        return [item["title"] for item in self.menu() if "title" in item]

    def line(self, start):
        """What follows `start` in the menu line that begins so; None without such a line."""
        for title in self.titles():
            if title.startswith(start):
                return title[len(start):]
        return None

    def copied(self):
        return int(self.line("Copied this session: "))

    def preview(self):
        titles = self.titles()
        return titles[titles.index("On clipboard:") + 1] if "On clipboard:" in titles else None

    def save(self, name, data):
        path = self.shots / name
        path.write_bytes(data)
        return path

    def popups(self):
        """Rectangles (x, y, width, height) of the program's menus on the screen."""
        found = self.desktop.run("xdotool", "search", "--onlyvisible", "--class", "marbelot")
        rectangles = []
        for window in found.stdout.decode().split():
            lines = self.desktop.run("xwininfo", "-id", window).stdout.decode().splitlines()
            facts = dict(line.strip().split(":", 1) for line in lines if ":" in line)
            # Only menus are kept from the window manager.
            if facts.get("Override Redirect State", "").strip() == "yes":
                rectangles.append(tuple(int(facts[key]) for key in (
                    "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")))
        return rectangles
