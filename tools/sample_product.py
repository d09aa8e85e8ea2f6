#!/usr/bin/env python3
"""Makes a folder that holds what the product's disk image holds: a small Tolvix.app and its surroundings.

The application is a shell script. When started it writes one line, "PID VERSION PATH", to
$HOME/.tolvix-sample/started and stays alive for its lifetime or until it is terminated.
"""
import argparse
import base64
import os
import plistlib
import random
import shlex
import shutil
import sys
import tempfile
from pathlib import Path

SLICES_PER_SECOND = 5
FILES_PER_FOLDER = 100
_BLOCK = 1 << 12

_SCRIPT = """\
#!/bin/sh
{on_term}
folder=${{HOME:?}}/.tolvix-sample
case $0 in
    /*) path=$0 ;;
    *) path=$PWD/$0 ;;
esac
mkdir -p "$folder" || exit 1
printf '%s %s %s\\n' "$$" {version} "$path" >"$folder/started.$$" || exit 1
mv -f "$folder/started.$$" "$folder/started" || exit 1
# Short sleeps, so that a terminated shell leaves no long one behind.
slices={slices}
while [ "$slices" -gt 0 ]; do
    sleep {slice}
    slices=$((slices - 1))
done
"""

# Decomposed, as the volume stores them: what comes out of an image has the names that went in.
_ODD_NAMES = ("two words.txt", "it's \"quoted\".txt", "$HOME.txt", "line\nbreak.txt", "-dash.txt",
              "cafe\u0301.txt", "party \U0001f389.txt", "*?[a].txt", ".hidden", "back\\slash.txt")

_PICTURE = base64.b64decode("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGA"
                            "WjR9awAAAABJRU5ErkJggg==")


def make_sample_product(out, version="5.1.0", identifier="example.tolvix.desktop", payload_files=0, payload_bytes=0,
                        lifetime=60.0, ignore_term=False):
    """Makes the folder `out`, which must be missing or empty; it appears complete or not at all.

    The payload is `payload_files` files of `payload_bytes` each, always the same, of which about half
    can be compressed away. `lifetime` is in seconds. Raises OSError.
    """
    out = Path(os.path.abspath(out))
    unfinished = Path(tempfile.mkdtemp(prefix=".making-", dir=out.parent))
    try:
        root = unfinished / "root"
        root.mkdir()
        _make_surroundings(root)
        app = root / "Tolvix.app" / "Contents"
        _write(app / "Info.plist", _properties(version, identifier, "APPL"))
        _write(app / "MacOS" / "Tolvix", _script(version, lifetime, ignore_term))
        (app / "MacOS" / "Tolvix").chmod(0o755)
        _make_framework(app / "Frameworks" / "Tolvix.framework", version, identifier)
        _make_resources(app / "Resources")
        _make_payload(app / "Resources" / "payload", payload_files, payload_bytes)
        # Renaming onto a folder succeeds only if that one is empty.
        root.rename(out)
    finally:
        shutil.rmtree(unfinished, ignore_errors=True)


def _write(path, data):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


def _properties(version, identifier, kind):
    return plistlib.dumps({
        "CFBundleIdentifier": identifier, "CFBundleExecutable": "Tolvix", "CFBundleName": "Tolvix",
        "CFBundleVersion": version, "CFBundleShortVersionString": version,
        "CFBundlePackageType": kind, "CFBundleInfoDictionaryVersion": "6.0"})


def _script(version, lifetime, ignore_term):
    text = _SCRIPT.format(on_term="trap '' TERM" if ignore_term else "", version=shlex.quote(version),
                          slices=round(lifetime * SLICES_PER_SECOND), slice=1 / SLICES_PER_SECOND)
    return text.encode()


def _make_surroundings(root):
    (root / "Applications").symlink_to("/Applications")
    _write(root / ".background" / "background.png", _PICTURE)
    _write(root / ".DS_Store", b"\0\0\0\1Bud1")


def _make_framework(framework, version, identifier):
    _write(framework / "Versions" / "A" / "Tolvix", b"the framework's code\n")
    _write(framework / "Versions" / "A" / "Resources" / "Info.plist",
           _properties(version, identifier + ".framework", "FMWK"))
    (framework / "Versions" / "Current").symlink_to("A")
    for name in ("Tolvix", "Resources"):
        (framework / name).symlink_to(f"Versions/Current/{name}")


def _make_resources(resources):
    for language, text in (("en", "Welcome"), ("fr", "Bienvenue")):
        _write(resources / f"{language}.lproj" / "Localizable.strings", f'"GREETING" = "{text}";\n'.encode())
    for name in _ODD_NAMES:
        _write(resources / "odd names" / name, f"{name}\n".encode())
    (resources / "empty").mkdir()
    (resources / "deep" / "deeper" / "deepest").mkdir(parents=True)
    _write(resources / "empty file", b"")
    (resources / "shared").symlink_to("../Frameworks/Tolvix.framework/Resources")
    (resources / "dangling").symlink_to("nothing/here")


def _make_payload(folder, files, size):
    words = random.Random(0)
    text = " ".join(words.choices(("window", "download", "progress", "volume", "copy", "event"), k=_BLOCK // 4))
    text_block = text.encode()[:_BLOCK]
    for number in range(files):
        path = folder / f"{number // FILES_PER_FOLDER:04}" / f"{number:06}.bin"
        path.parent.mkdir(parents=True, exist_ok=True)
        noise = random.Random(number)
        with path.open("wb") as file:
            for start in range(0, size, _BLOCK):
                # A fresh block, then the same text again: neither trivial nor hopeless to compress.
                block = text_block if start // _BLOCK % 2 else noise.randbytes(_BLOCK)
                file.write(block[:size - start])


def _count(text):
    value = int(text)
    if value < 0:
        raise argparse.ArgumentTypeError("must not be negative")
    return value


def _seconds(text):
    value = float(text)
    if not 0 <= value < 1e6:
        raise argparse.ArgumentTypeError("must be from 0 to a million")
    return value


def main():
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False)
    parser.add_argument("out", metavar="OUT_FOLDER", help="must be missing or empty")
    parser.add_argument("--version", default="5.1.0")
    parser.add_argument("--identifier", default="example.tolvix.desktop")
    parser.add_argument("--payload-files", type=_count, default=0, metavar="N")
    parser.add_argument("--payload-bytes", type=_count, default=0, metavar="M", help="size of each payload file")
    parser.add_argument("--lifetime", type=_seconds, default=60.0, metavar="SECONDS")
    parser.add_argument("--ignore-term", action="store_true", help="the product refuses to quit")
    options = parser.parse_args()
    try:
        make_sample_product(options.out, options.version, options.identifier, options.payload_files,
                            options.payload_bytes, options.lifetime, options.ignore_term)
    except OSError as error:
        print(f"sample_product: {options.out}: {error.strerror}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
