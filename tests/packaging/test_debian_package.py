"""The Debian package in a fresh system: installed, run against local services, and removed without a trace."""
import os
import plistlib
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from tests.functional.installer_case import INSTALLED, sample_image
from tests.packaging.build import BUILD, BUNDLE_NAME

from services import LocalServices

PACKAGE = "tolvix-installer"
INFORMATION = Path("usr/lib/tolvix-installer", BUNDLE_NAME, "Contents/Info.plist")
# What the package manager and the test itself keep.
OTHERS = ("proc", "sys", "dev", "tmp", "var/lib/dpkg", "var/log", "var/cache", "services.pem")


def command(*words, **options):
    done = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          stdin=subprocess.DEVNULL, **options)
    if done.returncode != 0:
        raise AssertionError(f"{words[0]} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def build_package(folder):
    """The package that the build makes, in that folder."""
    epoch = {"SOURCE_DATE_EPOCH": "1700000000"}
    command("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", folder, env={**os.environ, **epoch})
    (package,) = folder.glob("*.deb")
    return package


def needed_packages(package):
    """The first choice of each dependency."""
    depends = command("dpkg-deb", "-f", package, "Depends")
    return [re.match(r"\s*([^ (|]+)", one)[1] for one in depends.split(",")]


class DebianPackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        if os.geteuid() != 0:
            raise unittest.SkipTest("needs root, to make a system of its own")
        for program in ("mmdebstrap", "unshare", "dpkg-deb", "cpack"):
            if not shutil.which(program):
                raise unittest.SkipTest(f"needs {program}")
        folder = tempfile.TemporaryDirectory(prefix="tolvix-test-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.package = build_package(cls.folder / "package")
        cls.root = cls.folder / "root"
        release = dict(line.split("=", 1) for line in Path("/etc/os-release").read_text().split("\n") if "=" in line)
        made = subprocess.run(["mmdebstrap", "--variant=minbase", "--mode=root", "--skip=cleanup/apt",
                               f"--include={','.join(needed_packages(cls.package))}", release["VERSION_CODENAME"],
                               str(cls.root)], stdin=subprocess.DEVNULL, capture_output=True, text=True)
        if made.returncode != 0:
            raise unittest.SkipTest(f"no system could be made here: {made.stderr.strip().splitlines()[-1:]}")

    def inside(self, *words):
        """Runs a command in the fresh system, whose processes end with it."""
        return command("unshare", "--mount", "--pid", "--fork", f"--mount-proc={self.root / 'proc'}", "chroot", self.root,
                       "/usr/bin/env", "-i", "HOME=/root", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=en_US.UTF-8",
                       "SSL_CERT_FILE=/services.pem", *words)

    def tree(self):
        found = set()
        for folder, folders, files in os.walk(self.root):
            place = os.path.relpath(folder, self.root)
            folders[:] = [name for name in folders if os.path.normpath(os.path.join(place, name)) not in OTHERS]
            found.update(os.path.normpath(os.path.join(place, name)) for name in (*folders, *files))
        return found - set(OTHERS)

    def test_installs_runs_and_leaves_nothing(self):
        before = self.tree()
        shutil.copy(self.package, self.root / "tmp" / "package.deb")
        self.inside("dpkg", "--install", "/tmp/package.deb")
        self.assertIn("usr/bin/tolvix-installer", self.tree())

        image = self.folder / "Tolvix.dmg"
        image.write_bytes(sample_image())
        with LocalServices(str(image)) as services:
            shutil.copy(services.certificate, self.root / "services.pem")
            information = plistlib.loads((self.root / INFORMATION).read_bytes())
            information.update(TXBinariesHost=services.binaries.host, TXInstallerLogHost=services.log.host)
            (self.root / INFORMATION).write_bytes(plistlib.dumps(information))
            output = self.inside("tolvix-installer", "--auto-start", "NO")
            self.assertEqual(sorted(services.log.steps), INSTALLED, output)
        self.assertTrue((self.root / "Applications" / "Tolvix.app" / "Contents" / "Info.plist").is_file())

        self.inside("dpkg", "--purge", PACKAGE)
        kept = self.tree() - before
        self.assertTrue(all(path.startswith(("Applications", "root/.config")) for path in kept), sorted(kept))
        self.assertIn("Applications/Tolvix.app", kept)  # the person's, not the package's
        shutil.rmtree(self.root / "Applications" / "Tolvix.app")
        shutil.rmtree(self.root / "root" / ".config")
        self.inside("dpkg", "--install", "/tmp/package.deb")
        self.inside("dpkg", "--purge", PACKAGE)
        self.assertEqual(self.tree(), before)
