"""What the functional tests share: a sandbox, local services, sample images, and what to expect of a run."""
from __future__ import annotations

import os
import subprocess
import tempfile
import unittest
from pathlib import Path
from typing import Dict, List, Optional

from tests.tools import TOOLS

from diskimage.build import make_image
from sample_product import make_sample_product
from services import LocalServices
from trial import Trial
from virtual_display import VirtualDisplay

BUNDLE = Path(os.environ.get("TOLVIX_BUNDLE", TOOLS.parent / "build" / "release" / "Tolvix Installer.app"))
IDENTIFIER = "example.tolvix.desktop"
STARTED = ["23.01", "23.11"]
CHECKED = [*STARTED, "23.12", "23.21"]
DOWNLOADED = [*CHECKED, "23.22", "23.31"]
INSTALLED = [*DOWNLOADED, "23.32"]

_images: Dict[tuple, bytes] = {}


def sample_image(**options) -> bytes:
    """The bytes of an image of the sample product, made once for each set of options."""
    key = tuple(sorted(options.items()))
    if key not in _images:
        with tempfile.TemporaryDirectory() as folder:
            make_sample_product(Path(folder, "volume"), identifier=IDENTIFIER, **options)
            make_image(str(Path(folder, "volume")), str(Path(folder, "image.dmg")), "Tolvix", time=1_700_000_000)
            _images[key] = Path(folder, "image.dmg").read_bytes()
    return _images[key]


class InstallerCase(unittest.TestCase):
    """A test with a fresh sandbox, `self.trial`, and running local services, `self.services`."""

    installer_folder = "installer"

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="tolvix-test-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.image = self.folder / "Tolvix.dmg"
        self.image.write_bytes(sample_image())
        self.services = self.enter(LocalServices(str(self.image)))
        self.trial = self.enter(Trial(self.folder / "trial", BUNDLE, self.installer_folder))
        self.trial.use_services(self.services)

    def enter(self, manager):
        value = manager.__enter__()
        self.addCleanup(manager.__exit__, None, None, None)
        return value

    def show_events(self) -> None:
        """Makes the installer print its events, in the order in which it posts them."""
        domain = self.trial.information()["TXAgentPreferencesDomain"]
        settings = self.trial.home / ".config" / f"{domain}.conf"
        settings.parent.mkdir(exist_ok=True)
        settings.write_text("[General]\nTXDumpUsageLogs=true\n")

    @staticmethod
    def posted_steps(run: subprocess.CompletedProcess) -> List[str]:
        """The step codes in the order in which the installer printed them."""
        lines = run.stderr.splitlines()
        return [line.split("[INSTALLER_LOG] ")[1] for line in lines if "[INSTALLER_LOG] " in line]

    def expect_run(self, steps: List[str], *arguments: str, console: Optional[str] = None,
                   **options) -> subprocess.CompletedProcess:
        """Runs the installer; it must post exactly those steps in that order and leave nothing behind."""
        self.show_events()
        run = self.trial.run(*arguments, **options)
        self.assertEqual(self.posted_steps(run), steps, run.stderr + run.stdout)
        self.assertEqual(run.returncode, 0, run.stderr)
        if console is not None:
            self.assertRegex(run.stderr, console)
        self.assert_nothing_left()
        return run

    def use_small_disk(self, size: str) -> None:
        """Puts the temporary folder on a file system of its own of that size; skips the test where that cannot be."""
        mount = ["mount", "-t", "tmpfs", "-o", f"mode=700,size={size}", "tmpfs", str(self.trial.temporary)]
        if os.geteuid() != 0 or subprocess.run(mount, stderr=subprocess.DEVNULL).returncode != 0:
            self.skipTest("needs root and the right to mount")
        self.addCleanup(subprocess.run, ["umount", str(self.trial.temporary)], check=True)

    def assert_nothing_left(self) -> None:
        self.assertEqual(self.trial.leftovers(), [])
