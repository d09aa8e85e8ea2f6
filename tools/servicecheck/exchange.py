"""One exchange over HTTPS under the installer's rules, and the certificates met on the way."""
from __future__ import annotations

import http.client
import math
import socket
import ssl
import time
from dataclasses import dataclass
from typing import Dict, Optional
from urllib.parse import urljoin, urlsplit

from .findings import Findings

REDIRECTS = 20
ANSWER_BYTES = 4 << 20
_SOON_DAYS = 21
_REDIRECTS = (301, 302, 303, 307, 308)
_DAY = 86400


class Unreachable(Exception):
    """No answer came; the text says why."""


@dataclass
class Answer:
    """What came back: `body` is cut after `limit` bytes, `length` is what was announced, `url` what was reached."""

    status: int
    body: bytes
    length: Optional[int]
    url: str


class Asker:
    """Asks services, trusting the system's certificates and those in the file `trusted`. Raises OSError for that file."""

    def __init__(self, findings: Findings, timeout: float, trusted: Optional[str] = None):
        self._findings = findings
        self._timeout = timeout
        self._context = ssl.create_default_context()
        self._context.minimum_version = ssl.TLSVersion.TLSv1_2
        if trusted:
            self._context.load_verify_locations(trusted)
        self._judged: set = set()

    def ask(self, url: str, *, post: Optional[bytes] = None, limit: int = ANSWER_BYTES) -> Answer:
        """Follows redirections as the installer does. Raises Unreachable."""
        for _ in range(REDIRECTS + 1):
            answer, location = self._ask_once(url, post, limit)
            if location is None:
                return answer
            target = urljoin(url, location)
            if urlsplit(url).scheme == "https" and urlsplit(target).scheme != "https":
                raise Unreachable(f"a redirection leads from an encrypted address to {target}")
            if answer.status in (301, 302, 303):
                post = None
            url = target
        raise Unreachable(f"more than {REDIRECTS} redirections")

    def greet(self, host: str) -> None:
        """Connects to a host and judges its certificate, without a request. Raises Unreachable."""
        url = f"https://{host}/"
        try:
            connection = self._connection(urlsplit(url))
            connection.connect()
        except (OSError, ValueError, http.client.HTTPException) as error:
            raise Unreachable(f"{url}: {_reason(error)}") from None
        self._judge_certificate(host, connection.sock.getpeercert() or {})
        connection.close()

    def _ask_once(self, url: str, post: Optional[bytes], limit: int):
        parts = urlsplit(url)
        try:
            connection = self._connection(parts)
        except ValueError as error:
            raise Unreachable(f"{url}: {error}") from None
        target = (parts.path or "/") + (f"?{parts.query}" if parts.query else "")
        try:
            connection.connect()
            if isinstance(connection.sock, ssl.SSLSocket):
                self._judge_certificate(parts.netloc, connection.sock.getpeercert() or {})
            headers = {"Accept": "*/*"}
            if post is not None:
                headers["content-type"] = "application/x-www-form-urlencoded"
            connection.request("GET" if post is None else "POST", target, post, headers)
            response = connection.getresponse()
            location = response.getheader("Location") if response.status in _REDIRECTS else None
            length = response.length
            body = b"" if location is not None else response.read(limit + 1)
            if length is not None and len(body) < min(length, limit + 1) and location is None:
                raise Unreachable(f"{url}: {len(body)} of {length} bytes came")
            return Answer(response.status, body, length, url), location
        except (OSError, http.client.HTTPException) as error:
            raise Unreachable(f"{url}: {_reason(error)}") from None
        finally:
            connection.close()

    def _connection(self, parts) -> http.client.HTTPConnection:
        if parts.scheme not in ("http", "https") or not parts.hostname:
            raise ValueError("neither https nor http with a host")
        if parts.scheme == "http":
            return http.client.HTTPConnection(parts.hostname, parts.port, timeout=self._timeout)
        return http.client.HTTPSConnection(parts.hostname, parts.port, timeout=self._timeout, context=self._context)

    def _judge_certificate(self, host: str, certificate: Dict) -> None:
        if host in self._judged or "notAfter" not in certificate:
            return
        self._judged.add(host)
        days = math.floor((ssl.cert_time_to_seconds(certificate["notAfter"]) - time.time()) / _DAY)
        text = f"{host}: the certificate is trusted, names the host, and is good for {days} more days"
        if days < _SOON_DAYS:
            self._findings.warn(text)
        else:
            self._findings.fine(text)


def _reason(error: Exception) -> str:
    if isinstance(error, ssl.SSLCertVerificationError):
        return f"the certificate is refused: {error.verify_message}"
    if isinstance(error, socket.timeout):
        return "no answer in time"
    if isinstance(error, http.client.IncompleteRead):
        return f"the answer broke off after {len(error.partial)} bytes"
    return str(error) or type(error).__name__
