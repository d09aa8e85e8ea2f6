"""Quitting in the middle of a run: what is asked, what the answers do, and that nothing stays behind."""
import os
import pty
import select
import signal
import subprocess
import time

from tests.functional.installer_case import INSTALLED, InstallerCase

QUESTION = "Quit before Tolvix is installed?"
SIGNALS = (signal.SIGTERM, signal.SIGINT, signal.SIGHUP)


class Quitting(InstallerCase):
    def setUp(self):
        super().setUp()
        # Whoever starts the tests in the background has some of them ignored, here and in the programs started from here.
        for number in SIGNALS:
            self.addCleanup(signal.signal, number, signal.signal(number, signal.SIG_DFL))
        self.services.image.faults.hang = True
        self.shown = ""

    def download_for_some_seconds(self):
        self.services.image.faults.hang = False
        self.services.image.faults.bytes_per_second = 800

    def start(self, step="23.21", **streams):
        process = subprocess.Popen(self.trial.command("--auto-start", "NO"), env=self.trial.environment(), **streams)
        self.addCleanup(process.kill)
        self.assertTrue(self.services.log.wait_for_step(step, 30))
        return process

    def start_on_terminal(self):
        terminal, side = pty.openpty()
        self.addCleanup(os.close, terminal)
        process = self.start(stdin=side, stdout=side, stderr=side, start_new_session=True)
        os.close(side)
        return process, terminal

    def read_until(self, terminal, text, seconds=30):
        """Waits until the terminal has shown that text, after all that was waited for before."""
        deadline = time.monotonic() + seconds
        while text not in self.shown:
            left = deadline - time.monotonic()
            self.assertGreater(left, 0, self.shown)
            if select.select([terminal], [], [], left)[0]:
                self.shown += os.read(terminal, 4096).decode(errors="replace")
        self.shown = self.shown.partition(text)[2]

    def answer(self, terminal, line):
        # What is typed before the prompt is there does not count as an answer.
        self.read_until(terminal, "[2] Quit")
        self.read_until(terminal, "> ")
        os.write(terminal, line)

    def test_quits_without_a_terminal(self):
        for number in SIGNALS:
            with self.subTest(number.name):
                self.services.log.events.clear()
                process = self.start(stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
                process.send_signal(number)
                output, _ = process.communicate(timeout=30)
                self.assertEqual(process.returncode, 0)
                self.assertIn(QUESTION, output)
                self.assert_nothing_left()
                self.assertFalse(self.trial.application.exists())

    def test_terminal_is_asked_and_quits(self):
        process, terminal = self.start_on_terminal()
        process.send_signal(signal.SIGINT)
        self.answer(terminal, b"7\n")
        self.answer(terminal, b"2\n")
        self.assertEqual(process.wait(30), 0)
        self.assert_nothing_left()

    def test_terminal_is_asked_and_goes_on(self):
        self.download_for_some_seconds()
        process, terminal = self.start_on_terminal()
        process.send_signal(signal.SIGINT)
        self.answer(terminal, b"1\n")
        self.read_until(terminal, "Installing Tolvix", 60)
        self.assertEqual(process.wait(60), 0)
        self.assertEqual(sorted(self.services.log.steps), INSTALLED)
        self.assertTrue(self.trial.application.exists())

    def test_installation_that_ends_under_the_question_ends_the_program(self):
        self.download_for_some_seconds()
        process, terminal = self.start_on_terminal()
        process.send_signal(signal.SIGINT)
        self.read_until(terminal, "[2] Quit")
        self.assertTrue(self.services.log.wait_for_step("23.32", 60))
        self.assertEqual(process.wait(30), 0)

    def test_quitting_while_the_image_is_attached_leaves_nothing(self):
        self.services.image.faults.hang = False
        process = self.start("23.31", stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(30), 0)
        deadline = time.monotonic() + 10
        while self.trial.leftovers() and time.monotonic() < deadline:
            time.sleep(0.02)
        self.assert_nothing_left()
