"""Runs a command on a desktop of its own, with a message bus that has everything that screen readers use."""
import os
import subprocess
import sys

from tests.functional.desktop import Desktop

WAKE_ACCESSIBILITY = "dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress"


def main():
    with Desktop() as desktop:
        environment = {**os.environ, "DISPLAY": desktop.display, "QT_QPA_PLATFORM": "xcb",
                       "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        return subprocess.run(["dbus-run-session", "--", "sh", "-c", WAKE_ACCESSIBILITY + ' >/dev/null && "$@"', "-",
                               *sys.argv[1:]], env=environment, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
