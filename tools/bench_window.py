"""The window beside a bare Qt window: how soon it is there, what it takes, and how soon it answers on a busy machine."""
from __future__ import annotations

import contextlib
import os
import shutil
import signal
import subprocess
import time
from pathlib import Path

from measuring import BENCH, TOOLS, measure, side_by_side
from sample_product import make_sample_product
from virtual_display import VirtualDisplay
from window_watch import WindowWatch

_BARE = str(TOOLS / "bare_window")
_BARE_REQUEST = str(TOOLS / "bare_request_window")
_WRITERS = 4


@contextlib.contextmanager
def _shown(command, environment):
    """Starts the command; gives its process, its window and the seconds until that was on screen, and ends it."""
    with WindowWatch(environment["DISPLAY"]) as watch:
        start = time.monotonic()
        process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        try:
            window = watch.wait_for_window()
            yield process, window, time.monotonic() - start, watch
        finally:
            process.kill()
            process.wait()


def _peak(process):
    """The process's peak memory so far, in MB."""
    status = Path(f"/proc/{process.pid}/status").read_text()
    return next(int(line.split()[1]) for line in status.splitlines() if line.startswith("VmHWM")) / 1024


def _wait_for_request(service, seconds=30):
    """The journal's time of the first request. Raises TimeoutError."""
    deadline = time.monotonic() + seconds
    while not service.requests:
        if time.monotonic() > deadline:
            raise TimeoutError("no request came")
        time.sleep(0.002)
    return service.requests[0].time


def _figures(other):
    return {f"window | {other}": "s", f"check request | {other}": "s", "  memory": "MB"}


def bench_window(services, trial, rounds):
    """Start-up and memory, beside the bare window and beside one that makes a request over the same library."""
    services.image.faults.hang = True
    url = f"https://{services.binaries.host}/5/binaries/query?format=json"

    def start(command, environment, asks=True):
        services.binaries.requests.clear()
        now = services.binaries.journal.now()
        with _shown(command, environment) as (process, _, seconds, _watch):
            asked = _wait_for_request(services.binaries) - now if asks else seconds
            time.sleep(0.3)
            figures = seconds, asked, _peak(process)
        for leftover in trial.temporary.iterdir():
            shutil.rmtree(leftover)
        return figures

    with VirtualDisplay() as display:
        environment = trial.environment(DISPLAY=display.display)
        side_by_side(_figures("bare window"), lambda: start(trial.command(), environment),
                     lambda: start([_BARE], environment, asks=False), rounds)
        side_by_side(_figures("bare window, request"), lambda: start(trial.command(), environment),
                     lambda: start([_BARE_REQUEST, url], environment), rounds)
    services.image.faults.hang = False


def bench_windowed_run(trial, rounds):
    """Peak memory of a whole run behind a window."""
    with VirtualDisplay() as display:
        environment = trial.environment(DISPLAY=display.display)

        def bare():
            with _shown([_BARE], environment) as (process, _window, _seconds, _watch):
                time.sleep(0.3)
                return (_peak(process),)

        side_by_side({"windowed run's memory | bare window": "MB"},
                     lambda: measure(trial.command("--auto-start", "NO"), environment)[1:], bare, rounds)


@contextlib.contextmanager
def _busy_disk():
    """Writes to the disk as fast as it takes it."""
    script = 'while :; do dd if=/dev/zero of="$1" bs=1M count=400 conv=fsync 2>/dev/null; done'
    writers = [subprocess.Popen(["sh", "-c", script, "sh", str(BENCH / f"written-{number}")], start_new_session=True)
               for number in range(_WRITERS)]
    try:
        time.sleep(1)
        yield
    finally:
        for writer in writers:
            os.killpg(writer.pid, signal.SIGKILL)
            writer.wait()


def _longest_wait(command, environment, seconds):
    """The longest wait for an answer of the command's window in that time, or until it is gone; and the time taken."""
    longest = 0.0
    with _shown(command, environment) as (_, window, _seconds, watch):
        start = time.monotonic()
        while time.monotonic() < start + seconds:
            answer = watch.ping(window)
            if answer is None:
                break
            longest = max(longest, answer)
            time.sleep(0.002)
    return longest, time.monotonic() - start


def bench_answers(trial, rounds):
    """The longest time that the window leaves a question of the window manager without an answer."""
    with VirtualDisplay() as display:
        environment = trial.environment(DISPLAY=display.display)

        taken = 0.0

        def installer(seconds=60.0):
            nonlocal taken
            shutil.rmtree(trial.home)  # so that preferences are written, too
            trial.home.mkdir()
            longest, taken = _longest_wait(trial.command("--auto-start", "NO"), environment, seconds)
            return (longest * 1000,)

        def bare():
            # For as long as the installer before it.
            return (_longest_wait([_BARE], environment, taken)[0] * 1000,)

        side_by_side({"longest wait | bare window": "ms"}, installer, bare, rounds, digits=0)
        with _busy_disk():
            side_by_side({"  busy disk": "ms"}, installer, bare, rounds, digits=0)
        with _stubborn_product(trial):
            side_by_side({"  product that refuses to quit": "ms"}, lambda: installer(5), bare, rounds, digits=0)


@contextlib.contextmanager
def _stubborn_product(trial):
    """A running copy of the product that does not listen when it is asked to quit."""
    volume = BENCH / "stubborn"
    make_sample_product(volume, identifier="example.tolvix.desktop", ignore_term=True)
    shutil.rmtree(trial.application, ignore_errors=True)
    shutil.move(volume / "Tolvix.app", trial.application)
    process = subprocess.Popen([str(trial.application / "Contents" / "MacOS" / "Tolvix")], env=trial.environment())
    try:
        yield
    finally:
        process.kill()
        process.wait()
        for leftover in trial.temporary.iterdir():
            shutil.rmtree(leftover)
