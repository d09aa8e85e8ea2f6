"""Runs that fail: each ends in its stage's failure, with its code, console line and alert, and leaves nothing behind."""
import os
from pathlib import Path

from tests.functional.installer_case import (CHECKED, DOWNLOADED, IDENTIFIER, INSTALLED, STARTED, InstallerCase, make_image,
                                             make_sample_product, sample_image)
from tests.tools.trees import tree

from services import Faults

CHECK_TITLE = "The latest version of Tolvix couldn’t be found"
DOWNLOAD_TITLE = "Tolvix couldn’t be downloaded"
INSTALL_TITLE = "Tolvix couldn’t be installed"


class CheckFailures(InstallerCase):
    steps = [*STARTED, "23.13"]

    def expect_check_failure(self, console):
        run = self.expect_run(self.steps, console=console)
        self.assertIn(CHECK_TITLE, run.stdout)
        self.assertIn("[1] Quit", run.stdout)
        self.assertNotIn("[2]", run.stdout)

    def test_wrong_answers(self):
        rows = {"not-json": "NSCocoaErrorDomain Code=3840", "array": "not an object", "wrong-types": "with error: ",
                "wrong-content": r"with error: \(null\)", "deep": "Code=3840", "empty": r"with error: \(null\)",
                "huge": "with error: ", "no-content": r"with error: \(null\)", "code-404": "Code=404"}
        for body, console in rows.items():
            with self.subTest(body):
                self.services.binaries.body = body
                self.expect_check_failure(console)

    def test_service_that_is_down_or_not_to_be_trusted(self):
        for certificate in ("wrong-host", "expired"):
            with self.subTest(certificate):
                self.services.binaries.faults.certificate = certificate
                self.expect_check_failure(r"with error: \(null\)")
        self.services.binaries.refuse_connections()
        self.expect_check_failure(r"with error: \(null\)")

    def test_text_of_the_service_cannot_drive_the_terminal(self):
        self.services.binaries.body = b'{"code": 5, "message": "red \\u001b[31m\\nsecond line"}'
        self.show_events()
        run = self.trial.run()
        self.assertNotIn("\x1b", run.stderr)
        self.assertRegex(run.stderr, r"Domain=red \\x1b\[31m\\nsecond line Code=5")


    def test_large_answers_make_short_lines(self):
        for content in (b'"a":' + b"[" * 500 + b"]" * 500, b'"a":"' + b"x" * 200_000 + b'"',
                        b'"message":"' + b"x" * 200_000 + b'"'):
            with self.subTest(content[:8]):
                self.services.binaries.body = b'{"code":404,' + content + b"}"
                run = self.expect_run(self.steps, console="Check did fail with error: .*…")
                line = next(line for line in run.stderr.splitlines() if "Check did fail" in line)
                self.assertLess(len(line), 5000)


class LogFailures(InstallerCase):
    def test_log_host_that_makes_no_address_holds_nothing(self):
        self.trial.set_information(TXInstallerLogHost="no host")
        run = self.expect_run(INSTALLED, "--auto-start", "NO")
        self.assertEqual(run.stderr.count("Request did fail with error: Error Domain=NSURLErrorDomain Code=-1000"),
                         len(INSTALLED))


class DownloadFailures(InstallerCase):
    steps = [*CHECKED, "23.23", "23.43"]

    def expect_download_failure(self, console="Download did fail with error: Error Domain=NSURLErrorDomain"):
        run = self.expect_run(self.steps, console=console)
        self.assertIn(DOWNLOAD_TITLE, run.stdout)
        self.assertIn("[1] Download Manually", run.stdout)
        self.assertFalse(self.trial.application.exists())

    def test_faults_of_the_transfer(self):
        for faults in ({"status": 404}, {"cut_after": 1000}, {"announce": 100}, {"redirects": 25},
                       {"redirects": 1, "redirect_to": "http"}, {"certificate": "wrong-host"}):
            with self.subTest(**faults):
                self.services.image.faults = Faults(**faults)
                self.expect_download_failure()

    def test_names_that_lead_elsewhere_write_nothing(self):
        witness = self.trial.temporary.parent / "Tolvix.dmg"
        for path in ("/", "/..", "/%2e%2e", "/%2F", "/..%2F..%2FTolvix.dmg", "/a%2Fb.dmg", "/.", "/My%20App.dmg"):
            with self.subTest(path):
                self.services.binaries.download_url = f"https://{self.services.image.host}{path}"
                self.expect_download_failure()
                self.assertFalse(witness.exists())
                self.assertTrue(self.trial.temporary.is_dir())

    def test_temporary_folder_whose_path_makes_no_url(self):
        folder = self.folder / "two words"
        folder.mkdir(mode=0o700)
        self.show_events()
        run = self.trial.run(environment=self.trial.environment(TMPDIR=str(folder)))
        self.assertEqual(self.posted_steps(run), self.steps)
        self.assertRegex(run.stderr, "Code=-3000")
        self.assertEqual(list(folder.iterdir()), [])

    def test_full_disk(self):
        self.image.write_bytes(bytes(200_000))
        self.use_small_disk("64k")
        self.expect_download_failure("Download did fail with error: .*Code=-3003")

    def test_private_folder_that_cannot_be_made(self):
        self.use_small_disk("64k,nr_inodes=1")
        self.expect_download_failure("Download did fail with error: .*No space left on device")


class InstallFailures(InstallerCase):
    steps = [*DOWNLOADED, "23.33", "23.43"]

    def expect_install_failure(self, console):
        run = self.expect_run(self.steps, console=console)
        self.assertIn(INSTALL_TITLE, run.stdout)

    def test_images_that_cannot_be_attached(self):
        self.trial.run("--auto-start", "NO")
        before = tree(self.trial.application)
        image = sample_image()
        for content in (b"no image at all", b"", image[:-512]):
            with self.subTest(len(content)):
                self.image.write_bytes(content)
                self.expect_install_failure(r"Install did fail with error: \(null\)")
                self.assertEqual(tree(self.trial.application), before)

    def test_full_disk(self):
        self.use_small_disk("64k")
        self.expect_install_failure(r"attach failed - .*No space left on device")

    def test_image_without_the_application(self):
        volume = self.folder / "volume"
        (volume / "Other.app").mkdir(parents=True)
        make_image(str(volume), str(self.image), "Tolvix")
        self.expect_install_failure(r"Code=4002 \"Couldn't find file at path: .*/Tolvix.app\"")

    def test_missing_disk_image_tool(self):
        os.remove(self.trial.installer / "Contents" / "Helpers" / "hdiutil")
        self.expect_install_failure(r"with error: \(null\)")

    def test_missing_applications_folder(self):
        self.trial.application.parent.rmdir()
        self.expect_install_failure(r"Code=4001 \"Authenticated file copy from .* failed")
        self.assertFalse(self.trial.application.parent.exists())

    def test_product_that_cannot_be_started_ends_without_an_alert(self):
        volume = self.folder / "volume"
        make_sample_product(volume, identifier=IDENTIFIER)
        (volume / "Tolvix.app" / "Contents" / "MacOS" / "Tolvix").unlink()
        make_image(str(volume), str(self.image), "Tolvix")
        empty = self.folder / "empty"
        empty.mkdir()
        environment = self.trial.environment(PATH=str(empty), DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        run = self.expect_run([*DOWNLOADED, "23.34"], environment=environment,
                              console="Launch did fail with error: .*Couldn't open application at path")
        self.assertNotIn("[1]", run.stdout)
        self.assertTrue(Path(self.trial.application).is_dir())
