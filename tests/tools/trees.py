"""What a folder holds, in a form that can be compared."""
import os
import unicodedata


def tree(folder):
    """Path to mode, time and content of every entry."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(place, name)
            status = os.lstat(path)
            if os.path.islink(path):
                mode, content = "link", os.readlink(path)
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
