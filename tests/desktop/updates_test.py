"""Looking for newer versions, against a feed server on this machine."""

import http.server
import json
import socket
import threading
import unittest

from desktop_case import BIN, DesktopTest, Marbelot, until

FEED = """<?xml version="1.0"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel>
<item><sparkle:version>%s</sparkle:version>
<description><![CDATA[<h2>New</h2><ul><li>Marble is <b>whiter</b><li>Slate &amp; more</ul>]]>
</description><enclosure url="https://example.org/Marbelot.tar.gz" sparkle:os="linux"/></item>
</channel></rss>"""


class Feed(http.server.BaseHTTPRequestHandler):
    """/new, /same, /none, /malformed, /huge, /slow, /elsewhere, /insecure."""

    def do_GET(self):
        self.server.asked.append(self.path)
        what = self.path[1:]
        if what == "slow":
            self.server.held.wait(60)
        if what in ("elsewhere", "insecure"):
            self.send_response(302)
            self.send_header("Location", "/new" if what == "elsewhere" else
                             f"http://{socket.gethostname()}.invalid/new")
            self.end_headers()
            return
        if what == "none":
            self.send_error(404)
            return
        self.send_response(200)
        self.end_headers()
        if what == "huge":
            try:
                while True:
                    self.wfile.write(b"<item/>" * 10000)
            except OSError:
                return
        if what == "slow":
            return
        body = "<rss><channel>" if what == "malformed" else FEED % (
            "99.0" if what == "new" else "0.0.1")
        self.wfile.write(body.encode())

    def log_message(self, *_):
        pass


class UpdatesTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Feed)
        self.server.daemon_threads = True
        self.server.asked = []
        self.server.held = threading.Event()
        thread = threading.Thread(target=self.server.serve_forever, daemon=True)
        thread.start()
        self.addCleanup(self.server.server_close)
        self.addCleanup(self.server.shutdown)
        self.addCleanup(self.server.held.set)

    def start(self, feed, frequency="never"):
        store = self.screen.config / "marbelot/org.marbelot.Marbelot.json"
        store.parent.mkdir(parents=True, exist_ok=True)
        address = feed if "://" in feed else f"http://127.0.0.1:{self.server.server_port}/{feed}"
        store.write_text(json.dumps({"SUFeedURL": address, "updateFrequency": frequency}))
        self.program = Marbelot(self.screen)

    def check(self, feed):
        """The buttons of the alert that the feed leads to."""
        self.start(feed)
        self.program.ctl("invoke", "Check for Updates…", check=True)
        until(lambda: b"alert" in self.program.ctl("windows").stdout, "alert", 20)
        buttons = json.loads(self.program.ctl("windows", "--json").stdout)[0]["buttons"]
        self.program.ctl("quit")
        self.program.process.wait(5)
        return {button["title"].replace("&", "") for button in buttons}

    def test_each_kind_of_feed(self):
        offer = {"Download", "Skip This Version", "Remind Me Later"}
        self.assertEqual(self.check("new"), offer)
        self.assertEqual(self.check("elsewhere"), offer)
        for feed in ("same", "none", "malformed", "huge", "insecure"):
            self.assertEqual(self.check(feed), {"OK"}, feed)
        address = f"http://127.0.0.1:{self.server.server_port}/insecure"
        fetched = self.screen.run(BIN / "marbelot-fetch", address)
        self.assertEqual(fetched.stderr, b"its address is not a secure one\n")
        self.assertEqual(fetched.returncode, 1)

    def test_the_program_goes_on_while_a_feed_is_slow(self):
        self.start("slow")
        self.program.invoke("checkForUpdates")
        until(lambda: self.server.asked, "feed asked for")
        until(lambda: [n["body"] for n in self.screen.notices()] == ["Checking for updates…"],
              "the user told")
        self.screen.set_clipboard(b"copied meanwhile")
        until(lambda: "copied meanwhile" in (self.program.preview() or ""), "copy noticed")
        self.program.ctl("quit")
        self.assertEqual(self.program.process.wait(5), 0)


if __name__ == "__main__":
    unittest.main()
