#!/usr/bin/env python3
"""Lays a bundle that was built on a Mac into a disk image: packaging/macos_image.py BUNDLE FOLDER; prints its path.

The image's window shows the installer alone, as it is started from there and needs no place of its own on the disk.
"""
import os
import plistlib
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tools"))
from diskimage.build import make_image  # noqa: E402
from diskimage.errors import ImageError  # noqa: E402
from diskimage.hfs_volume import CUSTOM_ICON, VOLUME_ICON  # noqa: E402
from finder_layout import finder_layout  # noqa: E402

_WINDOW = (400, 240, 420, 260)
_ICON_SIZE = 128
_ICON_PLACE = (210, 110)
# Thin and universal programs, in both byte orders.
_MACH_O = {bytes.fromhex(magic) for magic in ("cffaedfe", "feedfacf", "cafebabe", "cafebabf")}


def read_information(bundle):
    """The bundle's information list. Raises ImageError if it is no bundle with a program for macOS."""
    try:
        information = plistlib.loads((bundle / "Contents" / "Info.plist").read_bytes())
        with open(bundle / "Contents" / "MacOS" / information["CFBundleExecutable"], "rb") as program:
            magic = program.read(4)
    except (OSError, KeyError, plistlib.InvalidFileException) as error:
        raise ImageError(f"{bundle} is no bundle: {error!r}") from error
    if magic not in _MACH_O:
        raise ImageError(f"{bundle} holds no program for macOS")
    return information


def make_volume(bundle, information, volume):
    """Puts the bundle, the volume's icon and the window's layout into the new folder `volume`."""
    application = information["CFBundleName"] + ".app"
    shutil.copytree(bundle, volume / application, symlinks=True)
    icon = Path(information["CFBundleIconFile"]).with_suffix(".icns")
    shutil.copyfile(bundle / "Contents" / "Resources" / icon, volume / VOLUME_ICON)
    (volume / ".DS_Store").write_bytes(finder_layout(_WINDOW, _ICON_SIZE, {application: _ICON_PLACE}))
    if sys.platform == "darwin":
        subprocess.run(["/usr/bin/xattr", "-wx", "com.apple.FinderInfo", CUSTOM_ICON.hex(), str(volume)], check=True)


def main():
    bundle, folder = Path(sys.argv[1]), Path(sys.argv[2])
    try:
        information = read_information(bundle)
        image = folder / f"tolvix-installer-{information['CFBundleShortVersionString']}-macos.dmg"
        # Only our own writer takes a date: the system's tool on a Mac has no such option.
        date = None if sys.platform == "darwin" else int(os.environ["SOURCE_DATE_EPOCH"])
        with tempfile.TemporaryDirectory() as work:
            volume = Path(work) / "volume"
            volume.mkdir()
            make_volume(bundle, information, volume)
            make_image(str(volume), str(image), information["CFBundleName"], time=date)
    except (ImageError, OSError, shutil.Error, subprocess.CalledProcessError) as error:
        print(f"package: {error}", file=sys.stderr)
        return 1
    print(image)
    return 0


if __name__ == "__main__":
    sys.exit(main())
