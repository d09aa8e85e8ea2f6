"""The folder that becomes a volume: its entries, their names on the volume, their data."""
from __future__ import annotations

import os
import re
import stat
import unicodedata
from collections import deque
from dataclasses import dataclass
from typing import Iterator, List, Optional, Tuple

from .errors import ImageError

ROOT_NUMBER = 2
FIRST_FREE_NUMBER = 16
HFS_EPOCH = 2082844800  # seconds from 1904 to 1970
MAX_HFS_TIME = 0xFFFFFFFF
_MAX_NAME_UNITS = 255
_READ_SIZE = 1 << 18

# HFS+ decomposes by the tables of Unicode 3.2 and leaves these ranges alone.
_DECOMPOSABLE = re.compile("[^\u2000-\u2fff\uf900-\ufaff\U0002f800-\U0002faff]+")


@dataclass
class Entry:
    """One folder, file or link. Times are seconds since 1904, names UTF-16 (big-endian)."""

    source: str
    name: bytes
    mode: int
    time: int
    number: int
    parent: int
    size: int = 0
    target: bytes = b""
    stamp: Optional[Tuple[int, ...]] = None
    children: int = 0
    folders: int = 0

    @property
    def is_folder(self) -> bool:
        return stat.S_ISDIR(self.mode)

    @property
    def is_link(self) -> bool:
        return stat.S_ISLNK(self.mode)


def volume_name(name: str) -> bytes:
    """The name as the volume stores it: decomposed, colon as slash, UTF-16. Raises ImageError."""
    text = _DECOMPOSABLE.sub(lambda part: unicodedata.ucd_3_2_0.normalize("NFD", part[0]), name)
    try:
        units = text.replace(":", "/").encode("utf-16-be")
    except UnicodeEncodeError:
        raise ImageError(f"the name {name!r} is not valid UTF-8") from None
    if len(units) // 2 > _MAX_NAME_UNITS:
        raise ImageError(f"the name {name!r} is too long for the volume")
    return units


def hfs_time(seconds: int) -> int:
    """Seconds since 1970 as the volume counts them, held within its range (1904 to 2040)."""
    return min(max(seconds + HFS_EPOCH, 0), MAX_HFS_TIME)


def scan(folder: str, name: str, fixed_time: Optional[int] = None) -> List[Entry]:
    """All entries of a folder in a fixed order, the folder itself first, named `name`.

    Links are taken as links. Names that the volume cannot hold, special files and unreadable
    folders raise ImageError. `fixed_time` (seconds since 1970) replaces every time.
    """
    try:
        status = os.stat(folder)
        if not stat.S_ISDIR(status.st_mode):
            raise ImageError(f"not a folder: {folder!r}")
        root = _entry(folder, volume_name(name), status, ROOT_NUMBER, 1, fixed_time)
        entries = [root]
        waiting = deque(entries)
        number = FIRST_FREE_NUMBER
        while waiting:
            parent = waiting.popleft()
            for child_name, path in _listing(parent.source):
                child = _entry(path, child_name, os.lstat(path), number, parent.number, fixed_time)
                number += 1
                parent.children += 1
                entries.append(child)
                if child.is_folder:
                    parent.folders += 1
                    waiting.append(child)
    except OSError as error:
        raise ImageError(f"cannot read {error.filename!r}: {error.strerror}") from error
    return entries


def _listing(folder: str) -> List[Tuple[bytes, str]]:
    found = {}
    with os.scandir(folder) as items:
        for item in items:
            name = volume_name(item.name)
            if name in found:
                raise ImageError(f"these have the same name on the volume: {found[name]!r} and {item.path!r}")
            found[name] = item.path
    return sorted(found.items())


def _entry(path: str, name: bytes, status: os.stat_result, number: int, parent: int,
           fixed_time: Optional[int]) -> Entry:
    seconds = int(status.st_mtime) if fixed_time is None else fixed_time
    entry = Entry(path, name, status.st_mode, hfs_time(seconds), number, parent)
    if stat.S_ISREG(status.st_mode):
        entry.size = status.st_size
        entry.stamp = _stamp(status)
    elif entry.is_link:
        entry.mode = stat.S_IFLNK | 0o755  # what a Mac shows; Linux gives every link 0777
        entry.target = os.fsencode(os.readlink(path))
        entry.size = len(entry.target)
    elif not entry.is_folder:
        raise ImageError(f"neither file, folder nor link: {path!r}")
    return entry


def _stamp(status: os.stat_result) -> Tuple[int, ...]:
    return status.st_mode, status.st_dev, status.st_ino, status.st_size, status.st_mtime_ns


def content(entry: Entry) -> Iterator[bytes]:
    """The data of a file or link in blocks, exactly `entry.size` bytes in all.

    Raises ImageError if the file cannot be read or is not the one that was scanned any more.
    """
    if entry.is_link:
        yield entry.target
        return
    try:
        # Not blocking: a pipe that took the file's place must not hold us up.
        file = os.open(entry.source, os.O_RDONLY | os.O_NOFOLLOW | os.O_NONBLOCK)
        try:
            left = entry.size if _stamp(os.fstat(file)) == entry.stamp else -1
            while left > 0:
                block = os.read(file, min(left, _READ_SIZE))
                left = left - len(block) if block else -1
                yield block
            if left < 0 or _stamp(os.fstat(file)) != entry.stamp:
                raise ImageError(f"changed while the image was made: {entry.source!r}")
        finally:
            os.close(file)
    except OSError as error:
        raise ImageError(f"cannot read {entry.source!r}: {error.strerror}") from error
