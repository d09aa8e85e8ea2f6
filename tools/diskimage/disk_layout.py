"""What surrounds the volume in an image: nothing but a name, or a whole disk with a GPT."""
from __future__ import annotations

import struct
import uuid
import zlib
from typing import List

from .udif import SECTOR_SIZE, Partition

LAYOUTS = ("volume", "disk")

_HFS_TYPE = uuid.UUID("48465300-0000-11AA-AA11-00306543ECAC")
# Fixed ids keep images reproducible; nothing tells images apart by them.
_DISK_ID = uuid.UUID("8c1f6c1e-4f0b-4d52-9a07-5d2b8f3a6e10")
_PARTITION_ID = uuid.UUID("3a7de5b4-96c2-4b1f-8e43-c0f1d92a7b65")

_TABLE_ENTRIES, _ENTRY_SIZE = 128, 128
_TABLE_SECTORS = _TABLE_ENTRIES * _ENTRY_SIZE // SECTOR_SIZE
_VOLUME_START = 40  # the first sector behind the table that begins a 4 KiB block
_FREE_BEHIND = 7    # makes the disk end with a whole 4 KiB block
_GPT_HEADER = struct.Struct("<8sIIIIQQQQ16sQIII")
_HEADER_SIZE = 92


def partitions(layout: str, volume: Partition) -> List[Partition]:
    """The partitions of an image that holds the volume in one of LAYOUTS."""
    if layout == "volume":
        return [Partition("whole disk (Apple_HFSX : 0)", volume.sectors, volume.content)]
    table_end = 2 + _TABLE_SECTORS
    volume_end = _VOLUME_START + volume.sectors
    spare_table = volume_end + _FREE_BEHIND
    total = spare_table + _TABLE_SECTORS + 1
    table = _table(volume_end - 1)
    return [
        _fixed("Protective Master Boot Record (MBR : 0)", _boot_record(total)),
        _fixed("GPT Header (Primary GPT Header : 1)", _header(1, total - 1, 2, total, table)),
        _fixed("GPT Partition Data (Primary GPT Table : 2)", table),
        _fixed(" (Apple_Free : 3)", bytes((_VOLUME_START - table_end) * SECTOR_SIZE)),
        Partition("disk image (Apple_HFSX : 4)", volume.sectors, volume.content),
        _fixed(" (Apple_Free : 5)", bytes(_FREE_BEHIND * SECTOR_SIZE)),
        _fixed("GPT Partition Data (Backup GPT Table : 6)", table),
        _fixed("GPT Header (Backup GPT Header : 7)", _header(total - 1, 1, spare_table, total, table)),
    ]


def _fixed(name: str, content: bytes) -> Partition:
    return Partition(name, len(content) // SECTOR_SIZE, [content])


def _boot_record(total: int) -> bytes:
    entry = struct.pack("<B3sB3sII", 0, b"\0\x02\0", 0xEE, b"\xff\xff\xff", 1, min(total - 1, 0xFFFFFFFF))
    return bytes(446) + entry + bytes(48) + b"\x55\xaa"


def _table(last_sector: int) -> bytes:
    name = "disk image".encode("utf-16-le").ljust(72, b"\0")
    entry = _HFS_TYPE.bytes_le + _PARTITION_ID.bytes_le + struct.pack("<QQQ", _VOLUME_START, last_sector, 0) + name
    return entry.ljust(_TABLE_ENTRIES * _ENTRY_SIZE, b"\0")


def _header(own: int, other: int, table_start: int, total: int, table: bytes) -> bytes:
    def packed(checksum: int) -> bytes:
        return _GPT_HEADER.pack(b"EFI PART", 0x10000, _HEADER_SIZE, checksum, 0, own, other,
                                2 + _TABLE_SECTORS, total - _TABLE_SECTORS - 2, _DISK_ID.bytes_le,
                                table_start, _TABLE_ENTRIES, _ENTRY_SIZE, zlib.crc32(table))
    return packed(zlib.crc32(packed(0))).ljust(SECTOR_SIZE, b"\0")
