"""The window as a person meets it: real keys on a real display, from the first stage to the last alert."""
import os
import signal
import subprocess
import time
import unittest

from tests.functional.desktop import Desktop, missing_tools, wait_until
from tests.functional.installer_case import CHECKED, INSTALLED, STARTED, InstallerCase

# Longer than an alert in a window that has just become active takes no answer, in seconds.
ANSWERED_AFTER = 1.0
BROWSER = """#!/bin/sh
printf '%s\\n' "$@" >>"$HOME/opened"
"""


@unittest.skipIf(missing_tools(), f"needs {', '.join(missing_tools())}")
class WindowOnDesktop(InstallerCase):
    def setUp(self):
        super().setUp()
        self.desktop = self.enter(Desktop())
        self.tools = self.folder / "tools"
        self.tools.mkdir()
        browser = self.tools / "xdg-open"
        browser.write_text(BROWSER)
        browser.chmod(0o755)

    def start(self):
        path = f"{self.tools}:{os.environ['PATH']}"
        environment = self.trial.environment(DISPLAY=self.desktop.display, PATH=path, QT_QPA_PLATFORM="xcb")
        process = subprocess.Popen(self.trial.command("--auto-start", "NO"), env=environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def start_busy(self):
        self.services.image.faults.hang = True
        process = self.start()
        self.assertTrue(self.services.log.wait_for_step("23.21", 30))
        return process, self.desktop.wait_for_windows(process.pid, 1)[0]

    def opened(self):
        record = self.trial.home / "opened"
        return record.read_text().split() if record.exists() else []

    def expect_end(self, process, steps):
        self.assertEqual(process.wait(30), 0)
        self.assertEqual(sorted(self.services.log.steps), sorted(steps))
        self.assert_nothing_left()

    def test_installs_behind_a_window(self):
        self.services.image.faults.bytes_per_second = 4000
        process = self.start()
        self.desktop.wait_for_windows(process.pid, 1)
        self.expect_end(process, INSTALLED)
        self.assertTrue(self.trial.application.exists())

    def test_help_key_opens_the_support_page(self):
        process, window = self.start_busy()
        self.desktop.press(window, "F1")
        wait_until(self.opened, "the browser")
        self.assertEqual(self.opened(), ["https://support.tolvix.example/?utm_source=tolvix_app&utm_medium=macosx"])
        self.assertIsNone(process.poll())

    def test_quitting_while_busy_asks(self):
        rows = {"Ctrl+Q": lambda window: self.desktop.press(window, "ctrl+q"),
                "Ctrl+W": lambda window: self.desktop.press(window, "ctrl+w"), "close button": self.desktop.close}
        process, window = self.start_busy()
        without = self.desktop.height(window)
        for name, quit_by in rows.items():
            for answer in ("Return", "Escape"):
                with self.subTest(name, answer=answer):
                    quit_by(window)
                    self.wait_for_sheet(window, without)
                    self.desktop.press(window, answer)
                    wait_until(lambda: self.desktop.height(window) == without, "the sheet's end")
                    self.assertIsNone(process.poll())
        self.desktop.press(window, "ctrl+q")
        self.wait_for_sheet(window, without)
        self.desktop.press(window, "Tab")
        self.desktop.press(window, "space")
        self.expect_end(process, CHECKED)

    def test_a_minimised_window_stays_so_until_the_person_brings_it_back(self):
        process, window = self.start_busy()
        without = self.desktop.height(window)
        self.desktop.minimise(process.pid, window)
        process.send_signal(signal.SIGTERM)
        time.sleep(ANSWERED_AFTER)
        self.assertEqual(self.desktop.windows(process.pid), [])
        self.desktop.press(window, "shift")
        self.wait_for_sheet(window, without)

    def wait_for_sheet(self, window, without):
        """The window has grown from its height without a sheet, and been there long enough to take an answer."""
        wait_until(lambda: self.desktop.height(window) > without, "the sheet")
        time.sleep(ANSWERED_AFTER)

    def answer_alert(self, process, key):
        """Presses the key once the alert that the program begins with takes it."""
        window = self.desktop.wait_for_windows(process.pid, 1)[0]
        self.desktop.press(window, "shift")
        time.sleep(ANSWERED_AFTER)
        self.desktop.press(window, key)

    def test_failed_check_can_only_be_left(self):
        self.services.binaries.body = "not-json"
        process = self.start()
        self.assertTrue(self.services.log.wait_for_step("23.13", 30))
        self.answer_alert(process, "Return")
        self.expect_end(process, [*STARTED, "23.13"])

    def test_leaves_the_screen_while_events_are_on_their_way(self):
        self.services.image.faults.status = 404
        process = self.start()
        self.assertTrue(self.services.log.wait_for_step("23.23", 30))
        self.services.log.faults.hang = True
        self.answer_alert(process, "Escape")
        self.desktop.wait_for_windows(process.pid, 0)
        self.assertIsNone(process.poll())

    def test_failed_download_offers_the_address(self):
        self.services.image.faults.status = 404
        for key, step, opened in (("Return", "23.42", True), ("Escape", "23.43", False)):
            with self.subTest(key):
                self.services.log.events.clear()
                process = self.start()
                self.assertTrue(self.services.log.wait_for_step("23.23", 30))
                self.answer_alert(process, key)
                self.expect_end(process, [*CHECKED, "23.23", step])
                if opened:
                    wait_until(self.opened, "the browser")
                    self.assertEqual(self.opened(), [f"https://{self.services.image.host}/Tolvix.dmg"])
                    (self.trial.home / "opened").unlink()
                else:
                    self.assertEqual(self.opened(), [])
