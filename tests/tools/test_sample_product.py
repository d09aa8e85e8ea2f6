import os
import plistlib
import signal
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

    def start(self):
        """Starts the product and waits until it has told so; returns it and its line."""
        program = self.out / "Tolvix.app" / "Contents" / "MacOS" / "Tolvix"
        running = subprocess.Popen([program], env={**os.environ, "HOME": str(self.scratch)}, stderr=subprocess.DEVNULL)
        self.addCleanup(running.wait)
        self.addCleanup(running.kill)
        started = self.scratch / ".tolvix-sample" / "started"
        limit = time.monotonic() + PATIENCE
        while not started.exists() and time.monotonic() < limit:
            time.sleep(0.02)
        self.assertEqual(started.read_text(), f"{running.pid} 7.0 $x {program}\n")
        return running

    def test_bundle_names_itself_and_its_links_lead_where_they_should(self):
        make_sample_product(str(self.out), version="7.0 $x", identifier="org.example", payload_files=3, payload_bytes=7)
        contents = self.out / "Tolvix.app" / "Contents"
        properties = plistlib.loads((contents / "Info.plist").read_bytes())
        self.assertEqual((properties["CFBundleIdentifier"], properties["CFBundleVersion"]), ("org.example", "7.0 $x"))
        self.assertTrue(os.access(contents / "MacOS" / properties["CFBundleExecutable"], os.X_OK))
        self.assertTrue((contents / "Resources" / "shared" / "Info.plist").is_file())
        self.assertFalse((contents / "Resources" / "dangling").exists())
        self.assertEqual(os.readlink(self.out / "Applications"), "/Applications")
        payload = [path.stat().st_size for path in (contents / "Resources" / "payload").rglob("*.bin")]
        self.assertEqual(payload, [7, 7, 7])

    def test_product_ends_when_terminated(self):
        make_sample_product(str(self.out), version="7.0 $x")
        running = self.start()
        running.terminate()
        self.assertEqual(running.wait(PATIENCE), -signal.SIGTERM)

    def test_stubborn_product_ends_with_its_lifetime_only(self):
        make_sample_product(str(self.out), version="7.0 $x", lifetime=1, ignore_term=True)
        running = self.start()
        running.terminate()
        self.assertEqual(running.wait(PATIENCE), 0)

    def test_folder_with_something_in_it_is_left_alone(self):
        self.out.mkdir()
        (self.out / "mine").touch()
        before = tree(self.scratch)
        with self.assertRaises(OSError):
            make_sample_product(str(self.out))
        self.assertEqual(tree(self.scratch).keys(), before.keys())
