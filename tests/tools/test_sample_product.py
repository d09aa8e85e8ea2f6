import os
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from tests.tools.trees import tree

from sample_product import make_sample_product

PATIENCE = 20


class SampleProduct(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)
        self.out = self.scratch / "out"

    def test_stubborn_product_tells_that_it_runs_and_ends_with_its_lifetime_only(self):
        make_sample_product(str(self.out), version="7.0 $x", lifetime=1, ignore_term=True)
        program = self.out / "Tolvix.app" / "Contents" / "MacOS" / "Tolvix"
        running = subprocess.Popen([program], env={**os.environ, "HOME": str(self.scratch)}, stderr=subprocess.DEVNULL)
        self.addCleanup(running.wait)
        self.addCleanup(running.kill)
        started = self.scratch / ".tolvix-sample" / "started"
        limit = time.monotonic() + PATIENCE
        while not started.exists() and time.monotonic() < limit:
            time.sleep(0.02)
        self.assertEqual(started.read_text(), f"{running.pid} 7.0 $x {program}\n")
        running.terminate()
        self.assertEqual(running.wait(PATIENCE), 0)

    def test_folder_with_something_in_it_is_left_alone(self):
        self.out.mkdir()
        (self.out / "mine").touch()
        before = tree(self.scratch)
        with self.assertRaises(OSError):
            make_sample_product(str(self.out))
        self.assertEqual(tree(self.scratch).keys(), before.keys())
