"""The service that names the newest disk image."""
from __future__ import annotations

from typing import Callable, Dict, List, Optional, Union
from urllib.parse import unquote

from .messages import Reply, Request, json_reply, split_pairs
from .service import Service

PATH = "/5/binaries/query"
KEYS = ("platform", "target", "format", "currentSoftwareVersion", "os", "partner")

_DEPTH = 100_000
_HUGE = 64 * 1024 * 1024

# Answers that a client must survive, by name.
BODIES: Dict[str, Callable[[], bytes]] = {
    "not-json": lambda: b"<html>Welcome to the hotel network</html>",
    "array": lambda: b'[{"code": 200}]',
    "wrong-types": lambda: b'{"code": {"a": 1}, "message": [7], "content": "text"}',
    "wrong-content": lambda: b'{"code": 200, "content": {"download_url": 7, "version": ["5"]}}',
    "deep": lambda: b"[" * _DEPTH + b"]" * _DEPTH,
    "empty": lambda: b"",
    "huge": lambda: b'{"code": 500, "message": "' + b"x" * _HUGE + b'"}',
    "no-content": lambda: b'{"code": 200}',
    "code-404": lambda: b'{"code": 404, "message": "Not found"}',
}

STRING_CODE = "string-code"  # the right answer, but with its code as a string


class BinariesService(Service):
    """Answers queries with `download_url` and `version`; `queries` holds every query's values.

    All may be changed at any time. `body` replaces the answer: None (no), raw bytes, a name of
    BODIES, or STRING_CODE.
    """

    name = "binaries"
    download_url = ""
    version = ""
    body: Optional[Union[bytes, str]] = None

    @property
    def queries(self) -> List[Dict[str, str]]:
        """The unescaped values of each query that arrived, in order; missing keys are missing."""
        return [_values(request) for request in list(self.requests) if request.path == PATH]

    def reply(self, request: Request) -> Reply:
        if request.path != PATH or request.method != "GET":
            return json_reply(404, {"code": 404, "message": f"nothing at {request.path}"})
        missing = [key for key in KEYS if key not in _values(request)]
        if missing:
            return json_reply(400, {"code": 400, "message": f"missing: {', '.join(missing)}"})
        answer = {"code": 200, "content": {"download_url": self.download_url, "version": self.version}}
        if self.body == STRING_CODE:
            answer["code"] = "200"
        elif self.body is not None:
            return json_reply(200, self.body if isinstance(self.body, bytes) else BODIES[self.body]())
        return json_reply(200, answer)


def _values(request: Request) -> Dict[str, str]:
    return {key: unquote(value) for key, value in split_pairs(request.query, KEYS).items()}
