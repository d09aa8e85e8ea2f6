"""The whole program for Macs, over stand-ins: from the check to the quit, driven through local services."""
import os
import shutil
import subprocess
import unittest
from pathlib import Path

from tests.functional.desktop import wait_until
from tests.functional.installer_case import INSTALLED, InstallerCase
from tools.virtual_display import VirtualDisplay

PROGRAM = os.environ.get("TOLVIX_MAC_PROGRAM")
HDIUTIL = os.environ.get("TOLVIX_HDIUTIL")
BYTE_ORDER_MARK = "\N{ZERO WIDTH NO-BREAK SPACE}"


class MacFlow(InstallerCase):
    def setUp(self):
        if not PROGRAM or shutil.which("Xvfb") is None:
            self.skipTest("needs the program over stand-ins, and Xvfb")
        super().setUp()
        self.screen = self.enter(VirtualDisplay())
        self.before = self.private_folders()

    @staticmethod
    def private_folders() -> set:
        """What lies where GNUstep has its temporary files, but for its own."""
        folder = Path("/tmp", f"GNUstepSecure{os.getuid()}")
        names = set(os.listdir(folder)) if folder.is_dir() else set()
        return names - {"GSLaunchedApplications", "NSMessagePort"}

    def lay_out(self) -> Path:
        """The bundle as GNUstep reads one; the path of its executable."""
        bundle = self.folder / "Sample.app"
        resources = bundle / "Resources"
        table = resources / "en.lproj" / "Localizable.strings"
        table.parent.mkdir(parents=True)
        contents = self.trial.installer / "Contents"
        text = (contents / "Resources" / "en.lproj" / "Localizable.strings").read_text(encoding="utf-8")
        table.write_text(BYTE_ORDER_MARK + text, encoding="utf-8")
        shutil.copy(contents / "Info.plist", resources / "Info-gnustep.plist")
        return Path(shutil.copy(PROGRAM, bundle / "Sample"))

    def run_program(self, *arguments):
        """Its exit status and messages. These go to a file, because the product that it starts keeps them open."""
        environment = self.trial.environment(DISPLAY=self.screen.display, TOLVIX_TEST_HDIUTIL=HDIUTIL)
        with open(self.folder / "messages", "w+", encoding="utf-8", errors="replace") as messages:
            run = subprocess.run([str(self.lay_out()), *arguments], env=environment, stdin=subprocess.DEVNULL,
                                 stdout=subprocess.DEVNULL, stderr=messages, timeout=240, check=False)
            messages.seek(0)
            return run.returncode, messages.read()

    def test_installs_starts_reports_and_quits(self):
        status, messages = self.run_program()
        self.assertEqual(status, 0, messages)
        self.assertEqual(sorted(self.services.log.steps), INSTALLED, messages)
        self.assertTrue((self.trial.application / "Contents" / "Info.plist").is_file(), messages)
        self.assertIn("Launching Tolvix...", messages)
        wait_until((self.trial.home / ".tolvix-sample" / "started").exists, "the product")
        # A process of its own detaches the image, and removes the mount point with it.
        wait_until(lambda: self.private_folders() == self.before, "the last private folder to go")

    def test_prints_its_options_and_quits(self):
        status, messages = self.run_program("--help")
        self.assertEqual(status, 0, messages)
        self.assertEqual(self.services.log.steps, [])
        self.assertEqual(self.private_folders(), self.before)


if __name__ == "__main__":
    unittest.main()
