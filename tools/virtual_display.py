"""A display without a monitor."""
from __future__ import annotations

import os
import subprocess


class VirtualDisplay:
    """Runs while the `with` block does; `display` is its name. Raises OSError where there is no Xvfb."""

    def __enter__(self):
        reading, writing = os.pipe()
        self._server = subprocess.Popen(["Xvfb", "-noreset", "-displayfd", str(writing), "-screen", "0", "1280x800x24"],
                                        pass_fds=[writing], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as numbers:
            self.display = ":" + numbers.readline().strip()
        return self

    def __exit__(self, *_) -> None:
        self._server.terminate()
        self._server.wait()
