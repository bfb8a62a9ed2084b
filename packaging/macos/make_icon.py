#!/usr/bin/python3
"""Makes Marbelot.icns from the program's symbol, on any system with GdkPixbuf and librsvg.

    packaging/macos/make_icon.py [ICNS]     default: Marbelot.icns beside this script
"""

import pathlib
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
SYMBOL = HERE.parent / "linux/org.marbelot.Marbelot.svg"
SIDE = 22  # of the symbol's view box
# A Dock icon's tile takes up this part of its canvas.
TILE = 824 / 1024
# The entries' names and their sides in pixels; those of one side are for one and two pixels a point.
ENTRIES = {"icp4": 16, "icp5": 32, "ic11": 32, "ic12": 64, "ic07": 128, "ic08": 256, "ic13": 256,
           "ic09": 512, "ic14": 512, "ic10": 1024}


def with_margin(svg):
    side = SIDE / TILE
    margin = (SIDE - side) / 2
    plain = f'viewBox="0 0 {SIDE} {SIDE}"'
    assert plain in svg, SYMBOL
    return svg.replace(plain, f'viewBox="{margin:g} {margin:g} {side:g} {side:g}"')


def rendered(svg, side):
    import gi
    gi.require_version("GdkPixbuf", "2.0")
    from gi.repository import GdkPixbuf

    loader = GdkPixbuf.PixbufLoader.new_with_type("svg")
    loader.set_size(side, side)
    loader.write(svg.encode())
    loader.close()
    done, png = loader.get_pixbuf().save_to_bufferv("png", [], [])
    assert done
    return bytes(png)


def packed(pictures):
    body = b"".join(name.encode() + struct.pack(">I", 8 + len(png)) + png
                    for name, png in pictures.items())
    return b"icns" + struct.pack(">I", 8 + len(body)) + body


if __name__ == "__main__":
    target = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else HERE / "Marbelot.icns"
    symbol = with_margin(SYMBOL.read_text())
    sides = {side: rendered(symbol, side) for side in set(ENTRIES.values())}
    target.write_bytes(packed({name: sides[side] for name, side in ENTRIES.items()}))
