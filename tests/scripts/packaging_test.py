"""The bundle for macOS as far as it can be checked elsewhere: its property list and its icon."""

import importlib.util
import pathlib
import plistlib
import re
import struct
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
MACOS = ROOT / "packaging/macos"


def entries(icns):
    """The pictures of an icon by their names."""
    assert icns[:4] == b"icns" and struct.unpack(">I", icns[4:8])[0] == len(icns)
    found, at = {}, 8
    while at < len(icns):
        name, size = struct.unpack(">4sI", icns[at:at + 8])
        found[name.decode()] = icns[at + 8:at + size]
        at += size
    return found


class PackagingTest(unittest.TestCase):
    def test_property_list(self):
        text = (MACOS / "Info.plist.in").read_text()
        information = plistlib.loads(re.sub(r"\$\{(\w+)\}", r"\1", text).encode())
        self.assertTrue((MACOS / f"{information['CFBundleIconFile']}.icns").exists())
        # Without its text the system refuses access and asks nobody.
        for purpose in ("AppleEvents", "DesktopFolder", "DocumentsFolder", "DownloadsFolder",
                        "NetworkVolumes", "RemovableVolumes"):
            self.assertIn("Marbelot", information[f"NS{purpose}UsageDescription"])

    def test_icon(self):
        spec = importlib.util.spec_from_file_location("make_icon", MACOS / "make_icon.py")
        make_icon = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(make_icon)
        pictures = entries((MACOS / "Marbelot.icns").read_bytes())
        self.assertEqual(pictures.keys(), make_icon.ENTRIES.keys())
        for name, side in make_icon.ENTRIES.items():
            self.assertEqual(pictures[name][:8], b"\x89PNG\r\n\x1a\n", name)
            self.assertEqual(struct.unpack(">II", pictures[name][16:24]), (side, side), name)
        self.assertEqual(entries(make_icon.packed(pictures)), pictures)


if __name__ == "__main__":
    unittest.main()
