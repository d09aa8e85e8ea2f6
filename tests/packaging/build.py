"""Where the build under test is, and what its bundle says of itself."""
import os
import plistlib
import re
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("TOLVIX_BUILD", REPOSITORY / "build" / "release"))
PACKAGED = BUILD / "packaged"


_CACHE = (BUILD / "CMakeCache.txt").read_text()
BUNDLE_NAME = re.search(r"^CFBundleName:\w+=(.*)$", _CACHE, re.MULTILINE)[1] + ".app"
INFORMATION = plistlib.loads((BUILD / BUNDLE_NAME / "Contents" / "Info.plist").read_bytes())
IDENTIFIER = INFORMATION["CFBundleIdentifier"]
