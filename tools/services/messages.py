"""What goes in and out of a service, before any fault."""
from __future__ import annotations

import json
import re
from dataclasses import dataclass
from email.message import Message
from typing import Dict, Iterable, Sequence


@dataclass(frozen=True)
class Request:
    """A request as it arrived at `time` seconds. `target` is path and query, `secure` means over TLS."""

    time: float
    method: str
    target: str
    headers: Message
    body: bytes
    secure: bool

    @property
    def path(self) -> str:
        return self.target.partition("?")[0]

    @property
    def query(self) -> str:
        return self.target.partition("?")[2]


@dataclass(frozen=True)
class Reply:
    """An answer: `size` bytes in all come out of `blocks`."""

    status: int
    content_type: str
    size: int
    blocks: Iterable[bytes]


def json_reply(status: int, body: object) -> Reply:
    """An answer with a JSON text; bytes are sent as they are."""
    data = body if isinstance(body, bytes) else json.dumps(body).encode()
    return Reply(status, "application/json", len(data), [data])


def split_pairs(text: str, keys: Sequence[str]) -> Dict[str, str]:
    """The values of the known keys in "key=value" pairs joined by "&", as they stand there.

    Values are not escaped by the client: an "&" that no known key follows belongs to the value.
    """
    known = "|".join(map(re.escape, sorted(keys, key=len, reverse=True)))
    marks = list(re.finditer(f"(?:^|&)({known})=", text))
    ends = [mark.start() for mark in marks[1:]] + [len(text)]
    return {mark[1]: text[mark.end():end] for mark, end in zip(marks, ends)}
