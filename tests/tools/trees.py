"""What a folder holds, in a form that can be compared, and unpacking an image."""
import os
import shutil
import subprocess
import unicodedata
import unittest

SEVEN_ZIP = shutil.which("7zz")
needs_seven_zip = unittest.skipUnless(SEVEN_ZIP, "7zz is not installed")


def tree(folder, link_prefix=""):
    """Path to mode, time and content of every entry. `link_prefix` is taken off the targets of links."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(place, name)
            status = os.lstat(path)
            if os.path.islink(path):
                target = os.readlink(path)
                mode, content = "link", target[len(link_prefix):] if target.startswith(link_prefix) else target
            else:
                mode = oct(status.st_mode)
                content = read(path) if os.path.isfile(path) else b""
            found[os.path.relpath(path, folder)] = (mode, int(status.st_mtime), content)
    return found


def decomposed(found):
    """The tree with its names as they are on a volume."""
    return {unicodedata.normalize("NFD", name): entry for name, entry in found.items()}


def without_times(found):
    return {name: (mode, content) for name, (mode, _, content) in found.items()}


def read(path):
    with open(path, "rb") as file:
        return file.read()


def unpack(image, out):
    """Unpacks an image with 7zz into `out`; returns its exit status and all it says."""
    done = subprocess.run([SEVEN_ZIP, "x", "-y", "-bd", "-snld20", "-sns-", "-t*:r.dmg", f"-o{out}", "--", image],
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return done.returncode, done.stdout.decode(errors="replace")
