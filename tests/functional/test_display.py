"""Displays that cannot be reached or go away, compositors, and message buses that do not answer."""
import os
import shutil
import socket
import subprocess
import unittest

from tests.functional.desktop import Desktop, missing_tools, wait_until
from tests.functional.installer_case import INSTALLED, InstallerCase, VirtualDisplay

from window_watch import WindowWatch

# Decide for Qt which display it takes.
CHOICES = ("QT_QPA_PLATFORM", "XDG_SESSION_TYPE")


class DisplayCase(InstallerCase):
    def environment(self, **changes):
        environment = self.trial.environment(**changes)
        for name in CHOICES:
            if name not in changes:
                environment.pop(name, None)
        return environment

    def start(self, environment, *arguments):
        process = subprocess.Popen(self.trial.command("--auto-start", "NO", *arguments), env=environment, text=True,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def start_busy(self, environment):
        self.services.image.faults.hang = True
        process = self.start(environment)
        self.assertTrue(self.services.log.wait_for_step("23.21", 30))
        return process

    def silent_socket(self, name):
        """The path of a socket that takes connections and never says anything."""
        path = self.folder / name
        listener = socket.socket(socket.AF_UNIX)
        self.addCleanup(listener.close)
        listener.bind(str(path))
        listener.listen()
        return path

    def expect_lost_display(self, process):
        self.assertEqual(process.wait(30), 1)
        lines = process.stderr.read().splitlines()
        self.assertEqual(["The connection to the display is lost." in line for line in lines].count(True), 1, lines)
        self.assertIn("The connection to the display is lost.", lines[-1])
        self.assert_nothing_left()


class UnusableDisplays(DisplayCase):
    def test_the_console_takes_over_with_one_line(self):
        rows = {
            "stale X": ({"DISPLAY": ":4711"}, "the X display \":4711\" cannot be reached"),
            "stale Wayland": ({"WAYLAND_DISPLAY": "wayland-4711"},
                              "the Wayland display \"wayland-4711\" cannot be reached"),
            "both": ({"DISPLAY": ":4711", "WAYLAND_DISPLAY": "wayland-4711"}, "and the X display"),
            "chosen by name": ({"DISPLAY": ":4711", "QT_QPA_PLATFORM": "xcb"}, "the X display"),
        }
        for name, (variables, line) in rows.items():
            with self.subTest(name):
                run = self.expect_run(INSTALLED, "--auto-start", "NO", environment=self.environment(**variables))
                self.assertEqual(run.stderr.count("No window, as "), 1)
                self.assertIn(line, run.stderr)
                shutil.rmtree(self.trial.application)

    def test_a_display_that_never_answers_holds_nothing(self):
        display = str(self.silent_socket("display"))
        rows = {"X": {"DISPLAY": display}, "Wayland": {"WAYLAND_DISPLAY": display}}
        for kind, variables in rows.items():
            with self.subTest(kind):
                run = self.expect_run(INSTALLED, "--auto-start", "NO", environment=self.environment(**variables))
                self.assertIn(f"No window, as the {kind} display \"{display}\" cannot be reached", run.stderr)
                shutil.rmtree(self.trial.application)

    def test_help_needs_no_display(self):
        run = self.trial.run("--help", environment=self.environment(DISPLAY=":4711"))
        self.assertEqual(run.returncode, 0)
        self.assertIn("--auto-start [YES/NO]", run.stderr)
        self.assertNotIn("No window", run.stderr)

    def test_a_bus_that_never_answers_holds_nothing(self):
        path = self.silent_socket("bus")
        run = self.expect_run(INSTALLED, "--auto-start", "NO",
                              environment=self.environment(DBUS_SESSION_BUS_ADDRESS=f"unix:path={path}"))
        self.assertEqual(run.stderr.count("message bus does not answer"), 1)


@unittest.skipIf(missing_tools(), f"needs {', '.join(missing_tools())}")
class XDisplays(DisplayCase):
    def test_a_display_that_goes_away_leaves_nothing_behind(self):
        desktop = Desktop().__enter__()
        try:
            process = self.start_busy(self.environment(DISPLAY=desktop.display))
            desktop.wait_for_windows(process.pid, 1)
        finally:
            desktop.__exit__()
        self.expect_lost_display(process)

    def test_the_window_comes_up_although_a_bus_never_answers(self):
        address = f"unix:path={self.silent_socket('bus')}"
        desktop = self.enter(Desktop())
        for variable in ("DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS"):
            with self.subTest(variable):
                process = self.start_busy(self.environment(DISPLAY=desktop.display,
                                                           QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", **{variable: address}))
                desktop.wait_for_windows(process.pid, 1)
                self.assertIsNone(process.poll())
                process.kill()
                process.wait()
                self.assertIn("does not answer; going on without it.", process.stderr.read())

    def test_texts_are_english_where_no_font_has_the_letters(self):
        fonts = self.folder / "fonts.conf"
        fonts.write_text(f"<fontconfig><dir>{self.folder}/none</dir><cachedir>{self.folder}/cache</cachedir></fontconfig>")
        desktop = self.enter(Desktop())
        process = self.start_busy(self.environment(DISPLAY=desktop.display, LC_ALL="ja_JP.UTF-8",
                                                   FONTCONFIG_FILE=str(fonts)))
        window = desktop.wait_for_windows(process.pid, 1)[0]
        title = subprocess.run(["xdotool", "getwindowname", window], env={**os.environ, "DISPLAY": desktop.display},
                               capture_output=True, text=True, timeout=30).stdout.strip()
        self.assertEqual(title, "Tolvix Installer")

    def test_help_maps_no_window(self):
        with VirtualDisplay() as display, WindowWatch(display.display) as watch:
            run = self.trial.run("--help", environment=self.environment(DISPLAY=display.display))
            self.assertEqual(run.returncode, 0)
            with self.assertRaises(TimeoutError):
                watch.wait_for_window(0.1)


@unittest.skipIf(shutil.which("weston") is None, "needs weston")
class WaylandDisplays(DisplayCase):
    def setUp(self):
        super().setUp()
        self.runtime = self.folder / "wayland"
        self.runtime.mkdir(mode=0o700)
        self.log = self.folder / "weston.log"
        self.compositor = subprocess.Popen(
            ["weston", "--backend=headless-backend.so", "--socket=wayland-test", "--idle-time=0", f"--log={self.log}"],
            env={**os.environ, "XDG_RUNTIME_DIR": str(self.runtime)}, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(self.end_compositor)
        wait_until(self.compositor_listens, "the compositor")

    def compositor_listens(self):
        with socket.socket(socket.AF_UNIX) as client:
            return client.connect_ex(str(self.runtime / "wayland-test")) == 0

    def end_compositor(self):
        self.compositor.terminate()
        self.compositor.wait()

    def environment(self, **changes):
        return super().environment(WAYLAND_DISPLAY="wayland-test", XDG_RUNTIME_DIR=str(self.runtime),
                                   **{"WAYLAND_DEBUG": "client", **changes})

    def test_installs_behind_a_window(self):
        process = self.start(self.environment())
        _, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(sorted(self.services.log.steps), sorted(INSTALLED))
        self.assertIn("xdg_toplevel@", errors)
        self.assertIn("set_app_id(\"" + self.trial.information()["CFBundleIdentifier"] + "\")", errors)
        self.assert_nothing_left()

    def test_the_console_takes_over_where_the_plug_in_cannot_be_loaded(self):
        (self.folder / "libQt6WaylandClient.so.6").touch()
        run = self.expect_run(INSTALLED, "--auto-start", "NO",
                              environment=self.environment(LD_LIBRARY_PATH=str(self.folder)))
        self.assertIn("No window, as Qt's plug-in for Wayland displays is missing", run.stderr)

    def test_a_compositor_that_goes_away_leaves_nothing_behind(self):
        process = self.start_busy(self.environment(WAYLAND_DEBUG=None))
        self.end_compositor()
        self.expect_lost_display(process)
