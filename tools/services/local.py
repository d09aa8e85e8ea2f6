"""All three services together."""
from __future__ import annotations

import json
import os
import shutil
import tempfile
from contextlib import ExitStack
from typing import Optional, TextIO, Union

from .binaries import BinariesService
from .certificates import Certificates
from .image import ImageService
from .journal import Journal
from .log import LogService


class LocalServices:
    """The binaries, image and log services, running while the `with` block does.

    `binaries`, `image` and `log` are the running services; `certificate` is the file with the root
    certificate to trust. Unless `download_url` is given, the binaries service points to
    `image_path` on the image service. `events_file` is appended to. Raises OSError or RuntimeError
    on entry if the services cannot be started.
    """

    binaries: BinariesService
    image: ImageService
    log: LogService
    certificate: str

    def __init__(self, image: Optional[str] = None, *, image_path: str = "/Tolvix.dmg", version: str = "5.1.0",
                 download_url: Optional[str] = None, check_body: Optional[Union[bytes, str]] = None,
                 events_file: Optional[str] = None, output: Optional[TextIO] = None):
        self._image = image
        self._image_path = image_path
        self._version = version
        self._download_url = download_url
        self._check_body = check_body
        self._events_file = events_file
        self._output = output
        self._running = ExitStack()

    def __enter__(self) -> LocalServices:
        with ExitStack() as running:
            folder = tempfile.mkdtemp(prefix="tolvix-services-")
            running.callback(shutil.rmtree, folder, ignore_errors=True)
            certificates = Certificates(folder)
            self.certificate = certificates.root
            events = None
            if self._events_file is not None:
                events = running.enter_context(open(self._events_file, "a", encoding="utf-8"))
            journal = Journal(self._output)
            for kind in (BinariesService, ImageService, LogService):
                service = kind(certificates, journal)
                running.callback(service.stop)
                setattr(self, kind.name, service)
            self.binaries.version = self._version
            self.binaries.download_url = self._download_url or f"https://{self.image.host}{self._image_path}"
            self.binaries.body = self._check_body
            self.image.image = self._image
            self.log.events_file = events
            self._running = running.pop_all()
        return self

    def __exit__(self, *_) -> None:
        self._running.close()

    def write_ready_file(self, path: str) -> None:
        """Writes where the services are, as one step; the file is removed when they end.

        Raises FileExistsError if there is such a file: it belongs to somebody else.
        """
        path = os.path.abspath(path)
        facts = {"binaries": self.binaries.host, "image": self.image.host, "log": self.log.host,
                 "certificate": self.certificate, "pid": os.getpid()}
        with tempfile.NamedTemporaryFile("w", dir=os.path.dirname(path), prefix=".ready-") as file:
            json.dump(facts, file)
            file.flush()
            try:
                os.link(file.name, path)
            except FileExistsError:
                raise FileExistsError(f"there is a {path} already") from None
        self._running.callback(os.unlink, path)
