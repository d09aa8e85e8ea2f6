#!/usr/bin/env python3
"""Checks who may include whom: the core keeps to itself, libraries stay in their own corner of platform/."""
import re
import sys
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parent.parent
CORE = ("app", "ui", "check", "download", "install", "telemetry")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)
# The standard library's headers have no ending; these belong to the C library.
C_HEADERS = re.compile(r"(sys|linux|arpa|netinet|net)/.*|[a-z0-9_]+\.h")
WIDGETS = re.compile(r"Q(Application|Widget|Main|Dialog|Message|Push|Label|Progress|Layout|VBox|HBox|Grid|Style|Window|Screen"
                     r"|Palette|Icon|Pixmap|Image|Painter|Font|Accessible|Gui|tWidgets|tGui).*|ui_.*")


def fault(path, kind, name):
    """Why the file may not include the header, or None."""
    folder = path.parts[0]
    first = name.split("/")[0]
    is_system = kind == "<"
    if path == Path("app/main.cpp"):
        return None
    if folder == "foundation":
        allowed = not is_system and first == "foundation" or is_system and not C_HEADERS.fullmatch(name)
        return None if allowed and not name.startswith("Q") else "foundation uses the standard library alone"
    if folder in CORE or path.match("platform/*.h") and len(path.parts) == 2:
        if is_system:
            bad = C_HEADERS.fullmatch(name) or name.startswith(("Q", "curl/"))
            return "the core uses the standard library alone" if bad else None
        own = first == "foundation" or re.fullmatch(r"platform/[A-Za-z]+\.h", name)
        return None if own or (folder in CORE and first in CORE) else "not for the core"
    if folder == "platform":
        corner = path.parts[1]
        if first in CORE:
            return "platform services know nothing of the core"
        if WIDGETS.fullmatch(name) and corner != "qt":
            return "widgets stay in platform/qt"
        if is_system and name.startswith("Q") and corner not in ("qt", "qtcore", "console"):
            return "Qt stays in platform/qt, qtcore and console"
        if name.startswith("curl/") and corner != "curl":
            return "curl stays in platform/curl"
    return None


def main():
    faults = 0
    sources = [path for folder in (*CORE, "foundation", "platform") for path in (REPOSITORY / folder).rglob("*")
               if path.suffix in (".h", ".cpp")]
    for path in sorted(sources):
        for kind, name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            reason = fault(path.relative_to(REPOSITORY), kind, name)
            if reason:
                faults += 1
                print(f"{path.relative_to(REPOSITORY)}: includes {name}: {reason}")
    print(f"{len(sources)} files, {faults} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
