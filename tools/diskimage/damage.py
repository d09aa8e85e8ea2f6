"""Bad images made from good ones, to try how a reader takes them.

Every function writes a new file `out` (FileExistsError if there is one) and leaves its source alone.
"""
from __future__ import annotations

import plistlib
from typing import Dict, List, Tuple

from . import tree
from .hfs_volume import Volume
from .udif import CHUNK, SECTOR_SIZE, TABLE, TRAILER, TRAILER_FIELDS, ImageWriter, Partition


def read_trailer(image: str) -> Dict[str, object]:
    """The trailer's fields by the names of TRAILER_FIELDS: numbers, or bytes."""
    with open(image, "rb") as file:
        file.seek(-TRAILER.size, 2)
        return dict(zip(TRAILER_FIELDS, TRAILER.unpack(file.read())))


def with_trailer(image: str, out: str, **fields) -> None:
    """A copy whose trailer has the given fields replaced, e.g. list_offset=0, signature=b"none"."""
    unknown = set(fields) - set(TRAILER_FIELDS)
    if unknown:
        raise ValueError(f"no such field: {', '.join(sorted(unknown))}")
    trailer = {**read_trailer(image), **fields}
    data = bytearray(_read(image))
    data[-TRAILER.size:] = TRAILER.pack(*trailer.values())
    _write(out, data)


def cut(image: str, out: str, size: int) -> None:
    """The first `size` bytes; a negative size leaves out that many at the end (-512: the trailer)."""
    _write(out, _read(image)[:size])


def encrypted(image: str, out: str) -> None:
    """Begins as an encrypted image does, and has no trailer that could be read."""
    _write(out, b"encrcdsa" + _read(image)[:-TRAILER.size])


def with_damaged_chunk(image: str, out: str, number: int) -> None:
    """A copy with wrong bytes in the middle of one stored chunk.

    Chunks of zeros do not count. Of an image without a partition table, 0 holds the volume's
    catalog and the last one the end of the file data.
    """
    offset, length = stored_chunks(image)[number]
    data = bytearray(_read(image))
    for position in range(offset + length // 4, offset + length * 3 // 4):
        data[position] ^= 0xFF
    _write(out, data)


def with_two_volumes(first: str, second: str, out: str) -> None:
    """An image with two volumes, of the contents of two folders."""
    partitions = []
    for number, folder in enumerate((first, second)):
        volume = Volume(tree.scan(folder, f"Volume {number}"))
        partitions.append(Partition(f"disk image (Apple_HFSX : {number})", volume.sectors, volume.stream()))
    _write_image(out, partitions)


def holding(data: bytes, out: str) -> None:
    """An image in order whose volume is no volume but the given bytes, a zip archive for instance."""
    padded = data + bytes(-len(data) % SECTOR_SIZE)
    _write_image(out, [Partition("disk image (Apple_HFSX : 0)", len(padded) // SECTOR_SIZE, [padded])])


def stored_chunks(image: str) -> List[Tuple[int, int]]:
    """Offset and length in bytes of every chunk that has stored data, in the order of the file."""
    trailer = read_trailer(image)
    start = trailer["list_offset"]
    listing = plistlib.loads(_read(image)[start:start + trailer["list_length"]])
    found = []
    for partition in listing["resource-fork"]["blkx"]:
        chunks = CHUNK.iter_unpack(partition["Data"][TABLE.size:])
        found += [(offset, length) for _, _, _, _, offset, length in chunks if length]
    return sorted(found)


def _write_image(out: str, partitions: List[Partition]) -> None:
    with open(out, "xb") as file:
        writer = ImageWriter(file)
        for partition in partitions:
            writer.add(partition)
        writer.finish()


def _read(path: str) -> bytes:
    with open(path, "rb") as file:
        return file.read()


def _write(path: str, data: bytes) -> None:
    with open(path, "xb") as file:
        file.write(data)
