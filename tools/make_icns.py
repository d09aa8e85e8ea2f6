#!/usr/bin/env python3
"""Packs PNG pictures into an .icns icon: make_icns.py Installer.icns icon-16.png icon-32.png ..."""
import struct
import sys
from pathlib import Path

PNG = b"\x89PNG\r\n\x1a\n"
# The kinds of entries that hold a PNG of that many pixels a side; the second one of a size is for screens with twice as
# many pixels to the point.
KINDS = {16: ("icp4",), 32: ("icp5", "ic11"), 64: ("icp6", "ic12"), 128: ("ic07",), 256: ("ic08", "ic13"),
         512: ("ic09", "ic14"), 1024: ("ic10",)}


def size_of(png: bytes) -> int:
    """The pixels a side. Raises ValueError for anything but a square PNG of a size that icons have."""
    if not png.startswith(PNG) or len(png) < 24:
        raise ValueError("is no PNG picture")
    width, height = struct.unpack(">II", png[16:24])
    if width != height or width not in KINDS:
        raise ValueError(f"has {width} x {height} pixels, which no icon has")
    return width


def make_icns(pictures) -> bytes:
    """The icon of the pictures' bytes."""
    entries = b"".join(kind.encode() + struct.pack(">I", len(png) + 8) + png
                       for png in pictures for kind in KINDS[size_of(png)])
    return b"icns" + struct.pack(">I", len(entries) + 8) + entries


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    pictures = []
    for name in sys.argv[2:]:
        picture = Path(name).read_bytes()
        try:
            size_of(picture)
        except ValueError as error:
            sys.exit(f"{name}: {error}")
        pictures.append(picture)
    Path(sys.argv[1]).write_bytes(make_icns(pictures))


if __name__ == "__main__":
    main()
