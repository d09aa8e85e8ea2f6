"""The `.DS_Store` file that tells the Finder how to show a folder: a plain window with its icons at given places.

The file is a heap of blocks whose sizes are powers of two, with a tree of records in it. What is written here fits in one
node, so all blocks stand at fixed places. All numbers are big-endian; offsets count from the fourth byte of the file.
"""
import plistlib
import struct

_DIRECTORY = (0x20, 5)  # offset, and size as a power of two
_ROOT = (0x800, 11)
_NODE = (0x1000, 12)
_TABLE_UNIT = 256
_FREE_LISTS = 32


def _record(name, code, kind, data):
    return (name.lower(), code), struct.pack(">I", len(name)) + name.encode("utf-16-be") + code + kind + data


def _blob(name, code, data):
    return _record(name, code, b"blob", struct.pack(">I", len(data)) + data)


def _properties(code, values):
    return _blob(".", code, plistlib.dumps(values, fmt=plistlib.FMT_BINARY))


def _records(window, icon_size, places):
    left, top, width, height = window
    bars = {name: False for name in ("ShowSidebar", "ShowStatusBar", "ShowTabView", "ShowToolbar",
                                     "ContainerShowSidebar")}
    records = [
        _properties(b"bwsp", {**bars, "WindowBounds": f"{{{{{left}, {top}}}, {{{width}, {height}}}}}"}),
        _properties(b"icvp", {"viewOptionsVersion": 1, "arrangeBy": "none", "iconSize": float(icon_size), "textSize": 13.0,
                              "labelOnBottom": True, "showItemInfo": False, "showIconPreview": True,
                              "gridOffsetX": 0.0, "gridOffsetY": 0.0, "gridSpacing": 100.0, "backgroundType": 0,
                              "backgroundColorRed": 1.0, "backgroundColorGreen": 1.0, "backgroundColorBlue": 1.0}),
        _record(".", b"vSrn", b"long", struct.pack(">I", 1)),
        _record(".", b"vstl", b"type", b"icnv"),
    ]
    records += [_blob(name, b"Iloc", struct.pack(">IIII", x, y, 0xFFFFFFFF, 0xFFFF0000)) for name, (x, y) in places.items()]
    return [data for _, data in sorted(records)]


def finder_layout(window, icon_size, places):
    """The content of the file.

    window: left, top, width and height; icon_size: in points; places: the centre of each named item's icon, from the
    window's upper left corner. Names are plain ASCII. Raises ValueError if there are too many of them for one node.
    """
    records = _records(window, icon_size, places)
    node = struct.pack(">II", 0, len(records)) + b"".join(records)
    if len(node) > 1 << _NODE[1]:
        raise ValueError("too many items for a window's layout")
    directory = struct.pack(">IIIII", 2, 0, len(records), 1, 1 << _NODE[1])
    addresses = [offset | power for offset, power in (_ROOT, _DIRECTORY, _NODE)]
    root = struct.pack(f">II{_TABLE_UNIT}I", len(addresses), 0, *addresses, *[0] * (_TABLE_UNIT - len(addresses)))
    root += struct.pack(">IB4sI", 1, 4, b"DSDB", 1)
    # The header and the directory are the smallest blocks, so each other size but those in use has one free block.
    taken = {power for _, power in (_DIRECTORY, _ROOT, _NODE)}
    for power in range(_FREE_LISTS):
        free = [1 << power] if 5 < power < _FREE_LISTS - 1 and power not in taken else []
        root += struct.pack(f">I{len(free)}I", len(free), *free)
    heap = bytearray(_NODE[0] + (1 << _NODE[1]))
    heap[:16] = struct.pack(">4sIII", b"Bud1", _ROOT[0], 1 << _ROOT[1], _ROOT[0])
    for (offset, _), content in ((_DIRECTORY, directory), (_ROOT, root), (_NODE, node)):
        heap[offset:offset + len(content)] = content
    return struct.pack(">I", 1) + bytes(heap)
