"""Whole runs that succeed: what is installed, started, reported and left behind."""
from pathlib import Path

from tests.functional.desktop import wait_until
from tests.functional.installer_case import IDENTIFIER, INSTALLED, InstallerCase, make_sample_product, sample_image
from tests.tools.trees import tree, without_times


class Installation(InstallerCase):
    def test_newest_image_is_installed_and_started(self):
        run = self.expect_run(INSTALLED, console="Launching Tolvix...")
        source = self.folder / "source"
        make_sample_product(source, identifier=IDENTIFIER)
        self.assertEqual(without_times(tree(self.trial.application)), without_times(tree(source / "Tolvix.app")))
        self.wait_for_product()
        self.assertEqual(sorted(self.services.log.steps), INSTALLED)
        first = self.services.log.events[0].fields
        self.assertEqual(first["freshInstall"], "1")
        self.assertEqual(first["country"], "US")
        self.assertRegex(first["anonymouscomputerid"], r"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$")
        installed = next(event for event in self.services.log.events if event.step == "23.32")
        self.assertEqual(installed.fields["version"], "5.1.0-dmg")
        self.assertIn("Downloading Tolvix", run.stdout)
        banner = r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d+ TolvixInstaller\[\d+:\d+\] Tolvix Installation:$"
        self.assertRegex(run.stderr.splitlines()[0], banner)

    def wait_for_product(self):
        wait_until((self.trial.home / ".tolvix-sample" / "started").exists, "the product")

    def test_product_is_not_started_when_auto_start_is_off_and_no_process_stays(self):
        run = self.expect_run(INSTALLED, "--auto-start", "NO")
        self.assertNotIn("Launching", run.stderr)
        # The image is detached by a process of its own, which can end after the installer.
        wait_until(lambda: not any(map(self.mentions_trial, Path("/proc").glob("[0-9]*"))), "the last process to end")

    def mentions_trial(self, entry):
        try:
            return bytes(self.trial.folder) in (entry / "cmdline").read_bytes()
        except OSError:
            return False

    def test_old_product_is_closed_and_replaced(self):
        self.trial.run()
        self.wait_for_product()
        old = self.trial.products()
        (self.trial.application / "Contents" / "old").write_text("")
        self.services.log.events.clear()
        self.expect_run(INSTALLED)
        self.assertFalse((self.trial.application / "Contents" / "old").exists())
        self.assertFalse(set(old) & set(self.trial.products()))
        self.assertEqual(self.services.log.events[0].fields["freshInstall"], "0")

    def test_first_partner_is_kept_and_sent(self):
        self.trial.run("--partnerName", "acme", "--campaignID", "c1", "--auto-start", "NO")
        self.assertEqual(self.services.log.events[0].content["partnerName"], "acme")
        self.assertEqual(self.services.log.events[0].content["campaignId"], "c1")
        self.services.log.events.clear()
        run = self.trial.run("--partnerName", "other", "--auto-start", "NO")
        self.assertIn("- PartnerName: acme", run.stderr)
        self.assertEqual(self.services.log.events[0].content["partnerName"], "acme")

    def test_help_prints_and_starts_nothing(self):
        run = self.trial.run("--help", "--partnerID", "7")
        self.assertEqual(run.returncode, 0)
        self.assertIn("--auto-start [YES/NO]: Automatically start Tolvix after installation", run.stderr)
        self.assertIn("- PartnerID: 7", run.stderr)
        self.assertEqual(self.services.log.events, [])
        self.assert_nothing_left()

    def test_locale_without_a_country_sends_the_first_four_arguments(self):
        self.trial.run("--auto-start", "NO", environment=self.trial.environment(LC_ALL="C"))
        fields = set(self.services.log.events[0].fields)
        self.assertEqual(fields, {"anonymouscomputerid", "os", "version", "osversion", "step", "content"})

    def test_texts_follow_the_language(self):
        run = self.trial.run("--auto-start", "NO", environment=self.trial.environment(LC_ALL="fr_CA.UTF-8"))
        self.assertIn("Téléchargement", run.stdout)
        self.assertEqual(self.services.log.events[0].fields["lang"], "fr-CA")

    def test_log_service_that_is_down_does_not_matter(self):
        self.services.log.refuse_connections()
        run = self.expect_run(INSTALLED, "--auto-start", "NO", console="Request did fail with error: ")
        self.assertTrue(self.trial.application.exists(), run.stderr)

    def test_store_edition_is_reported_and_installation_goes_on(self):
        container = self.trial.home / "Library" / "Containers" / "example.tolvix.desktop"
        container.mkdir(parents=True)
        steps = [*INSTALLED[:3], "23.51", *INSTALLED[3:]]
        self.expect_run(steps, "--auto-start", "NO")


class ShippedImage(InstallerCase):
    installer_folder = "2001"

    def test_image_beside_the_installer_is_used_and_kept(self):
        shipped = self.trial.installer.parent / "Tolvix.dmg"
        shipped.write_bytes(sample_image(version="4.9"))
        before = (shipped.stat().st_mtime_ns, shipped.stat().st_mode, shipped.read_bytes())
        self.expect_run(INSTALLED, "--auto-start", "NO")
        self.assertEqual(self.services.binaries.requests, [])
        self.assertEqual((shipped.stat().st_mtime_ns, shipped.stat().st_mode, shipped.read_bytes()), before)
        self.assertIn(b"4.9", (self.trial.application / "Contents" / "Info.plist").read_bytes())

    def test_image_in_a_folder_of_another_name_is_not_used(self):
        (self.trial.installer.parent / "Tolvix.dmg").write_bytes(b"no image")
        self.trial.set_information(CFBundleVersion="2002")
        self.expect_run(INSTALLED, "--auto-start", "NO")
        self.assertEqual(len(self.services.binaries.requests), 1)
