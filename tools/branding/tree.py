"""A bundle in a tree of files, and what surrounds it there: command, desktop entry and icons."""
from __future__ import annotations

import os
import plistlib
import re
import shutil
from pathlib import Path
from typing import Dict, List, Optional

from . import icon as icons
from .values import KINDS, BrandError

WINDOW_EXTENTS = (16, 24, 32, 48, 64, 128, 256)
IMAGE_NAME = "Tolvix.dmg"
_MACH_O = (b"\xcf\xfa\xed\xfe", b"\xca\xfe\xba\xbe")  # for one processor, and for several


class Bundle:
    """An installer's bundle, which is changed where it lies. Raises BrandError for a folder that holds none."""

    def __init__(self, folder: Path):
        self.folder = folder
        self._file = folder / "Contents" / "Info.plist"
        try:
            self.information: Dict[str, object] = plistlib.loads(self._file.read_bytes())
        except (OSError, ValueError, plistlib.InvalidFileException) as error:
            raise BrandError(f"{folder} is no bundle of an installer: {error}") from None
        missing = [kind.key for kind in KINDS if kind.key not in self.information and kind.key != "TXPartnerName"]
        if missing:
            raise BrandError(f"{folder} is no bundle of an installer: {self._file.name} lacks {', '.join(missing)}")

    @property
    def is_for_macos(self) -> bool:
        """Whether the program itself is one for macOS; the keys of the information are the same everywhere."""
        program = self.folder / "Contents" / "MacOS" / str(self.information.get("CFBundleExecutable", ""))
        try:
            with program.open("rb") as file:
                return file.read(4) in _MACH_O
        except OSError:
            return False

    @property
    def build_version(self) -> str:
        return str(self.information.get("CFBundleVersion", ""))

    def change(self, values: Dict[str, str]) -> List[str]:
        """Sets keys of the information; a line about each that differs."""
        lines = []
        for key, value in values.items():
            before = self.information.get(key)
            if before != value:
                lines.append(f"{key}: {'(none)' if before is None else before} -> {value}")
        self.information.update(values)
        self._file.write_bytes(plistlib.dumps(self.information))
        return lines

    def set_icon(self, icon: bytes) -> str:
        resources = self.folder / "Contents" / "Resources"
        if self.is_for_macos:
            name = str(self.information.get("CFBundleIconFile", "icon"))
            name = name if name.endswith(".icns") else name + ".icns"
            (resources / name).write_bytes(icons.icns(icon))
            return f"Resources/{name}: replaced"
        folder = resources / "icons"
        folder.mkdir(exist_ok=True)
        for extent, data in icons.pictures(icon, WINDOW_EXTENTS).items():
            (folder / f"icon-{extent}.png").write_bytes(data)
        return f"Resources/icons: {len(WINDOW_EXTENTS)} sizes"

    def rename(self) -> None:
        """Names the folder after the bundle's name."""
        target = self.folder.with_name(f"{self.information['CFBundleName']}.app")
        if target != self.folder:
            self.folder.rename(target)
            self.folder = target

    def lay_image(self, image: Path) -> str:
        """Moves the bundle into a folder that is named after the build version, with the image beside it."""
        version = self.build_version
        if not version or "/" in version or version in (".", ".."):
            raise BrandError(f"--image: the build version {version!r} names no folder")
        folder = self.folder.parent / version
        folder.mkdir()
        self.folder = Path(shutil.move(str(self.folder), str(folder / self.folder.name)))
        shutil.copyfile(image, folder / IMAGE_NAME)
        return f"{version}/{IMAGE_NAME}: taken without a download"


def check_image(image: Path) -> None:
    """Raises BrandError for what is no disk image."""
    try:
        with image.open("rb") as file:
            file.seek(-512, os.SEEK_END)
            known = file.read(4) == b"koly"
    except OSError as error:
        raise BrandError(f"--image: {image}: {error.strerror}") from None
    if not known:
        raise BrandError(f"--image: {image} is no disk image: its end lacks the mark of one")


class InstalledTree:
    """What `cmake --install` puts below a prefix, unpacked from a package."""

    def __init__(self, prefix: Path):
        self._prefix = prefix
        found = sorted((prefix / "lib" / "tolvix-installer").glob("*.app"))
        if len(found) != 1:
            raise BrandError(f"the package holds {len(found)} bundles in lib/tolvix-installer instead of one")
        self.bundle = Bundle(found[0])
        self._identifier = str(self.bundle.information["CFBundleIdentifier"])

    def follow(self, icon: Optional[bytes]) -> List[str]:
        """Makes the bundle's surroundings agree with it; a line about each change."""
        command = self._prefix / "bin" / "tolvix-installer"
        executable = self.bundle.folder / "Contents" / "MacOS" / str(self.bundle.information["CFBundleExecutable"])
        command.unlink()
        command.symlink_to(os.path.relpath(executable, command.parent))
        identifier = str(self.bundle.information["CFBundleIdentifier"])
        shared = self._prefix / "share"
        entry = shared / "applications" / f"{self._identifier}.desktop"
        text = re.sub(r"(?m)^Name=.*$", lambda _: f"Name={self.bundle.information['CFBundleName']}", entry.read_text())
        entry.write_text(re.sub(r"(?m)^Icon=.*$", f"Icon={identifier}", text))
        entry.rename(entry.with_name(f"{identifier}.desktop"))
        for path in sorted((shared / "icons").rglob(f"{self._identifier}.*")):
            path.rename(path.with_name(identifier + path.suffix))
        lines = [f"{identifier}.desktop and icons: follow the bundle"]
        if icon is not None:
            lines.append(self._set_theme_icons(shared / "icons" / "hicolor", identifier, icon))
        return lines

    def _set_theme_icons(self, theme: Path, identifier: str, icon: bytes) -> str:
        for extent, data in icons.pictures(icon, WINDOW_EXTENTS).items():
            (theme / f"{extent}x{extent}" / "apps" / f"{identifier}.png").write_bytes(data)
        (theme / "scalable" / "apps" / f"{identifier}.svg").write_bytes(icon)
        return f"hicolor icons: {len(WINDOW_EXTENTS)} sizes and one to scale"
