import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from tests.tools import TOOLS
from tests.tools.trees import read, tree

from diskimage import damage
from diskimage.build import make_image
from diskimage.errors import ImageError
from diskimage.udif import CHUNK_SECTORS, SECTOR_SIZE
from sample_product import make_sample_product

CHUNK_SIZE = CHUNK_SECTORS * SECTOR_SIZE


class Making(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.source = self.scratch / "source"
        self.source.mkdir()
        self.image = str(self.scratch / "image.dmg")

    def test_same_input_gives_the_same_bytes(self):
        self.source.rmdir()
        images = []
        for attempt in range(2):
            folder = self.scratch / str(attempt)
            make_sample_product(str(folder), payload_files=5, payload_bytes=CHUNK_SIZE)
            os.utime(folder / ".DS_Store", (attempt, attempt))
            make_image(str(folder), self.image, "Tolvix", time=1_600_000_000)
            images.append(read(self.image))
        self.assertEqual(images[0], images[1])

    def test_refusals_leave_everything_as_it_was(self):
        (self.source / "file").write_bytes(b"data")
        (self.scratch / "link.dmg").symlink_to(self.source / "file")
        pipe, twins, bytes_name = (self.scratch / name for name in ("pipe", "twins", "bytes"))
        for folder in (pipe / "sub", twins, bytes_name):
            folder.mkdir(parents=True)
        os.mkfifo(pipe / "sub" / "pipe")
        for name in ("\u00e9", "e\u0301"):
            (twins / name).touch()
        Path(os.fsdecode(os.fsencode(bytes_name) + b"/\xff")).touch()
        cases = (
            ("not a folder", self.source / "file", "out.dmg", {}),
            ("not a regular file", self.source, "link.dmg", {}),
            ("lies inside", self.source, "source/out.dmg", {}),
            ("cannot write", self.source, "missing/out.dmg", {}),
            ("neither file", pipe, "out.dmg", {}),
            ("same name", twins, "out.dmg", {}),
            ("not valid UTF-8", bytes_name, "out.dmg", {}),
            ("not a name", self.source, "out.dmg", {"name": ".."}),
            ("too long", self.source, "out.dmg", {"name": "\u01d5" * 90}),
            ("cannot hold the time", self.source, "out.dmg", {"time": 1 << 33}))
        before = tree(self.scratch)
        for message, folder, out, options in cases:
            with self.subTest(message):
                with self.assertRaisesRegex(ImageError, message):
                    make_image(str(folder), str(self.scratch / out), **{"name": "Tolvix", **options})
                self.assertEqual(tree(self.scratch), before)

    def test_sample_product_leaves_a_folder_with_something_in_it_alone(self):
        (self.source / "mine").touch()
        before = tree(self.scratch)
        with self.assertRaises(OSError):
            make_sample_product(str(self.source))
        self.assertEqual(tree(self.scratch).keys(), before.keys())

    def test_command_line_replaces_an_image_and_keeps_it_on_failure(self):
        def run(folder):
            return subprocess.run([str(TOOLS / "make_dmg.py"), str(folder), self.image], check=False,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        Path(self.image).write_bytes(b"old")
        failed = run(self.scratch / "nothing")
        self.assertEqual((failed.returncode, read(self.image)), (1, b"old"))
        self.assertRegex(failed.stderr, rb"^make_dmg: not a folder: .*\n$")
        self.assertEqual(run(self.source).returncode, 0)
        self.assertEqual(damage.read_trailer(self.image)["signature"], b"koly")
        self.assertEqual(sorted(os.listdir(self.scratch)), ["image.dmg", "source"])
