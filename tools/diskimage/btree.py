"""Builds the balanced trees of an HFS+ volume from sorted records."""
from __future__ import annotations

import struct
from dataclasses import dataclass
from typing import List, Sequence, Tuple

from .errors import ImageError

NODE_SIZE = 8192
_NODE_HEADER = struct.Struct(">IIbBHH")  # next, previous, kind, height, records, reserved
_TREE_HEADER = struct.Struct(">HIIIIHHIIHIBBI64x")
_LEAF, _INDEX, _HEADER = -1, 0, 1
_USER_DATA_SIZE = 128
_MAP_OFFSET = _NODE_HEADER.size + _TREE_HEADER.size + _USER_DATA_SIZE
_MAP_SIZE = NODE_SIZE - _MAP_OFFSET - 4 * 2

Record = Tuple[bytes, bytes]  # key with its length in front, data


@dataclass(frozen=True)
class TreeKind:
    """What the header of a tree says about its keys."""

    longest_key: int
    compare: int
    attributes: int


BIG_KEYS, VARIABLE_INDEX_KEYS = 2, 4
BINARY_COMPARE = 0xBC
EXTENTS = TreeKind(longest_key=10, compare=0, attributes=BIG_KEYS)
ATTRIBUTES = TreeKind(longest_key=266, compare=0, attributes=BIG_KEYS | VARIABLE_INDEX_KEYS)
CATALOG = TreeKind(longest_key=516, compare=BINARY_COMPARE, attributes=BIG_KEYS | VARIABLE_INDEX_KEYS)


def build_tree(records: Sequence[Record], kind: TreeKind) -> bytes:
    """The tree's file: header node, leaves, index levels. Raises ImageError if it needs too many nodes."""
    nodes: List[bytes] = []
    level: Sequence[Record] = records
    depth = leaves = 0
    while level and (depth == 0 or len(level) > 1):
        groups = _grouped(level)
        first = 1 + len(nodes)
        depth += 1
        leaves = leaves or len(groups)
        for index, group in enumerate(groups):
            following = first + index + 1 if index + 1 < len(groups) else 0
            previous = first + index - 1 if index > 0 else 0
            nodes.append(_node(group, following, previous, _LEAF if depth == 1 else _INDEX, depth))
        level = [(group[0][0], struct.pack(">I", first + index)) for index, group in enumerate(groups)]
    total = 1 + len(nodes)
    if total > _MAP_SIZE * 8:
        raise ImageError("too many files and folders for one volume")
    fields = _TREE_HEADER.pack(depth, len(nodes), len(records), min(1, leaves), leaves, NODE_SIZE,
                               kind.longest_key, total, 0, 0, total * NODE_SIZE, 0, kind.compare, kind.attributes)
    used = bit_run(total).ljust(_MAP_SIZE, b"\0")
    header = [(b"", fields), (b"", bytes(_USER_DATA_SIZE)), (b"", used)]
    return _node(header, 0, 0, _HEADER, 0) + b"".join(nodes)


def bit_run(count: int) -> bytes:
    """`count` one bits, highest bit of each byte first, filled up with zero bits to a whole byte."""
    rest = count % 8
    return b"\xff" * (count // 8) + (bytes([0xFF00 >> rest & 0xFF]) if rest else b"")


def _grouped(records: Sequence[Record]) -> List[List[Record]]:
    groups: List[List[Record]] = []
    room = 0
    for key, data in records:
        needed = len(key) + len(data) + 2
        if needed > room:
            groups.append([])
            room = NODE_SIZE - _NODE_HEADER.size - 2
        room -= needed
        groups[-1].append((key, data))
    return groups


def _node(records: Sequence[Record], following: int, previous: int, kind: int, height: int) -> bytes:
    body = bytearray(_NODE_HEADER.pack(following, previous, kind, height, len(records), 0))
    offsets = [len(body)]
    for key, data in records:
        body += key + data
        offsets.append(len(body))
    tail = struct.pack(f">{len(offsets)}H", *reversed(offsets))
    return bytes(body).ljust(NODE_SIZE - len(tail), b"\0") + tail
