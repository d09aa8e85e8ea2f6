"""Draws an icon in the sizes that installers carry, with rsvg-convert."""
from __future__ import annotations

import base64
import shutil
import struct
import subprocess
import xml.etree.ElementTree
from pathlib import Path
from typing import Dict, Iterable

from make_icns import KINDS as ICNS_SIZES, PNG, make_icns

from .values import BrandError

_LEAST = 256


def read_icon(path: Path) -> bytes:
    """The icon as SVG. Raises BrandError for what is neither SVG nor a large enough square PNG."""
    try:
        data = path.read_bytes()
    except OSError as error:
        raise BrandError(f"--icon: {path}: {error.strerror}") from None
    if data.startswith(PNG):
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
    if done.returncode != 0 or not done.stdout.startswith(PNG):
        raise BrandError(f"--icon: it cannot be drawn: {done.stderr.decode(errors='replace').strip()}")
    return done.stdout


def icns(icon: bytes) -> bytes:
    """The icon file of a macOS bundle."""
    return make_icns(pictures(icon, ICNS_SIZES).values())
