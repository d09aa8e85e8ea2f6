#!/usr/bin/env python3
"""Takes the pictures of the introduction: the installer's own window at work, in the frame of a real window manager.

Usage: tools/window_pictures.py FOLDER. Needs Xvfb, xfwm4, dbus-run-session, xdotool, xprop, xwininfo, and the
release build with its `screenshots` program.
"""
from __future__ import annotations

import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import Callable, List

sys.path.insert(0, str(Path(__file__).resolve().parent))
from diskimage.build import make_image  # noqa: E402
from sample_product import make_sample_product  # noqa: E402
from services import LocalServices  # noqa: E402
from trial import REPOSITORY, Trial  # noqa: E402
from virtual_display import VirtualDisplay  # noqa: E402

GRABBER = REPOSITORY / "build" / "release" / "tools" / "pictures" / "screenshots"
TOOLS = ("Xvfb", "xfwm4", "dbus-run-session", "xdotool", "xprop", "xwininfo")
BYTES_PER_SECOND = 4 << 20


def wait_for(value: Callable[[], object], seconds: float = 30):
    """The first value that is not empty. Raises TimeoutError."""
    deadline = time.monotonic() + seconds
    while not (found := value()):
        if time.monotonic() > deadline:
            raise TimeoutError("nothing to take a picture of")
        time.sleep(0.1)
    return found


class Photographer:
    """Takes pictures of windows on one display."""

    def __init__(self, display: str):
        self._environment = {**os.environ, "DISPLAY": display, "QT_QPA_PLATFORM": "xcb"}

    def ask(self, *words: str) -> str:
        """What a program prints; nothing when it fails."""
        run = subprocess.run(words, env=self._environment, capture_output=True, text=True, timeout=30)
        return run.stdout if run.returncode == 0 else ""

    def window(self, process: int) -> str:
        """The process's window, once it has its frame."""
        window = wait_for(lambda: self.ask("xdotool", "search", "--onlyvisible", "--pid", str(process), "--name", "Tolvix"))
        window = window.split()[0]
        wait_for(lambda: self._frame(window))
        return window

    def take(self, window: str, file: Path) -> None:
        """Saves the window as it is on screen, with its frame."""
        left, right, top, bottom = self._frame(window)
        facts = self.ask("xwininfo", "-id", window)
        x, y, width, height = (int(re.search(rf"{fact}: +(-?\d+)", facts).group(1))
                               for fact in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
        part = (x - left, y - top, width + left + right, height + top + bottom)
        subprocess.run([str(GRABBER), "--grab", str(file), *map(str, part)], env=self._environment, check=True)

    def _frame(self, window: str) -> List[int]:
        widths = re.search(r"= ([\d, ]+)", self.ask("xprop", "-id", window, "_NET_FRAME_EXTENTS"))
        return [int(width) for width in widths.group(1).split(",")] if widths else []


def take_all(photographer: Photographer, environment, services, trial: Trial, folder: Path) -> None:
    services.image.faults.bytes_per_second = BYTES_PER_SECOND
    process = subprocess.Popen(trial.command("--auto-start", "NO"), env=trial.environment(**environment),
                               stderr=subprocess.DEVNULL)
    try:
        window = photographer.window(process.pid)
        time.sleep(2)
        photographer.take(window, folder / "window.png")
        photographer.ask("xdotool", "windowactivate", "--sync", window)
        photographer.ask("xdotool", "key", "--clearmodifiers", "ctrl+q")
        time.sleep(1)
        photographer.take(window, folder / "alert.png")
    finally:
        process.kill()
        process.wait()


def main() -> int:
    missing = [tool for tool in TOOLS if shutil.which(tool) is None] + ([] if GRABBER.exists() else [GRABBER.name])
    if len(sys.argv) != 2 or missing:
        print(__doc__ + (f"\nmissing: {', '.join(missing)}" if missing else ""), file=sys.stderr)
        return 2
    folder = Path(sys.argv[1]).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as work, VirtualDisplay() as display:
        volume, image = Path(work, "volume"), Path(work, "Tolvix.dmg")
        make_sample_product(volume, payload_files=64, payload_bytes=1 << 20)
        make_image(str(volume), str(image), "Tolvix")
        environment = {"DISPLAY": display.display, "QT_QPA_PLATFORM": "xcb"}
        manager = subprocess.Popen(["dbus-run-session", "--", "xfwm4", "--compositor=off"], env={**os.environ, **environment},
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            with LocalServices(str(image)) as services, Trial(Path(work, "trial")) as trial:
                trial.use_services(services)
                take_all(Photographer(display.display), environment, services, trial, folder)
        finally:
            manager.terminate()
            manager.wait()
    return 0


if __name__ == "__main__":
    sys.exit(main())
