#!/usr/bin/env python3
"""Checks who may include whom: the core uses the standard library alone, and each folder only the rooms below it."""
import re
import sys
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*([<"])([^>"]+)[>"]', re.MULTILINE)

STANDARD = set("""
algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore
set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view strstream
syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
variant vector version
""".split())

# System headers by the corner that may use them; the standard library is everybody's.
POSIX = re.compile(r"(dirent|dlfcn|fcntl|poll|pthread|pwd|signal|termios|unistd|strings"
                   r"|sys/(file|ioctl|mman|resource|socket|stat|statvfs|time|types|uio|un|utsname|wait|xattr))\.h")
LINUX = re.compile(r"(sched|linux/.+|sys/(eventfd|prctl|random|syscall|sysmacros|inotify|mount|vfs))\.h")
QT = re.compile(r"(Qt[A-Z]\w*/)?Q[A-Za-z]\w*|qpa/.+|private/q.+|ui_\w+\.h")
WIDGETS = re.compile(r"(Qt(Gui|Widgets)/)?Q(Application|GuiApplication|Widget|Main|Dialog|Message|Push|Label|Progress"
                     r"|Layout|VBox|HBox|Grid|Style|Window|Screen|Palette|Icon|Pixmap|Image|Painter|Font|Accessible|Gui"
                     r"|tWidgets|tGui|Scroll|Frame|Action|Shortcut).*|ui_.*")
CURL = re.compile(r"curl/.+")
DISPLAYS = re.compile(r"(xcb|X11|fontconfig)/.+|wayland-.+")
COCOA = re.compile(r"(AppKit|Foundation|CoreFoundation|Cocoa)/.+|objc/.+|Block\.h|TargetConditionals\.h")
DARWIN = re.compile(r"(Security|CoreFoundation|mach|mach-o)/.+|(copyfile|crt_externs|libproc|TargetConditionals)\.h"
                    r"|sys/(attr|clonefile|mount|param|event|stdio)\.h")

# Folder: the rooms it may use besides its own, and the system headers.
CORE = ("foundation", "platform")
ROOMS = {
    "foundation": ((), ()),
    "flow": (("foundation",), ()),
    "telemetry": ((*CORE, "flow"), ()),
    "ui": (CORE, ()),
    "check": ((*CORE, "flow", "telemetry"), ()),
    "download": ((*CORE, "flow"), ()),
    "install": ((*CORE, "flow", "telemetry"), ()),
    "app": ((*CORE, "flow", "telemetry", "ui", "check", "download", "install"), ()),
    "platform": (("foundation",), ()),
    "platform/posix": (CORE, (POSIX,)),
    "platform/transfers": ((*CORE, "platform/posix"), (POSIX,)),
    "platform/linux": ((*CORE, "platform/posix"), (POSIX, LINUX)),
    "platform/linux/hdiutil": ((*CORE, "platform/posix", "platform/linux"), (POSIX, LINUX)),
    "platform/curl": ((*CORE, "platform/posix", "platform/transfers"), (POSIX, CURL)),
    "platform/qtcore": ((*CORE, "platform/posix", "platform/linux"), (POSIX, LINUX, QT)),
    "platform/qt": ((*CORE, "platform/posix", "platform/qtcore"), (POSIX, QT, WIDGETS, DISPLAYS)),
    "platform/console": ((*CORE, "platform/posix", "platform/linux", "platform/qtcore"), (POSIX, QT)),
    "platform/macos": ((*CORE, "platform/posix"), (POSIX, DARWIN)),
    "platform/cocoa": ((*CORE, "platform/posix", "platform/transfers"), (POSIX, COCOA)),
}
# The one file of each system that knows all its corners.
COMPOSITIONS = {"platform/linux/LinuxSystem.cpp", "platform/macos/MacSystem.mm"}


def fault(path, kind, name):
    """Why the file may not include the header, or None."""
    folder = path.parent.as_posix()
    rooms, headers = ROOMS[folder]
    if kind == "<":
        if name in STANDARD:
            return None
        if WIDGETS.fullmatch(name) and WIDGETS not in headers:
            return "widgets stay in platform/qt"
        allowed = any(pattern.fullmatch(name) for pattern in headers) or path.as_posix() in COMPOSITIONS
        return None if allowed else f"{folder} does not use this library or system header"
    target = Path(name).parent.as_posix()
    if target in (folder, *rooms) or QT.fullmatch(name) and QT in headers or name.endswith(".moc"):
        return None
    if path.as_posix() in COMPOSITIONS and target.startswith("platform/"):
        return None
    # The categories of a class lie with what they are about.
    owner, _, category = path.stem.partition("+")
    if category and Path(name).stem == owner:
        return None
    return f"{folder} does not use {target}"


def main():
    sources = [path.relative_to(REPOSITORY) for top in sorted({room.split("/")[0] for room in ROOMS})
               for path in sorted((REPOSITORY / top).rglob("*")) if path.suffix in (".h", ".cpp", ".mm", ".m")]
    faults = 0
    for path in sources:
        if path.parent.as_posix() not in ROOMS:
            faults += 1
            print(f"{path}: in no known folder")
            continue
        for kind, name in INCLUDE.findall((REPOSITORY / path).read_text(encoding="utf-8")):
            reason = fault(path, kind, name)
            if reason:
                faults += 1
                print(f"{path}: includes {name}: {reason}")
    print(f"{len(sources)} files, {faults} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
