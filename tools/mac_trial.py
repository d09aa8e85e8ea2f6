#!/usr/bin/env python3
"""Runs the built bundle on a Mac, away from the person's own applications, and takes pictures of what it shows.

First an installation from an image beside the installer; with --trust another one by download, for which the person is
asked to trust the local services' certificate for the time of the run; then pictures of the window and of an alert. Nothing
is started at the end, as the system would start it in the person's own home. Ends with 0 if all went as it should.
"""
import argparse
import filecmp
import os
import plistlib
import shutil
import socket
import subprocess
import sys
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from diskimage.build import make_image  # noqa: E402
from sample_product import make_sample_product  # noqa: E402
from services import LocalServices  # noqa: E402
from trial import Trial  # noqa: E402

EVENTS = ["23.01", "23.11", "23.12", "23.21", "23.22", "23.31", "23.32"]
KEYCHAIN = Path.home() / "Library" / "Keychains" / "login.keychain-db"
LOOKS = {"light": (), "dark": ("-AppleInterfaceStyle", "Dark"), "arabic": ("-AppleLanguages", "(ar)")}
ON_MAC = sys.platform == "darwin"


def differences(comparison):
    """What differs between two folders, and in the folders within them."""
    for name in (*comparison.left_only, *comparison.right_only, *comparison.diff_files, *comparison.funny_files):
        yield os.path.join(comparison.right, name)
    for below in comparison.subdirs.values():
        yield from differences(below)


def judge(trial, run, product):
    """What went wrong in a run, a line each."""
    if run.returncode != 0:
        yield f"it ended with status {run.returncode}: {run.stderr}"
    elif not trial.application.is_dir():
        yield "nothing was installed"
    else:
        yield from (f"not as in the image: {name}" for name in differences(filecmp.dircmp(product, trial.application)))
    yield from (f"left over: {name}" for name in trial.leftovers())
    if ON_MAC and str(trial.folder) in subprocess.run(["hdiutil", "info"], capture_output=True, text=True).stdout:
        yield "an image is still attached"


def install_from_beside(bundle, work, image, product):
    """An image in a folder named after the build version is taken without a question to a service."""
    version = plistlib.loads((bundle / "Contents" / "Info.plist").read_bytes())["CFBundleVersion"]
    with Trial(work / "beside", bundle, version) as trial:
        trial.set_information(TXInstallerLogHost="127.0.0.1:1")
        shutil.copy(image, trial.installer.parent / "Tolvix.dmg")
        yield from judge(trial, trial.run("--auto-start", "NO"), product)


@contextmanager
def trusted(certificate):
    """On a Mac the keychain decides, and the person has to agree; elsewhere a variable of the trial does."""
    if ON_MAC:
        subprocess.run(["security", "add-trusted-cert", "-r", "trustRoot", "-p", "ssl", "-k", str(KEYCHAIN), certificate],
                       check=True)
    try:
        yield
    finally:
        if ON_MAC:
            subprocess.run(["security", "remove-trusted-cert", certificate], check=True)


def install_by_download(bundle, work, image, product):
    with LocalServices(str(image)) as services, trusted(services.certificate), Trial(work / "download", bundle) as trial:
        trial.use_services(services)
        yield from judge(trial, trial.run("--auto-start", "NO"), product)
        if sorted(services.log.steps) != EVENTS:
            yield f"other events than expected: {services.log.steps}"


def take_pictures(bundle, work, pictures):
    """The window while a service is silent, and the alert when there is none, in each look; the person judges them."""
    pictures.mkdir(parents=True, exist_ok=True)
    with socket.create_server(("127.0.0.1", 0)) as silent:
        hosts = {"window": f"127.0.0.1:{silent.getsockname()[1]}", "alert": "127.0.0.1:1"}
        for (subject, host), (look, options) in ((one, other) for one in hosts.items() for other in LOOKS.items()):
            with Trial(work / f"{subject}-{look}", bundle) as trial:
                trial.set_information(TXBinariesHost=host, TXInstallerLogHost="127.0.0.1:1")
                process = subprocess.Popen(trial.command(*options), env=trial.environment(), stderr=subprocess.DEVNULL)
                try:
                    time.sleep(3)  # until it stands there; nothing tells
                    picture = pictures / f"{subject}-{look}.png"
                    if subprocess.run(["screencapture", "-x", str(picture)]).returncode != 0:
                        yield f"no picture of the {subject}, {look}"
                finally:
                    process.kill()
                    process.wait()


def main():
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False)
    parser.add_argument("bundle", type=Path, help="the built bundle")
    parser.add_argument("pictures", type=Path, help="the folder for the pictures")
    parser.add_argument("--trust", action="store_true", help="download as well")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="tolvix-trial-") as folder:
        work = Path(folder)
        image, volume = work / "Tolvix.dmg", work / "volume"
        make_sample_product(volume)
        make_image(str(volume), str(image), "Tolvix")
        trials = {"installs the image beside it": install_from_beside}
        if options.trust or not ON_MAC:
            trials["installs by download"] = install_by_download
        failures = {name: list(trial(options.bundle, work, image, volume / "Tolvix.app")) for name, trial in trials.items()}
        if ON_MAC:
            failures["is shown"] = list(take_pictures(options.bundle, work, options.pictures))
    for name, found in failures.items():
        print(f"{'FAILED' if found else 'ok':7} {name}", *found, sep="\n        ")
    return 1 if any(failures.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
