#!/usr/bin/env python3
"""Prints the project's changelog in Debian's form: packaging/debian_changelog.py CHANGELOG.md "NAME <ADDRESS>"."""
import re
import sys
import textwrap
from datetime import datetime, timezone
from email.utils import format_datetime
from pathlib import Path

_HEAD = re.compile(r"## \[([^\]]+)\] - (\d{4}-\d{2}-\d{2})")


def releases(text):
    """Version, date and points of each release, the newest first."""
    parts = _HEAD.split(text)[1:]
    for version, date, body in zip(parts[::3], parts[1::3], parts[2::3]):
        points = re.findall(r"^- (.*(?:\n  .*)*)", body, re.MULTILINE)
        yield version, date, [" ".join(point.split()) for point in points]


def debian_changelog(text, maintainer):
    entries = []
    for version, date, points in releases(text):
        moment = format_datetime(datetime.fromisoformat(date).replace(tzinfo=timezone.utc))
        lines = [textwrap.fill(point, 78, initial_indent="  * ", subsequent_indent="    ") for point in points]
        body = "\n".join(lines)
        entries.append(f"tolvix-installer ({version}) unstable; urgency=medium\n\n{body}\n\n -- {maintainer}  {moment}\n")
    return "\n".join(entries)


if __name__ == "__main__":
    print(debian_changelog(Path(sys.argv[1]).read_text(encoding="utf-8"), sys.argv[2]), end="")
