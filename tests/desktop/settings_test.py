"""Settings that are damaged or of the wrong kind do not stop the program."""

import json
import unittest

from desktop_case import DesktopTest, Marbelot, stays, until


class SettingsTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.folder = self.screen.config / "marbelot"
        self.folder.mkdir()
        self.file = self.folder / "org.marbelot.Marbelot.json"

    def start(self):
        self.program = Marbelot(self.screen)

    def previews(self):
        """A setting to try: on by default."""
        return self.program.checked("toggleClipPreview")

    def damaged(self):
        return list(self.folder.glob("*.damaged*"))

    def stored(self):
        return json.loads(self.file.read_text())

    def test_damaged_file_is_kept_aside_and_told_once(self):
        for content in (b"\x00\xff garbage", b'{"showClipboardPreview": fal', b'[1, 2, 3]'):
            with self.subTest(content=content):
                told = len(self.screen.notices())
                for path in self.damaged():
                    path.unlink()
                self.file.write_bytes(content)
                self.start()
                self.assertEqual([path.read_bytes() for path in self.damaged()], [content])
                self.assertTrue(self.previews(), "defaults apply")
                until(lambda: len(self.screen.notices()) == told + 1, "told")

                self.program.invoke("toggleClipPreview")
                self.assertFalse(self.previews())
                self.assertIs(self.stored()["showClipboardPreview"], False)
                self.assertEqual(self.file.stat().st_mode & 0o777, 0o600)
                self.program.ctl("quit")
                self.program.process.wait(5)

                self.start()
                self.assertFalse(self.previews(), "what was set applies")
                stays(lambda: len(self.screen.notices()) == told + 1, "told once", 0.5)
                self.program.ctl("quit")
                self.program.process.wait(5)

    def test_values_of_the_wrong_kind(self):
        wrong = {"autoSaveClipImages": "so", "countdownEnabled": [True], "concatBuffer": 5,
                 "cannedResponses": {"a": 1}, "clipTextHistory": "x", "updateFrequency": 7,
                 "hudPopupPlacement": "left", "alwaysHUDOriginX": {}, "concatSeparator": None,
                 "favoriteSaveDirs": [1, "/tmp", None], "concatEnabled": "so"}
        self.file.write_text(json.dumps(wrong | {"showClipboardPreview": False}))
        self.start()
        self.assertFalse(self.previews(), "the good value applies")
        self.assertTrue(self.program.checked("toggleAutoSaveClipImages"), "its default applies")
        self.assertEqual(self.program.titles()[-1], "Quit Marbelot")
        until(self.screen.notices, "told")
        for key in ("autoSaveClipImages", "concatBuffer", "concatEnabled", "cannedResponses"):
            self.assertIn(key, self.screen.notices()[0]["body"])
        self.assertEqual(self.damaged(), [])
        self.program.invoke("toggleClipPreview")
        self.assertIs(self.stored()["showClipboardPreview"], True)
        self.assertEqual(self.stored()["autoSaveClipImages"], "so", "left to the user")
        self.program.invoke("toggleAutoSaveClipImages")
        self.assertIs(self.stored()["autoSaveClipImages"], False)
        stays(lambda: len(self.screen.notices()) == 1, "told once", 0.5)


if __name__ == "__main__":
    unittest.main()
