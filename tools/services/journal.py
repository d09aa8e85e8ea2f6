"""One clock and one output for all services."""
from __future__ import annotations

import threading
import time
from typing import Optional, TextIO


class Journal:
    """Writes lines that begin with the seconds since the start. Any thread may use it."""

    def __init__(self, output: Optional[TextIO] = None):
        self._output = output
        self._lock = threading.Lock()
        self._start = time.monotonic()

    def now(self) -> float:
        """Seconds since the journal was made."""
        return time.monotonic() - self._start

    def line(self, service: str, text: str) -> None:
        """Writes one line, whatever the text holds; does nothing without an output."""
        if self._output is None:
            return
        with self._lock:
            try:
                print(f"{self.now():9.3f} s  {service:8}  {visible(text)}", file=self._output, flush=True)
            except OSError:
                self._output = None  # nobody reads any more; the services go on


def visible(text: str) -> str:
    """The text with everything that is not printable written as an escape."""
    return "".join(char if char.isprintable() else char.encode("unicode_escape").decode() for char in text)
