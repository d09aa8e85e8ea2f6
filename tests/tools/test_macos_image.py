"""The disk image of a bundle for macOS: what is in it, how its window is described, what is refused."""
import os
import plistlib
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from tests.tools import TOOLS

from diskimage.hfs_volume import CUSTOM_ICON, Volume
from diskimage.tree import scan

PACKAGING = TOOLS.parent / "packaging"
sys.path.insert(0, str(PACKAGING))
from finder_layout import finder_layout  # noqa: E402


def read_layout(data):
    """The records of a layout, found as a reader finds them: header, root block, directory, node."""
    heap = data[4:]
    magic, offset, size, again = struct.unpack_from(">4sIII", heap)
    assert (magic, offset) == (b"Bud1", again)
    count, = struct.unpack_from(">I", heap, offset)
    addresses = struct.unpack_from(f">{count}I", heap, offset + 8)
    taken = [(address & ~31, 1 << (address & 31)) for address in addresses]
    assert (offset, size) == taken[0]
    place = offset + 8 + 4 * 256
    assert struct.unpack_from(">IB4s", heap, place) == (1, 4, b"DSDB")
    directory = taken[struct.unpack_from(">I", heap, place + 9)[0]][0]
    node, levels, records = struct.unpack_from(">III", heap, directory)
    place = taken[node][0]
    assert (levels, *struct.unpack_from(">II", heap, place)) == (0, 0, records)
    place += 8
    found = []
    for _ in range(records):
        length, = struct.unpack_from(">I", heap, place)
        name = heap[place + 4:place + 4 + 2 * length].decode("utf-16-be")
        code, kind = struct.unpack_from(">4s4s", heap, place + 4 + 2 * length)
        place += 12 + 2 * length
        size = 4 if kind in (b"long", b"type") else 4 + struct.unpack_from(">I", heap, place)[0]
        found.append((name, code.decode(), heap[place:place + size]))
        place += size
    return found


class MacImage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tolvix-test-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.bundle = self.folder / "Some Installer.app"
        contents = self.bundle / "Contents"
        for name in ("MacOS", "Resources"):
            (contents / name).mkdir(parents=True)
        (contents / "Info.plist").write_bytes(plistlib.dumps({
            "CFBundleExecutable": "Program", "CFBundleIconFile": "Installer", "CFBundleName": "Tolvix Installer",
            "CFBundleShortVersionString": "9.8.7"}))
        (contents / "Resources" / "Installer.icns").write_bytes(b"icns")
        self.program = contents / "MacOS" / "Program"
        self.program.write_bytes(bytes.fromhex("cffaedfe") + b"code")
        self.image = self.folder / "tolvix-installer-9.8.7-macos.dmg"

    def pack(self):
        return subprocess.run([str(PACKAGING / "macos_image.py"), str(self.bundle), str(self.folder)], text=True,
                              capture_output=True, env={**os.environ, "SOURCE_DATE_EPOCH": "1700000000"})

    def test_shows_the_installer_alone_and_is_the_same_again(self):
        images = []
        for _ in range(2):
            done = self.pack()
            self.assertEqual((done.returncode, done.stdout), (0, f"{self.image}\n"), done.stderr)
            images.append(self.image.read_bytes())
            os.utime(self.program, (1, 1))
        self.assertEqual(images[0], images[1])
        volume = self.folder / "volume"
        subprocess.run(["7zz", "x", "-y", "-bd", f"-o{volume}", str(self.image)], check=True, stdout=subprocess.DEVNULL)
        volume /= "Tolvix Installer"
        self.assertEqual(sorted(os.listdir(volume)), [".DS_Store", ".VolumeIcon.icns", "Tolvix Installer.app"])
        places = [record for record in read_layout((volume / ".DS_Store").read_bytes()) if record[1] == "Iloc"]
        self.assertEqual([name for name, _, _ in places], ["Tolvix Installer.app"])
        for name, marked in ((".VolumeIcon.icns", True), (".Other.icns", False)):
            (volume / ".VolumeIcon.icns").rename(volume / name)
            self.assertEqual(CUSTOM_ICON in b"".join(Volume(scan(str(volume), "Tolvix")).stream()), marked, name)

    def test_refuses_what_is_no_bundle_for_macos(self):
        self.program.write_bytes(b"\x7fELF")
        for text in ("holds no program for macOS", "is no bundle"):
            done = self.pack()
            self.assertEqual((done.returncode, done.stdout, self.image.exists()), (1, "", False))
            self.assertIn(text, done.stderr)
            self.program.unlink(missing_ok=True)

    def test_layout_is_found_again(self):
        records = read_layout(finder_layout((1, 2, 300, 200), 64, {"b.app": (5, 6), "A": (7, 8)}))
        self.assertEqual([record[:2] for record in records],
                         [(".", "bwsp"), (".", "icvp"), (".", "vSrn"), (".", "vstl"), ("A", "Iloc"), ("b.app", "Iloc")])
        self.assertEqual(plistlib.loads(records[0][2][4:])["WindowBounds"], "{{1, 2}, {300, 200}}")
        self.assertEqual(struct.unpack_from(">III", records[5][2]), (16, 5, 6))
        with self.assertRaises(ValueError):
            finder_layout((1, 2, 300, 200), 64, {"x" * 255 + str(number): (0, 0) for number in range(10)})
