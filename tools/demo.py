#!/usr/bin/env python3
"""Shows the built installer at work: a sample product, the local services, one whole run, and a summary.

Everything happens in build/demo. Ends with 0 only if the product was installed and every expected event arrived.
"""
import argparse
import os
import plistlib
import shutil
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from diskimage.build import make_image  # noqa: E402
from local_services import set_fault  # noqa: E402
from sample_product import make_sample_product  # noqa: E402
from services import LocalServices  # noqa: E402
from trial import BUNDLE, REPOSITORY, Trial  # noqa: E402

DEMO = REPOSITORY / "build" / "demo"
VERSION = "5.1.0"
PAYLOAD_FILES, PAYLOAD_BYTES = 64, 1 << 20
BYTES_PER_SECOND = 16 << 20  # loopback is too fast to watch
EXPECTED = ["23.01", "23.11", "23.12", "23.21", "23.22", "23.31", "23.32"]
STAGES = {"check": ("23.11", "23.12"), "download": ("23.21", "23.22"), "install": ("23.31", "23.32")}


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--fault", action="append", default=[], metavar="SERVICE:NAME[=VALUE]",
                        help="let a local service misbehave; see tools/local_services.py --help")
    parser.add_argument("installer", nargs="*", metavar="-- OPTION", help="options for the installer")
    return parser.parse_args()


def make_product_image(identifier):
    """A compressed image of the sample product; made once, as it is always the same."""
    image = DEMO / "Tolvix.dmg"
    print(f"Packing a sample product into {image.relative_to(REPOSITORY)}", flush=True)
    volume = DEMO / "volume"
    make_sample_product(volume, VERSION, identifier, PAYLOAD_FILES, PAYLOAD_BYTES)
    make_image(volume, image, "Tolvix")
    shutil.rmtree(volume)
    return image


def display_environment():
    """What a window needs of this session; nothing where there is none."""
    authority = os.environ.get("XAUTHORITY") or os.path.join(os.path.expanduser("~"), ".Xauthority")
    return {"DISPLAY": os.environ.get("DISPLAY"), "WAYLAND_DISPLAY": os.environ.get("WAYLAND_DISPLAY"),
            "XAUTHORITY": authority if os.path.exists(authority) else None}


def locale_environment():
    """The person's own language; English with a country where none is set."""
    names = ("LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG")
    own = {name: os.environ.get(name) for name in names}
    named = any(value and value.split(".")[0] not in ("C", "POSIX") for value in own.values())
    return own if named else {"LC_ALL": "en_US.UTF-8"}


def installed_version(trial):
    try:
        return plistlib.loads((trial.application / "Contents" / "Info.plist").read_bytes())["CFBundleVersion"]
    except (OSError, KeyError, plistlib.InvalidFileException):
        return None


def started_product(trial):
    """The line that the sample product writes when it starts, or None if it does not within some seconds."""
    marker = trial.home / ".tolvix-sample" / "started"
    for _ in range(100):
        if marker.exists():
            return marker.read_text().strip()
        time.sleep(0.05)
    return None


def summarize(trial, services, status, wants_start):
    """Prints what happened; whether it was what should happen."""
    steps = services.log.steps
    times = {event.step: event.time for event in services.log.events}
    version = installed_version(trial)
    started = started_product(trial) if wants_start and version else None
    print("\nSummary")
    print(f"  installer   ended with status {status}")
    print(f"  installed   {f'{trial.application}, version {version}' if version else 'nothing'}")
    print(f"  started     {f'process {started}' if started else 'not started'}")
    for stage, (first, last) in STAGES.items():
        if first in times and last in times:
            print(f"  {stage:10}  {times[last] - times[first]:.2f} s")
    missing = [step for step in EXPECTED if step not in steps]
    print(f"  events      {', '.join(steps)}" + (f"; missing: {', '.join(missing)}" if missing else ""))
    # Events travel on connections of their own, so two that are posted together can arrive in either order.
    return status == 0 and version == VERSION and sorted(steps) == EXPECTED and bool(started) == wants_start


def wants_start(words):
    """Whether the installer, given those words, starts the product."""
    if "--auto-start" not in words:
        return True
    following = words[len(words) - words[::-1].index("--auto-start"):][:1]
    return not following or following[0].startswith("--") or following[0] in ("YES", "true", "1")


def main():
    options = parse_arguments()
    shutil.rmtree(DEMO, ignore_errors=True)
    DEMO.mkdir(parents=True)
    identifier = plistlib.loads((BUNDLE / "Contents" / "Info.plist").read_bytes())["TXProductBundleIdentifier"]
    image = make_product_image(identifier)
    with LocalServices(str(image), version=VERSION, output=sys.stdout) as services, Trial(DEMO / "trial") as trial:
        services.image.faults.bytes_per_second = BYTES_PER_SECOND
        for fault in options.fault:
            set_fault(services, fault)
        trial.use_services(services)
        environment = trial.environment(**{"LC_ALL": None, **locale_environment(), **display_environment()})
        print(f"Running the installer in {trial.folder.relative_to(REPOSITORY)}\n", flush=True)
        status = subprocess.run(trial.command(*options.installer), env=environment).returncode
        succeeded = summarize(trial, services, status, wants_start(options.installer))
    return 0 if succeeded else 1


if __name__ == "__main__":
    sys.exit(main())
