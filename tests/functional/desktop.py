"""A desktop without a monitor for the functional tests: a display, a window manager, keys and clicks."""
from __future__ import annotations

import os
import shutil
import signal
import subprocess
import time
from typing import Callable, List

from tests.functional.installer_case import VirtualDisplay

TOOLS = ("Xvfb", "openbox", "xdotool")


def missing_tools() -> List[str]:
    """The programs that a desktop needs and this machine lacks."""
    return [tool for tool in TOOLS if shutil.which(tool) is None]


def wait_until(holds: Callable[[], object], what: str, seconds: float = 20) -> None:
    """Waits until the condition holds. Raises TimeoutError."""
    deadline = time.monotonic() + seconds
    while not holds():
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited for {what}")
        time.sleep(0.02)


class Desktop(VirtualDisplay):
    """Runs while the `with` block does; `display` is its name."""

    def __enter__(self) -> Desktop:
        super().__enter__()
        # Started again when it crashes, as it can when windows come and go quickly.
        self._manager = subprocess.Popen(["sh", "-c", "while :; do openbox; sleep 0.1; done"], start_new_session=True,
                                         env=self._environment(), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                         stderr=subprocess.DEVNULL)
        wait_until(lambda: self._ask("get_num_desktops") is not None, "the window manager")
        return self

    def __exit__(self, *_) -> None:
        os.killpg(self._manager.pid, signal.SIGKILL)
        self._manager.wait()
        super().__exit__()

    def windows(self, process: int) -> List[str]:
        """The process's windows that are on screen."""
        found = self._ask("search", "--onlyvisible", "--pid", str(process), "--name", "Tolvix")
        return found.split() if found else []

    def wait_for_windows(self, process: int, count: int) -> List[str]:
        """Waits until the process shows that many windows."""
        wait_until(lambda: len(self.windows(process)) == count, f"{count} windows")
        return self.windows(process)

    def height(self, window: str) -> int:
        """Of the window's content, in pixels."""
        return int(dict(line.split("=") for line in self._ask("getwindowgeometry", "--shell", window).split())["HEIGHT"])

    def press(self, window: str, key: str) -> None:
        """Presses the key in the window, once that has the keyboard."""
        self._ask("windowactivate", "--sync", window)
        self._ask("key", "--clearmodifiers", key)

    def minimise(self, process: int, window: str) -> None:
        """Waits until the process's only window has left the screen."""
        self._ask("windowminimize", window)
        self.wait_for_windows(process, 0)

    def close(self, window: str) -> None:
        """Lets the window manager close the window, as its close button does."""
        self.press(window, "alt+F4")

    def _environment(self):
        return {**os.environ, "DISPLAY": self.display}

    def _ask(self, *words: str):
        run = subprocess.run(["xdotool", *words], env=self._environment(), capture_output=True, text=True, timeout=30)
        return run.stdout if run.returncode == 0 else None
