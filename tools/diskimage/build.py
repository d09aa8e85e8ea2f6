"""Makes a disk image file from a folder: our own writer, or the system's tool where there is one."""
from __future__ import annotations

import os
import shutil
import stat
import subprocess
import sys
import tempfile
from contextlib import contextmanager
from typing import Iterator, Optional

from . import tree
from .disk_layout import LAYOUTS, partitions
from .errors import ImageError
from .hfs_volume import Volume
from .udif import ImageWriter, Partition, check_level

_HDIUTIL = "/usr/bin/hdiutil"
_HDIUTIL_FORMATS = {"zlib": "UDZO", "bzip2": "UDBZ", "xz": "ULMO", "none": "UDRO"}
_HDIUTIL_LAYOUTS = {"volume": "NONE", "disk": "GPTSPUD"}


def make_image(folder: str, out: str, name: Optional[str] = None, compression: str = "zlib",
               level: Optional[int] = None, layout: str = "volume", time: Optional[int] = None) -> None:
    """Makes `out` a disk image whose volume holds what `folder` holds.

    name: of the volume (default: the folder's); level: of the compression (default: its usual one);
    layout: "volume" (nothing but the volume) or "disk" (with a partition table); time: seconds since
    1970 for all times (default: those of the files). The same input gives the same bytes, except on
    macOS, where the system's tool does the work. `out` appears complete or not at all. Raises ImageError.
    """
    folder, out = os.path.realpath(folder), os.path.abspath(out)
    name = os.path.basename(folder) if name is None else name
    _check(folder, out, name, layout, time)
    check_level(compression, level)
    try:
        if sys.platform == "darwin":
            _run_hdiutil(folder, out, name, compression, level, layout, time)
        else:
            _write(folder, out, name, compression, level, layout, time)
    except OSError as error:
        raise ImageError(f"cannot write {out!r}: {error.strerror}") from error


def _check(folder: str, out: str, name: str, layout: str, time: Optional[int]) -> None:
    if name in ("", ".", "..") or "/" in name or "\0" in name:
        raise ImageError(f"not a name for a volume: {name!r}")
    if layout not in LAYOUTS:
        raise ImageError(f"unknown layout: {layout}")
    if time is not None and not 0 <= time + tree.HFS_EPOCH <= tree.MAX_HFS_TIME:
        raise ImageError(f"the volume cannot hold the time {time}")
    if not os.path.isdir(folder):
        raise ImageError(f"not a folder: {folder!r}")
    if os.path.commonpath([folder, os.path.realpath(os.path.dirname(out))]) == folder:
        raise ImageError(f"{out!r} lies inside the folder that becomes the image")
    if os.path.lexists(out) and not stat.S_ISREG(os.lstat(out).st_mode):
        raise ImageError(f"{out!r} exists and is not a regular file")


def _write(folder: str, out: str, name: str, compression: str, level: Optional[int], layout: str,
           time: Optional[int]) -> None:
    volume = Volume(tree.scan(folder, name, time))
    with _replacing(out) as unfinished, open(unfinished, "xb") as file:
        writer = ImageWriter(file, compression, level)
        for partition in partitions(layout, Partition(name, volume.sectors, volume.stream())):
            writer.add(partition)
        writer.finish()


def _run_hdiutil(folder: str, out: str, name: str, compression: str, level: Optional[int], layout: str,
                 time: Optional[int]) -> None:
    if time is not None:
        raise ImageError("fixed times are not possible on macOS")
    command = [_HDIUTIL, "create", "-quiet", "-srcfolder", folder, "-volname", name, "-fs", "HFS+",
               "-format", _HDIUTIL_FORMATS[compression], "-layout", _HDIUTIL_LAYOUTS[layout]]
    if level is not None:
        if compression not in ("zlib", "bzip2"):
            raise ImageError(f"on macOS {compression} takes no level")
        command += ["-imagekey", f"{compression}-level={level}"]
    with _replacing(out) as unfinished:
        status = subprocess.run(command + [unfinished], stdin=subprocess.DEVNULL, check=False).returncode
        if status != 0:
            raise ImageError(f"{_HDIUTIL} ended with status {status}")


@contextmanager
def _replacing(out: str) -> Iterator[str]:
    """A path beside `out` to write to; it takes the place of `out` if the block ends without an error."""
    folder = tempfile.mkdtemp(prefix=".making-", dir=os.path.dirname(out))
    try:
        unfinished = os.path.join(folder, "image.dmg")
        yield unfinished
        os.replace(unfinished, out)
    finally:
        shutil.rmtree(folder, ignore_errors=True)
