"""A second installer of the same user: it says so, leaves everything to the first, and ends well."""
import subprocess

from tests.functional.installer_case import CHECKED, INSTALLED, InstallerCase

LINE = "The installer is already running."


class SecondStart(InstallerCase):
    def start_first(self):
        self.services.image.faults.hang = True
        first = subprocess.Popen(self.trial.command("--auto-start", "NO"), env=self.trial.environment(),
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(first.communicate)
        self.addCleanup(first.kill)
        # Events can arrive in any order.
        for step in CHECKED:
            self.assertTrue(self.services.log.wait_for_step(step, 30))
        return first

    def test_second_start_ends_and_the_first_goes_on(self):
        first = self.start_first()
        events = len(self.services.log.events)
        second = self.trial.run("--partnerName", "other")
        self.assertEqual(second.returncode, 0)
        self.assertEqual([line.partition("] ")[2] for line in second.stderr.splitlines()], [LINE])
        self.assertEqual(len(self.services.log.events), events)
        self.assertIsNone(first.poll())
        self.assertIn("Usage:", self.trial.run("--help").stderr)

    def test_claim_goes_with_the_process(self):
        first = self.start_first()
        first.kill()
        first.wait()
        self.services.image.faults.hang = False
        run = self.trial.run("--auto-start", "NO")
        self.assertNotIn(LINE, run.stderr)
        self.assertTrue(self.trial.application.is_dir())

    def test_another_applications_folder_is_another_installation(self):
        self.start_first()
        self.services.image.faults.hang = False
        other = self.folder / "other root"
        (other / "Applications").mkdir(parents=True)
        self.trial.set_information(TXPlatformRoot=str(other))
        self.show_events()
        run = self.trial.run("--auto-start", "NO")
        self.assertEqual(self.posted_steps(run), INSTALLED, run.stderr)
