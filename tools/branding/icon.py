"""Draws an icon in the sizes that installers carry, with rsvg-convert."""
from __future__ import annotations

import base64
import shutil
import struct
import subprocess
import xml.etree.ElementTree
from pathlib import Path
from typing import Dict, Iterable

from .values import BrandError

_PNG = b"\x89PNG\r\n\x1a\n"
_LEAST = 256
# Types of an icon file's members that hold a PNG, by its width.
_ICNS_TYPES = {32: b"ic11", 64: b"ic12", 128: b"ic07", 256: b"ic08", 512: b"ic09", 1024: b"ic10"}


def read_icon(path: Path) -> bytes:
    """The icon as SVG. Raises BrandError for what is neither SVG nor a large enough square PNG."""
    try:
        data = path.read_bytes()
    except OSError as error:
        raise BrandError(f"--icon: {path}: {error.strerror}") from None
    if data.startswith(_PNG):
        return _wrapped(path, data)
    try:
        root = xml.etree.ElementTree.fromstring(data)
    except xml.etree.ElementTree.ParseError:
        raise BrandError(f"--icon: {path} is neither PNG nor SVG") from None
    if root.tag not in ("svg", "{http://www.w3.org/2000/svg}svg"):
        raise BrandError(f"--icon: {path} is XML, but no SVG")
    return data


def _wrapped(path: Path, data: bytes) -> bytes:
    if len(data) < 24:
        raise BrandError(f"--icon: {path} is cut off")
    width, height = struct.unpack(">II", data[16:24])
    if width != height or width < _LEAST:
        raise BrandError(f"--icon: {path} is {width} by {height}; it has to be square and at least {_LEAST} wide")
    return (f'<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" width="{width}" '
            f'height="{width}"><image width="{width}" height="{width}" xlink:href="data:image/png;base64,'
            f'{base64.b64encode(data).decode()}"/></svg>').encode()


def pictures(icon: bytes, extents: Iterable[int]) -> Dict[int, bytes]:
    """The icon as PNG for each width. Raises BrandError."""
    tool = shutil.which("rsvg-convert")
    if tool is None:
        raise BrandError("--icon: rsvg-convert is missing; it comes with the package librsvg2-bin")
    return {extent: _drawn(tool, icon, extent) for extent in extents}


def _drawn(tool: str, icon: bytes, extent: int) -> bytes:
    done = subprocess.run([tool, "--width", str(extent), "--height", str(extent), "--keep-aspect-ratio", "--format", "png"],
                          input=icon, capture_output=True)
    if done.returncode != 0 or not done.stdout.startswith(_PNG):
        raise BrandError(f"--icon: it cannot be drawn: {done.stderr.decode(errors='replace').strip()}")
    return done.stdout


def icns(icon: bytes) -> bytes:
    """The icon file of a macOS bundle."""
    members = b"".join(_ICNS_TYPES[extent] + struct.pack(">I", len(data) + 8) + data
                       for extent, data in pictures(icon, _ICNS_TYPES).items())
    return b"icns" + struct.pack(">I", len(members) + 8) + members
