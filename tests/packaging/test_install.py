"""What `cmake --install` puts in place: complete, moveable, and without a trace of where it was built."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from tests.packaging.build import BUILD, BUNDLE_NAME, IDENTIFIER, REPOSITORY

LIBRARY = Path("lib", "tolvix-installer", BUNDLE_NAME, "Contents")


def install(prefix, destination=""):
    subprocess.run(["cmake", "--install", str(BUILD), "--strip", "--prefix", str(prefix)], check=True,
                   stdout=subprocess.DEVNULL, env={**os.environ, "DESTDIR": str(destination)})


def files(folder):
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir())


class Installing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="tolvix-test-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        install("/usr", cls.folder / "staged")
        cls.tree = cls.folder / "staged" / "usr"

    def test_same_tree_below_any_prefix(self):
        install(self.folder / "prefix")
        self.assertEqual(files(self.folder / "prefix"), files(self.tree))
        self.assertEqual(os.listdir(self.folder / "staged"), ["usr"])

    def test_holds_the_whole_bundle_and_its_surroundings(self):
        tables = {path.parent.name for path in (REPOSITORY / "resources").glob("*.lproj/Localizable.strings")}
        self.assertEqual({path.parent.name for path in (self.tree / LIBRARY / "Resources").glob("*/*.strings")}, tables)
        self.assertTrue((self.tree / LIBRARY / "Info.plist").is_file())
        for name in (LIBRARY / "Helpers" / "hdiutil", Path("bin", "tolvix-installer")):
            self.assertTrue(os.access(self.tree / name, os.X_OK), name)
        icons = {path.parts[-3] for path in (self.tree / "share" / "icons" / "hicolor").glob(f"*/apps/{IDENTIFIER}.*")}
        self.assertEqual(icons, {"scalable", *(f"{size}x{size}" for size in (16, 24, 32, 48, 64, 128, 256))})

    def test_runs_from_wherever_it_is_moved(self):
        moved = self.folder / "moved here"
        install(moved)
        done = subprocess.run([str(moved / "bin" / "tolvix-installer"), "--help"], capture_output=True, text=True,
                              env={"HOME": "/nonexistent", "LC_ALL": "de_DE.UTF-8"})
        self.assertEqual(done.returncode, 0)
        self.assertIn("- Installer version: 2.", done.stderr)  # read from the bundle that was moved

    def test_says_nothing_of_the_machine_that_built_it(self):
        for name in files(self.tree):
            path = self.tree / name
            if path.is_symlink():
                self.assertFalse(os.path.isabs(os.readlink(path)), name)
                continue
            self.assertNotIn(os.fsencode(REPOSITORY), path.read_bytes(), name)
            if os.access(path, os.X_OK):
                dynamic = subprocess.run(["readelf", "-d", str(path)], capture_output=True, text=True, check=True).stdout
                self.assertNotRegex(dynamic, "RPATH|RUNPATH", name)
