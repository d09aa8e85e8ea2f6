"""Side-by-side measurements: what is taken in turn, round by round, is compared round by round."""
from __future__ import annotations

import os
import statistics
import subprocess
import time
from pathlib import Path

BENCH = Path(__file__).resolve().parent.parent / "build" / "bench"
TOOLS = BENCH.parent / "release" / "tools" / "bench"


def measure(command, environment=None):
    """Runs the command; its seconds and its peak memory in MB. Raises CalledProcessError."""
    # A small program in between: a process's peak counts from before it was what it is, and this one is large.
    record = BENCH / "peak"
    os.sync()  # what an earlier command has written is not to be waited for by this one
    start = time.monotonic()
    subprocess.run(["/usr/bin/time", "-f", "%M", "-o", str(record), *command], env=environment, check=True,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.monotonic() - start, int(record.read_text()) / 1024


def side_by_side(names, ours, theirs, rounds, digits=3):
    """Prints the medians of two measurements, taken in turn, and the median of their ratios.

    `names` are those of the figures that both return, with their units: {"download | curl": "s", …}.
    """
    ours()
    theirs()
    pairs = [(ours(), theirs()) for _ in range(rounds)]
    for figure, (name, unit) in enumerate(names.items()):
        mine, other = ([pair[side][figure] for pair in pairs] for side in (0, 1))
        ratio = statistics.median(a / b for a, b in zip(mine, other))
        print(f"{name:34}  {statistics.median(mine):9.{digits}f} {unit:2}"
              f"  {statistics.median(other):9.{digits}f} {unit:2}  ratio {ratio:5.2f}", flush=True)
