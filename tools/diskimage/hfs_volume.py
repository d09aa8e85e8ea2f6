"""Writes a case-sensitive HFS+ volume (HFSX) as a stream of bytes, without a free block.

HFSX, because its names are compared as plain numbers: no case-folding table is needed, and two
names that differ in case only can stand side by side.
"""
from __future__ import annotations

import struct
from typing import Iterator, List, Sequence

from . import btree
from .errors import ImageError
from .tree import FIRST_FREE_NUMBER, ROOT_NUMBER, Entry, content, volume_name

BLOCK_SIZE = 4096
SECTOR_SIZE = 512
_HEADER_OFFSET = 1024
_MAX_BLOCKS = 0xFFFFFFFF

_FOLDER, _FILE, _FOLDER_THREAD, _FILE_THREAD = 1, 2, 3, 4
_HAS_THREAD, _HAS_FOLDER_COUNT = 0x02, 0x10
_UNMOUNTED_CLEANLY = 0x100
# "Unknown" user and group: whoever mounts the volume counts as the owner.
_OWNER, _GROUP = 99, 99
_LINK_TYPE = b"slnkrhap"
_MAC_ROMAN = 1

# A file of this name in the root is the volume's own icon, once the root's information for the Finder says so.
VOLUME_ICON = ".VolumeIcon.icns"
CUSTOM_ICON = struct.pack(">8xH22x", 0x0400)

_FORK = struct.Struct(">QIIII56x")  # bytes, clump size, blocks, first extent
_PERMISSIONS = struct.Struct(">IIBBHI")
_VOLUME_HEADER = struct.Struct(">2sHI4sI4I2I8IQ32x")


def _blocks(size: int) -> int:
    return -(-size // BLOCK_SIZE)


def _fork(size: int, start: int) -> bytes:
    blocks = _blocks(size)
    return _FORK.pack(size, 0, blocks, start if blocks else 0, blocks)


def _key(parent: int, name: bytes) -> bytes:
    return struct.pack(">HIH", 6 + len(name), parent, len(name) // 2) + name


def _permissions(entry: Entry) -> bytes:
    return _PERMISSIONS.pack(_OWNER, _GROUP, 0, 0, entry.mode, 0 if entry.is_folder else 1)


class Volume:
    """A volume with the given entries (root first). Layout and size are fixed at construction.

    File data is read only while `stream` runs, block by block.
    """

    def __init__(self, entries: Sequence[Entry]):
        self._entries = entries
        self._files = [entry for entry in entries if not entry.is_folder]
        self._extents = btree.build_tree([], btree.EXTENTS)
        self._attributes = btree.build_tree([], btree.ATTRIBUTES)
        # The catalog holds where the data starts, which follows from the catalog's size; its size
        # does not depend on the numbers in it.
        catalog_size = len(self._build_catalog(0))
        data_blocks = sum(_blocks(entry.size) for entry in self._files)
        first_and_last = 2
        trees = sum(map(_blocks, (len(self._extents), len(self._attributes), catalog_size)))
        other = first_and_last + trees + data_blocks
        self._bitmap_blocks = 1
        while other + self._bitmap_blocks > self._bitmap_blocks * BLOCK_SIZE * 8:
            self._bitmap_blocks += 1
        self._total_blocks = other + self._bitmap_blocks
        if self._total_blocks > _MAX_BLOCKS:
            raise ImageError("the folder is too large for one volume")
        self._extents_start = 1 + self._bitmap_blocks
        self._attributes_start = self._extents_start + _blocks(len(self._extents))
        self._catalog_start = self._attributes_start + _blocks(len(self._attributes))
        self._catalog = self._build_catalog(self._catalog_start + _blocks(catalog_size))

    @property
    def sectors(self) -> int:
        return self._total_blocks * BLOCK_SIZE // SECTOR_SIZE

    def stream(self) -> Iterator[bytes]:
        """The bytes of the volume in order. Raises ImageError if a file cannot be read."""
        header = self._header()
        yield (bytes(_HEADER_OFFSET) + header).ljust(BLOCK_SIZE, b"\0")
        yield btree.bit_run(self._total_blocks).ljust(self._bitmap_blocks * BLOCK_SIZE, b"\0")
        yield self._extents
        yield self._attributes
        yield self._catalog
        for entry in self._files:
            yield from content(entry)
            yield bytes(-entry.size % BLOCK_SIZE)
        # The spare header stands 1024 bytes before the end.
        yield (header + bytes(_HEADER_OFFSET - len(header))).rjust(BLOCK_SIZE, b"\0")

    def _header(self) -> bytes:
        root = self._entries[0]
        head = _VOLUME_HEADER.pack(
            b"HX", 5, _UNMOUNTED_CLEANLY, b"10.0", 0,
            root.time, root.time, 0, root.time,
            len(self._files), len(self._entries) - len(self._files) - 1,
            BLOCK_SIZE, self._total_blocks, 0, 0, BLOCK_SIZE, BLOCK_SIZE,
            FIRST_FREE_NUMBER + len(self._entries) - 1, 1, _MAC_ROMAN)
        forks = [_fork(self._bitmap_blocks * BLOCK_SIZE, 1), _fork(len(self._extents), self._extents_start),
                 _fork(len(self._catalog), self._catalog_start),
                 _fork(len(self._attributes), self._attributes_start), _fork(0, 0)]
        return head + b"".join(forks)

    def _build_catalog(self, first_data_block: int) -> bytes:
        records: List[btree.Record] = []
        position = first_data_block
        has_icon = any(entry.parent == ROOT_NUMBER and entry.name == volume_name(VOLUME_ICON) for entry in self._files)
        for entry in self._entries:
            if entry.is_folder:
                finder = CUSTOM_ICON if has_icon and entry.number == ROOT_NUMBER else b""
                data, thread = self._folder_record(entry, finder), _FOLDER_THREAD
            else:
                data, thread = self._file_record(entry, position), _FILE_THREAD
                position += _blocks(entry.size)
            records.append((_key(entry.parent, entry.name), data))
            back = struct.pack(">HHIH", thread, 0, entry.parent, len(entry.name) // 2) + entry.name
            records.append((_key(entry.number, b""), back))
        # Parent number, then name: the length fields would come first in a plain comparison.
        records.sort(key=lambda record: (record[0][2:6], record[0][8:]))
        return btree.build_tree(records, btree.CATALOG)

    @staticmethod
    def _folder_record(entry: Entry, finder: bytes) -> bytes:
        times = (entry.time, entry.time, entry.time, entry.time, 0)
        return (struct.pack(">HHII5I", _FOLDER, _HAS_FOLDER_COUNT, entry.children, entry.number, *times)
                + _permissions(entry) + struct.pack(">32sII", finder, 0, entry.folders))

    @staticmethod
    def _file_record(entry: Entry, position: int) -> bytes:
        times = (entry.time, entry.time, entry.time, entry.time, 0)
        finder = _LINK_TYPE if entry.is_link else b""
        return (struct.pack(">HHII5I", _FILE, _HAS_THREAD, 0, entry.number, *times)
                + _permissions(entry) + struct.pack(">32s8x", finder)
                + _fork(entry.size, position) + _fork(0, 0))
