"""A table of faults over the real program: what is broken, which steps are posted, what the console says.

Every row gets a sandbox of its own. Whatever happens, the program ends by itself, with status 0, within the time
limit, posts the ordered steps of its outcome, leaves nothing in the temporary folder, and reports as installed only
what is the product of the image, file by file.
"""
from __future__ import annotations

import subprocess
import tempfile
from dataclasses import dataclass, field
from pathlib import Path
from typing import Callable, Dict, List, Optional

from tests.functional.installer_case import (BUNDLE, CHECKED, DOWNLOADED, IDENTIFIER, INSTALLED, STARTED, InstallerCase,
                                             make_image, make_sample_product)
from tests.tools.trees import tree, without_times

from services import Faults
from trial import Trial

OUTCOMES = {
    "installed": INSTALLED,
    "check": [*STARTED, "23.13"],
    "download": [*CHECKED, "23.23", "23.43"],
    "install": [*DOWNLOADED, "23.33", "23.43"],
    "launch": [*DOWNLOADED, "23.34"],
    "nothing": [],
}
LINES = {
    "check": "Check did fail with error: ",
    "download": "Download did fail with error: ",
    "install": "Install did fail with error: ",
    "launch": "Launch did fail with error: ",
}
# The alert on the console: its title, and the buttons in order.
ALERTS = {
    "check": ["The latest version of Tolvix couldn’t be found", "[1] Quit"],
    "download": ["Tolvix couldn’t be downloaded", "[1] Download Manually", "[2] "],
    "install": ["Tolvix couldn’t be installed", "[1] Download Manually", "[2] "],
}


@dataclass
class Start:
    """How a row's program is started; a row's preparation may change it."""

    environment: Dict[str, Optional[str]] = field(default_factory=dict)
    arguments: List[str] = field(default_factory=lambda: ["--auto-start", "NO"])
    wrapper: List[str] = field(default_factory=list)


@dataclass
class Row:
    name: str
    prepare: Callable[["FaultRows", Start], object]
    outcome: str
    console: str = ""
    after: Optional[Callable[["FaultRows", subprocess.CompletedProcess], object]] = None


class FaultRows(InstallerCase):
    """Runs tables of rows."""

    timeout = 60

    def begin_row(self, number: int) -> None:
        for service in (self.services.binaries, self.services.image, self.services.log):
            service.faults = Faults()
            service.accept_connections()
            service.requests.clear()
        self.services.binaries.body = None
        self.services.binaries.download_url = f"https://{self.services.image.host}/Tolvix.dmg"
        self.services.log.events.clear()
        self.trial = Trial(self.folder / f"row-{number}", BUNDLE, self.installer_folder)
        self.trial.use_services(self.services)
        self.image.write_bytes(self.original_image)
        self.show_events()

    def settings_file(self) -> Path:
        return self.trial.home / ".config" / f"{self.trial.information()['TXAgentPreferencesDomain']}.conf"

    def run_rows(self, rows: List[Row]) -> None:
        self.original_image = self.image.read_bytes()
        self.product = self.product_tree()
        for number, row in enumerate(rows):
            with self.subTest(row.name):
                self.begin_row(number)
                self.run_row(row)

    def product_tree(self) -> dict:
        with tempfile.TemporaryDirectory() as folder:
            make_sample_product(Path(folder, "volume"), identifier=IDENTIFIER)
            return without_times(tree(Path(folder, "volume", "Tolvix.app")))

    def run_row(self, row: Row) -> None:
        start = Start()
        with self.trial:
            row.prepare(self, start)
            run = subprocess.run([*start.wrapper, *self.trial.command(*start.arguments)], stdin=subprocess.DEVNULL,
                                 env=self.trial.environment(**start.environment), capture_output=True, text=True,
                                 errors="replace", timeout=self.timeout)
            said = f"{run.stderr}\n{run.stdout}"
            self.assertEqual(run.returncode, 0, said)
            self.assertEqual(self.posted_steps(run), OUTCOMES[row.outcome], said)
            for line in filter(None, (row.console, LINES.get(row.outcome))):
                self.assertRegex(run.stderr, line)
            self.expect_alert(ALERTS.get(row.outcome, []), run.stdout)
            self.assertEqual(self.trial.leftovers(), [], said)
            self.assertEqual(list(self.trial.folder.glob("*.dmg")), [])
            if row.outcome == "installed":
                self.assertEqual(without_times(tree(self.trial.application)), self.product)
            if row.after is not None:
                row.after(self, run)


    def expect_alert(self, parts: List[str], shown: str) -> None:
        for part in parts:
            self.assertIn(part, shown)
        self.assertNotIn(f"[{max(len(parts), 1)}] ", shown)


