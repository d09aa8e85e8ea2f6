#!/usr/bin/env python3
"""Makes a compressed disk image from a folder; the folder's content becomes the volume's root."""
import argparse
import signal
import sys

from diskimage.build import make_image
from diskimage.disk_layout import LAYOUTS
from diskimage.errors import ImageError
from diskimage.udif import COMPRESSIONS


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False)
    parser.add_argument("folder", metavar="FOLDER")
    parser.add_argument("out", metavar="OUT.dmg", help="replaced if it is a regular file")
    parser.add_argument("--name", metavar="VOLUME", help="name of the volume (default: the folder's)")
    parser.add_argument("--compression", choices=sorted(COMPRESSIONS), default="zlib")
    parser.add_argument("--level", type=int, metavar="N", help="of the compression (default: its usual one)")
    parser.add_argument("--layout", choices=LAYOUTS, default="volume", help="a bare volume, or a disk with a table")
    parser.add_argument("--time", type=int, metavar="SECONDS",
                        help="since 1970, for everything on the volume (default: the files' own times)")
    options = parser.parse_args()
    # Ends by way of an exception, so that the unfinished image is removed.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
    try:
        make_image(options.folder, options.out, options.name, options.compression, options.level,
                   options.layout, options.time)
    except ImageError as error:
        print(f"make_dmg: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 128 + signal.SIGINT
    return 0


if __name__ == "__main__":
    sys.exit(main())
