"""The container of a disk image: compressed chunks, a property list, a trailer. All numbers are big-endian."""
from __future__ import annotations

import bz2
import hashlib
import lzma
import os
import plistlib
import struct
import zlib
from collections import deque
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from typing import BinaryIO, Callable, Dict, Iterable, Iterator, List, Optional, Tuple

from .errors import ImageError

SECTOR_SIZE = 512
CHUNK_SECTORS = 512
_CHUNK_SIZE = CHUNK_SECTORS * SECTOR_SIZE
_ZEROS = bytes(_CHUNK_SIZE)

ZERO_CHUNK, STORED_CHUNK, END_OF_CHUNKS = 0, 1, 0xFFFFFFFF
CHUNK = struct.Struct(">IIQQQQ")  # type, comment, first sector, sectors, offset, stored length
TABLE = struct.Struct(">4sIQQQII24xII128sI")
_CRC32, _CRC32_BITS = 2, 32

TRAILER = struct.Struct(">4sIIIQQQQQII16sII128sQQ64sQQ40sII128sIQ12s")
TRAILER_FIELDS = (
    "signature", "version", "size", "flags", "running_offset", "data_offset", "data_length",
    "resource_offset", "resource_length", "segment", "segments", "segment_id",
    "data_checksum_type", "data_checksum_bits", "data_checksum", "list_offset", "list_length",
    "reserved_1", "signing_offset", "signing_length", "reserved_2",
    "master_checksum_type", "master_checksum_bits", "master_checksum",
    "variant", "sectors", "reserved_3")


@dataclass(frozen=True)
class Compression:
    """A way to store chunks. `compress` takes the chunk and the level."""

    chunk_type: int
    levels: range
    default_level: int
    compress: Callable[[bytes, int], bytes]


COMPRESSIONS: Dict[str, Compression] = {
    "zlib": Compression(0x80000005, range(0, 10), 6, zlib.compress),
    "bzip2": Compression(0x80000006, range(1, 10), 9, bz2.compress),
    "xz": Compression(0x80000008, range(0, 10), 6, lambda chunk, level: lzma.compress(chunk, preset=level)),
    "none": Compression(STORED_CHUNK, range(0), 0, lambda chunk, level: chunk),
}


@dataclass
class Partition:
    """A run of sectors of the image; `content` yields exactly sectors x 512 bytes, in any portions."""

    name: str
    sectors: int
    content: Iterable[bytes]


def check_level(compression: str, level: Optional[int]) -> None:
    """Raises ImageError unless the compression is known and has that level (None: its default)."""
    known = COMPRESSIONS.get(compression)
    if known is None:
        raise ImageError(f"unknown compression: {compression}")
    if level is not None and level not in known.levels:
        allowed = f"{known.levels[0]} to {known.levels[-1]}" if known.levels else "no level"
        raise ImageError(f"{compression} takes {allowed}, not level {level}")


class ImageWriter:
    """Writes an image to a binary file: `add` each partition in order, then `finish` once.

    Chunks are compressed by as many threads as there are processors; only a few chunks are in
    memory at a time. Everything else runs on the calling thread. Errors of the file and of the
    partitions' contents pass through.
    """

    def __init__(self, file: BinaryIO, compression: str = "zlib", level: Optional[int] = None):
        check_level(compression, level)
        self._file = file
        self._compression = COMPRESSIONS[compression]
        self._level = self._compression.default_level if level is None else level
        self._workers = os.cpu_count() or 1
        self._position = 0
        self._sectors = 0
        self._data_crc = 0
        self._tables: List[Dict[str, object]] = []
        self._partition_crcs = b""

    def add(self, partition: Partition) -> None:
        """Appends one partition. Raises ValueError if its content has another length than announced."""
        chunks: List[bytes] = []
        crc = sectors = 0
        for chunk, kind, stored in self._stored_chunks(partition.content):
            crc = zlib.crc32(chunk, crc)
            count = len(chunk) // SECTOR_SIZE
            chunks.append(CHUNK.pack(kind, 0, sectors, count, self._position, len(stored)))
            sectors += count
            self._file.write(stored)
            self._data_crc = zlib.crc32(stored, self._data_crc)
            self._position += len(stored)
        if sectors != partition.sectors:
            raise ValueError(f"{partition.name}: {sectors} sectors instead of {partition.sectors}")
        chunks.append(CHUNK.pack(END_OF_CHUNKS, 0, sectors, 0, self._position, 0))
        checksum = struct.pack(">I", crc)
        index = len(self._tables)
        header = TABLE.pack(b"mish", 1, self._sectors, sectors, 0, CHUNK_SECTORS + 8, index,
                             _CRC32, _CRC32_BITS, checksum, len(chunks))
        self._tables.append({"Attributes": "0x0050", "CFName": partition.name, "Data": header + b"".join(chunks),
                             "ID": str(index - 1), "Name": partition.name})
        self._partition_crcs += checksum
        self._sectors += sectors

    def finish(self) -> None:
        """Writes the property list and the trailer; the image is complete then."""
        listing = plistlib.dumps({"resource-fork": {"blkx": self._tables}})
        master = struct.pack(">I", zlib.crc32(self._partition_crcs))
        # Made from the contents, so that the same folder gives the same image.
        segment_id = hashlib.sha256(self._partition_crcs + listing).digest()[:16]
        trailer = dict.fromkeys(TRAILER_FIELDS, 0)
        trailer.update(
            signature=b"koly", version=4, size=TRAILER.size, flags=1, data_length=self._position,
            segment=1, segments=1, segment_id=segment_id,
            data_checksum_type=_CRC32, data_checksum_bits=_CRC32_BITS, data_checksum=struct.pack(">I", self._data_crc),
            list_offset=self._position, list_length=len(listing),
            master_checksum_type=_CRC32, master_checksum_bits=_CRC32_BITS, master_checksum=master,
            variant=1, sectors=self._sectors, reserved_1=b"", reserved_2=b"", reserved_3=b"")
        self._file.write(listing + TRAILER.pack(*trailer.values()))

    def _stored_chunks(self, content: Iterable[bytes]) -> Iterator[Tuple[bytes, int, bytes]]:
        """Chunks in order, each with its type and the bytes to store."""
        with ThreadPoolExecutor(self._workers) as pool:
            pending = deque()
            for chunk in _rechunked(content):
                pending.append((chunk, pool.submit(self._encode, chunk)))
                if len(pending) > 2 * self._workers:
                    chunk, encoded = pending.popleft()
                    yield (chunk, *encoded.result())
            for chunk, encoded in pending:
                yield (chunk, *encoded.result())

    def _encode(self, chunk: bytes) -> Tuple[int, bytes]:
        if chunk == _ZEROS[:len(chunk)]:
            return ZERO_CHUNK, b""
        packed = self._compression.compress(chunk, self._level)
        if len(packed) >= len(chunk):
            return STORED_CHUNK, chunk
        return self._compression.chunk_type, packed


def _rechunked(content: Iterable[bytes]) -> Iterator[bytes]:
    buffer = bytearray()
    for portion in content:
        buffer += portion
        while len(buffer) >= _CHUNK_SIZE:
            yield bytes(buffer[:_CHUNK_SIZE])
            del buffer[:_CHUNK_SIZE]
    if len(buffer) % SECTOR_SIZE:
        raise ValueError("the content of a partition does not end with a whole sector")
    if buffer:
        yield bytes(buffer)
