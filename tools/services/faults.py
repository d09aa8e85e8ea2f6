"""What can be made to go wrong with a service."""
from __future__ import annotations

from dataclasses import dataclass, fields
from typing import Optional

from .certificates import CERTIFICATE_KINDS

FRAMINGS = ("length", "chunked", "close")


@dataclass
class Faults:
    """The faults of one service; the defaults are none. Each request sees them as they are when it arrives.

    status: of the answer, whose body stays as it is.
    delay: seconds before the answer begins.
    hang: never answer; the connection stays open until the client or the service closes it.
    redirects: number of redirections before the answer.
    redirect_to: where the last redirection leads: a URL or path, "http" for the same path without
        TLS, or None for the same path.
    framing: how the body's end is marked, "length" (Content-Length), "chunked" or "close".
    announce: bytes by which the announced length is more (or, negative, fewer) than the body.
    cut_after: bytes of the body after which the connection breaks; with the framing "close" only a
        client that insists on the end of TLS can notice.
    bytes_per_second: speed of the body.
    certificate: "valid", "wrong-host" or "expired".
    """

    status: int = 200
    delay: float = 0.0
    hang: bool = False
    redirects: int = 0
    redirect_to: Optional[str] = None
    framing: str = "length"
    announce: int = 0
    cut_after: Optional[int] = None
    bytes_per_second: Optional[int] = None
    certificate: str = "valid"

    def __setattr__(self, name: str, value: object) -> None:
        if name not in _NAMES:
            raise AttributeError(f"no such fault: {name}")
        if name in _CHOICES and value not in _CHOICES[name]:
            raise ValueError(f"{name}: {value!r} is none of {', '.join(_CHOICES[name])}")
        if name in _LEAST and value is not None and value < _LEAST[name]:
            raise ValueError(f"{name}: {value} is less than {_LEAST[name]}")
        super().__setattr__(name, value)

    def set_text(self, name: str, value: str) -> None:
        """Sets a fault from words, as on a command line. Raises AttributeError or ValueError."""
        name = name.replace("-", "_")
        try:
            parsed = _PARSERS.get(name, str)(value)
        except ValueError:
            raise ValueError(f"{value!r} is no value for {name}") from None
        setattr(self, name, parsed)


def _flag(text: str) -> bool:
    if text not in ("", "yes", "no"):
        raise ValueError
    return text != "no"


_NAMES = {field.name for field in fields(Faults)}
_CHOICES = {"framing": FRAMINGS, "certificate": CERTIFICATE_KINDS}
_LEAST = {"status": 200, "delay": 0, "redirects": 0, "cut_after": 0, "bytes_per_second": 1}
_PARSERS = {"status": int, "delay": float, "hang": _flag, "redirects": int, "announce": int,
            "cut_after": int, "bytes_per_second": int}
