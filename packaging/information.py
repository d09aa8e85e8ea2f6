#!/usr/bin/env python3
"""Prints the value of a key of a bundle's Info.plist: packaging/information.py BUNDLE KEY."""
import plistlib
import sys
from pathlib import Path

try:
    print(plistlib.loads(Path(sys.argv[1], "Contents", "Info.plist").read_bytes())[sys.argv[2]])
except (OSError, KeyError, plistlib.InvalidFileException) as error:
    sys.exit(f"{sys.argv[1]}: {error!r}")
