import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from tests.tools import TOOLS

import make_icns

REPOSITORY = TOOLS.parent


def picture(pixels: int) -> bytes:
    return make_icns.PNG + struct.pack(">I4sII", 13, b"IHDR", pixels, pixels) + b"rest"


class MakeIcns(unittest.TestCase):
    def test_lists_each_picture_under_every_kind_of_its_size(self):
        icon = make_icns.make_icns([picture(16), picture(32)])
        self.assertEqual(struct.unpack(">4sI", icon[:8]), (b"icns", len(icon)))
        entries, at = [], 8
        while at < len(icon):
            kind, length = struct.unpack(">4sI", icon[at:at + 8])
            entries.append((kind, icon[at + 8:at + length]))
            at += length
        self.assertEqual(entries, [(b"icp4", picture(16)), (b"icp5", picture(32)), (b"ic11", picture(32))])

    def test_refuses_what_no_icon_has(self):
        with tempfile.TemporaryDirectory() as folder:
            for number, content in enumerate((b"text", picture(24), picture(16)[:20])):
                source = Path(folder, str(number))
                source.write_bytes(content)
                run = subprocess.run([sys.executable, TOOLS / "make_icns.py", Path(folder, "icon"), source],
                                     capture_output=True, text=True, check=False)
                self.assertIn(str(source), run.stderr)
                self.assertEqual(run.returncode, 1)
            self.assertFalse(Path(folder, "icon").exists())


if __name__ == "__main__":
    unittest.main()
