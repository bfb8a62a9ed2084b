"""What a text offers, with the desktop's applications, a real note program and a web of our own."""

import http.server
import json
import os
import shutil
import threading
import unittest

from desktop_case import BIN, DesktopTest, Marbelot, png, until

ADDRESS = "1600 Pennsylvania Ave NW\nWashington, DC 20500"

# Tells what it was started with; its own display settings are nobody else's.
OPENER = """#!/bin/sh
printf '%s\\n' "$1" "$2" "${QT_XCB_GL_INTEGRATION-unset}" > "$HOME/opened.new"
mv "$HOME/opened.new" "$HOME/opened"
"""

DESKTOP_FILE = """[Desktop Entry]
Type=Application
Name={name}
Exec={home}/opener {name} %u
Icon={icon}
MimeType={types};
"""


class Web(http.server.ThreadingHTTPServer):
    """Answers from `answers` by path; what was asked is in `asked`."""

    def __init__(self):
        super().__init__(("127.0.0.1", 0), Handler)
        self.answers, self.asked = {}, []
        self.url = f"http://127.0.0.1:{self.server_port}"
        threading.Thread(target=self.serve_forever, daemon=True).start()


class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.server.asked.append((self.path, self.headers["User-Agent"]))
        body = self.server.answers.get(self.path.split("?")[0])
        self.send_response(404 if body is None else 200)
        self.send_header("Content-Type", "text/html; charset=utf-8")
        self.end_headers()
        self.wfile.write((body or "").encode())

    def log_message(self, *_):
        pass


class TextActionsTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.home = self.screen.home

    def start(self, **env):
        self.program = Marbelot(self.screen, env=env)

    def install(self, name, types, file=None):
        folder = self.home / ".local/share/applications"
        folder.mkdir(parents=True, exist_ok=True)
        icon = self.home / f"{name}.png"
        icon.write_bytes(png(32, 32, seed=len(name)))
        (folder / f"{file or name}.desktop").write_text(DESKTOP_FILE.format(
            name=name, home=self.home, icon=icon, types=";".join(types)))
        opener = self.home / "opener"
        opener.write_text(OPENER)
        opener.chmod(0o755)
        self.screen.run("update-desktop-database", folder, check=True)

    def copy(self, text):
        before = self.program.preview()
        self.screen.set_clipboard(text.encode())
        until(lambda: self.program.preview() != before, "copy noticed")

    def offers(self, label):
        """The items under the label, by title."""
        return {item["title"]: item for item in self.program.submenu(label) if "title" in item}

    def choose(self, *titles):
        self.program.ctl("invoke", *titles, check=True)

    def opened(self):
        """What the last program that was started got: its name, and the link."""
        file = self.home / "opened"
        until(file.exists, "something opened")
        lines = file.read_text().splitlines()
        file.unlink()
        self.assertEqual(lines[2], "unset", "a setting of our own has leaked")
        return tuple(lines[:2])

    def said(self):
        notices = self.screen.notices()
        return notices[-1]["body"] if notices else None

    def window_titles(self):
        found = self.screen.run("wmctrl", "-l").stdout.decode().splitlines()
        return [line.split(None, 3)[3] for line in found if line.count(" ") >= 3]

    def test_links_open_in_every_application(self):
        web = ["x-scheme-handler/http", "x-scheme-handler/https"]
        self.install("Quarry", web)
        self.install("Chisel", web)
        self.install("Chisel", web, file="chisel-again")
        self.install("Marbelot", web, file="org.marbelot.Marbelot")
        self.install("Pigeon", ["x-scheme-handler/mailto"])
        (self.screen.config / "mimeapps.list").write_text(
            "[Default Applications]\nx-scheme-handler/https=Quarry.desktop\n"
            "x-scheme-handler/http=Quarry.desktop\n")
        self.start()
        link = "https://example.com/a?b=c&d=%20#e"
        self.copy(f"see {link} or write to ann@example.org")
        until(lambda: "Open in Chisel" in self.offers("Open link…"), "applications found")
        offers = self.offers("Open link…")
        self.assertEqual([title for title in offers if title.startswith("Open in ")],
                         ["Open in Chisel"])
        for title in (f"Open {link} — default browser", "Open in Chisel",
                      "Email ann@example.org — default mail app"):
            self.assertTrue(offers[title].get("image"), title)
        self.choose("Open link…", f"Open {link} — default browser")
        self.assertEqual(self.opened(), ("Quarry", link))
        self.choose("Open link…", "Open in Chisel")
        self.assertEqual(self.opened(), ("Chisel", link))
        self.choose("Open link…", "Email ann@example.org — default mail app")
        self.assertEqual(self.opened(), ("Pigeon", "mailto:ann@example.org"))

        self.choose("Open link…", "Copy link")
        until(lambda: self.screen.clipboard("UTF8_STRING") == link.encode(), "link copied")
        until(lambda: self.said() == "Copied", "copy told")
        self.assertEqual(len(self.program.history()), 1)

    @unittest.skipUnless(shutil.which("gnote"), "Gnote is not installed")
    def test_notes_go_to_gnote(self):
        self.start()
        self.copy('A "note" <b>\n\\ second line')
        self.choose("Text actions…", "Add to Notes")
        until(lambda: self.said() == "Notes: Gnote is not installed", "failure told")

        self.screen.spawn("gnote", "--background", log="gnote")
        notes = self.home / ".local/share/gnote"
        name = "org.gnome.Gnote"

        def titles():
            try:
                uris = self.screen.call(name, "/org/gnome/Gnote/RemoteControl",
                                        f"{name}.RemoteControl", "ListAllNotes")[0]
                return {self.screen.call(name, "/org/gnome/Gnote/RemoteControl",
                                         f"{name}.RemoteControl", "GetNoteContents", "(s)",
                                         (uri,))[0] for uri in uris}
            except Exception:  # it is still starting
                return None
        until(titles, "Gnote", 60)
        for _ in range(2):  # a name that is taken is no obstacle
            before = len(titles())
            said = len(self.screen.notices())
            self.choose("Text actions…", "Add to Notes")
            until(lambda: len(self.screen.notices()) > said, "outcome told", 60)
            until(lambda: self.said() == "Added to Notes", "note told")
        self.assertIn('A "note" <b>\n\\ second line', titles())
        until(lambda: any("second line" in file.read_text() for file in notes.glob("*.note")),
              "note saved", 60)

    @unittest.skipUnless((BIN / "marbelot-web").exists(), "built without Qt WebEngine")
    def test_pages_and_places_have_windows(self):
        web = Web()
        self.addCleanup(web.server_close)
        self.addCleanup(web.shutdown)
        web.answers = {
            "/page": "<h1>Marble</h1><script>document.title = 'x'</script>",
            "/none": "[]",
            "/some": json.dumps([{"lat": "38.8977", "lon": "-77.0365", "name": "White <b>House"}]),
            "/map": "<h1>a map</h1>"}
        env = {"MARBELOT_MAP_URL": web.url + "/map"}
        if os.geteuid() == 0:
            env["QTWEBENGINE_DISABLE_SANDBOX"] = "1"
        self.start(**env, MARBELOT_GEOCODER_URL=web.url + "/some")
        self.copy(web.url + "/page")
        self.choose("Open link…", "Preview…")
        until(lambda: "Preview 127.0.0.1" in self.window_titles(), "preview", 60)
        until(lambda: "/page" in [path for path, _ in web.asked], "page asked for", 60)
        command = self.screen.run("pgrep", "-a", "marbelot-web").stdout.decode()
        self.assertNotIn(web.url, command)

        self.copy(ADDRESS)
        self.choose("Address — map…", "Show map…")
        title = "Map — 1600 Pennsylvania Ave NW, Washington, DC 20500"
        until(lambda: title in self.window_titles(), "map", 60)
        asked = until(lambda: [a for a in web.asked if a[0].startswith("/some")], "place asked", 60)
        self.assertEqual(len(asked), 1)
        self.assertTrue(asked[0][1].startswith("Marbelot/"))
        self.assertIn("q=1600%20Pennsylvania%20Ave%20NW%2C%20Washington", asked[0][0])
        shown = until(lambda: [a[0] for a in web.asked if a[0].startswith("/map")], "map asked", 60)
        self.assertIn("marker=38.897700%2C-77.036500", shown[0])

        self.screen.run("wmctrl", "-c", "Preview 127.0.0.1", check=True)
        until(lambda: "Preview 127.0.0.1" not in self.window_titles(), "preview closed")
        self.program.ctl("quit")
        until(lambda: title not in self.window_titles(), "map gone with the program")
        self.assertEqual(self.program.process.wait(20), 0)

        self.start(**env, MARBELOT_GEOCODER_URL=web.url + "/none")
        self.copy("something else")
        self.copy(ADDRESS)
        self.choose("Address — map…", "Show map…")
        until(lambda: "Map — location not found" in self.window_titles(), "nothing found", 60)


if __name__ == "__main__":
    unittest.main()
