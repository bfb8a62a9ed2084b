"""Settings of the wrong kind do not stop the program."""

import json
import unittest

from desktop_case import DesktopTest, Marbelot, stays, until


class SettingsTest(DesktopTest):
    def setUp(self):
        self.screen = self.desktop()
        self.folder = self.screen.config / "marbelot"
        self.folder.mkdir()
        self.file = self.folder / "org.marbelot.Marbelot.json"

    def previews(self):
        """A setting to try: on by default."""
        return self.program.checked("toggleClipPreview")

    def stored(self):
        return json.loads(self.file.read_text())

    def test_values_of_the_wrong_kind(self):
        wrong = {"autoSaveClipImages": "so", "countdownEnabled": [True], "concatBuffer": 5,
                 "cannedResponses": {"a": 1}, "clipTextHistory": "x", "updateFrequency": 7,
                 "hudPopupPlacement": "left", "alwaysHUDOriginX": {}, "concatSeparator": None,
                 "favoriteSaveDirs": [1, "/tmp", None], "concatEnabled": "so"}
        self.file.write_text(json.dumps(wrong | {"showClipboardPreview": False}))
        self.program = Marbelot(self.screen)
        self.assertFalse(self.previews(), "the good value applies")
        self.assertTrue(self.program.checked("toggleAutoSaveClipImages"), "its default applies")
        self.assertEqual(self.program.titles()[-1], "Quit Marbelot")
        until(self.screen.notices, "told")
        for key in ("autoSaveClipImages", "concatBuffer", "concatEnabled", "cannedResponses"):
            self.assertIn(key, self.screen.notices()[0]["body"])
        self.assertEqual(list(self.folder.glob("*.damaged*")), [])
        self.program.invoke("toggleClipPreview")
        self.assertIs(self.stored()["showClipboardPreview"], True)
        self.assertEqual(self.stored()["autoSaveClipImages"], "so", "left to the user")
        self.program.invoke("toggleAutoSaveClipImages")
        self.assertIs(self.stored()["autoSaveClipImages"], False)
        stays(lambda: len(self.screen.notices()) == 1, "told once", 0.5)


if __name__ == "__main__":
    unittest.main()
