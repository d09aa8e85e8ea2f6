"""The service that hands out the disk image."""
from __future__ import annotations

import os
from typing import Iterator, Optional

from .messages import Reply, Request, json_reply
from .service import Service

_BLOCK_SIZE = 1 << 18


class ImageService(Service):
    """Serves the file `image` (its path; None: nothing) at every path, so that any name can be tried.

    The file may be changed between requests. Also answers plain HTTP, to show whether a client
    lets itself be led there.
    """

    name = "image"
    plain_http = True
    image: Optional[str] = None

    def reply(self, request: Request) -> Reply:
        if self.image is None or request.method != "GET":
            return json_reply(404, {"code": 404, "message": "no image here"})
        try:
            with open(self.image, "rb") as file:
                size = os.fstat(file.fileno()).st_size
        except OSError as error:
            return json_reply(404, {"code": 404, "message": f"{self.image}: {error.strerror}"})
        return Reply(200, "application/octet-stream", size, _blocks(self.image))


def _blocks(path: str) -> Iterator[bytes]:
    with open(path, "rb") as file:
        while True:
            block = file.read(_BLOCK_SIZE)
            if not block:
                return
            yield block