def faults(service: str, **values) -> Callable[[FaultRows, Start], None]:
    """A preparation: the service has these faults."""
    return lambda case, _: setattr(getattr(case.services, service), "faults", Faults(**values))


def answer(body) -> Callable[[FaultRows, Start], None]:
    """A preparation: the check is answered with this."""
    return lambda case, _: setattr(case.services.binaries, "body", body)


def image_at(url: str) -> Callable[[FaultRows, Start], None]:
    """A preparation: the image is said to be there; {host} is the image service."""
    return lambda case, _: setattr(case.services.binaries, "download_url", url.format(host=case.services.image.host))


def image_bytes(change: Callable[[bytes], bytes]) -> Callable[[FaultRows, Start], None]:
    """A preparation: the image's bytes are changed."""
    return lambda case, _: case.image.write_bytes(change(case.original_image))


def environment(**values: Optional[str]) -> Callable[[FaultRows, Start], None]:
    """A preparation: variables of the environment; {folder} is the row's own folder."""
    def prepare(case: FaultRows, start: Start) -> None:
        start.environment.update({name: value.format(folder=case.trial.folder) if value else value
                                  for name, value in values.items()})
    return prepare


def settings(content: bytes) -> Callable[[FaultRows, Start], None]:
    """A preparation: the settings file holds this before the run; events are still printed."""
    return lambda case, _: case.settings_file().write_bytes(content)


def shell(script: str) -> Callable[[FaultRows, Start], None]:
    """A preparation: the program is started by this shell script, as "$@"."""
    return lambda _, start: start.wrapper.extend(["sh", "-c", script, "sh"])


def starter(program: str) -> Callable[[FaultRows, Start], None]:
    """A preparation: the program is started by this Python program, whose arguments it is."""
    return lambda _, start: start.wrapper.extend(["python3", "-c", program])


def both(*preparations) -> Callable[[FaultRows, Start], None]:
    """A preparation made of several."""
    def prepare(case: FaultRows, start: Start) -> None:
        for preparation in preparations:
            preparation(case, start)
    return prepare


def in_sandbox(change: Callable[[Trial], object]) -> Callable[[FaultRows, Start], None]:
    """A preparation: something in the sandbox is changed."""
    return lambda case, _: change(case.trial)


def small_disk(size: str) -> Callable[[FaultRows, Start], None]:
    """A preparation: the temporary folder is a file system of its own of that size. Its rows end the table: where it
    cannot be made, they are skipped."""
    return lambda case, _: case.use_small_disk(size)


def old_product(make: Callable[[Path], object]) -> Callable[[FaultRows, Start], None]:
    """A preparation: this stands where the product goes."""
    return lambda case, _: make(case.trial.application)


def volume(change):
    """A preparation: the image is made of a volume with the sample product, changed by this."""
    def prepare(case, _):
        folder = case.trial.folder / "volume"
        make_sample_product(folder, identifier=IDENTIFIER)
        change(folder)
        make_image(str(folder), str(case.image), "Tolvix")
    return prepare


def executable(change):
    """A preparation: the product is started at the end, its executable changed by this, and nothing can show it."""
    def prepare(case, start):
        volume(lambda folder: change(folder / "Tolvix.app" / "Contents" / "MacOS" / "Tolvix"))(case, start)
        start.arguments.clear()
        empty = case.trial.folder / "empty"
        empty.mkdir()
        start.environment.update(PATH=str(empty), DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
    return prepare
