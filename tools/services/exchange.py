"""Reads requests from one connection and sends the answers with the service's faults."""
from __future__ import annotations

import dataclasses
import http.server
import re
import ssl
from typing import Iterator

from .faults import Faults
from .messages import Reply, Request

_BLOCK_SIZE = 1 << 18
_PORTIONS_PER_SECOND = 20
_HOP = re.compile(r"/hop/(\d+)(/.*)", re.DOTALL)
_STATUSES_WITHOUT_BODY = (204, 304)


class Exchange(http.server.BaseHTTPRequestHandler):
    """Handles one connection from its first request to its end, within the constructor.

    `ended_in_order` tells afterwards whether the connection may be closed as after a whole answer.
    """

    protocol_version = "HTTP/1.1"
    server_version = "LocalServices"
    sys_version = ""
    disable_nagle_algorithm = True  # head and body go out in two writes

    def __init__(self, connection, address, service):
        self.ended_in_order = True
        self._service = service
        super().__init__(connection, address, None)

    def do_GET(self) -> None:
        self._handle()

    def do_POST(self) -> None:
        self._handle()

    def log_message(self, format: str, *args) -> None:
        """Says nothing here: the services keep the journal."""

    def _handle(self) -> None:
        length = self.headers.get("Content-Length", "0")
        if "Transfer-Encoding" in self.headers or not length.isdecimal():
            self.send_error(411)
            return
        body = self.rfile.read(int(length))
        if len(body) < int(length):
            self._break_off()
            return
        faults = dataclasses.replace(self._service.faults)
        request = Request(self._service.journal.now(), self.command, self.path, self.headers, body,
                          isinstance(self.connection, ssl.SSLSocket))
        self._service.received(request)
        if faults.hang:
            self._service.hang_on(self.connection)
            self._break_off()
            return
        self._service.stopping.wait(faults.delay)
        hop = _HOP.fullmatch(request.target)
        hops_left = int(hop[1]) if hop else faults.redirects
        target = hop[2] if hop else request.target
        if hops_left > 0:
            self._redirect(target, hops_left - 1, faults)
        else:
            self._send(request, self._service.reply(dataclasses.replace(request, target=target)), faults)

    def _redirect(self, target: str, hops_left: int, faults: Faults) -> None:
        location = f"https://{self._service.host}/hop/{hops_left}{target}"
        if hops_left == 0 and faults.redirect_to == "http":
            location = f"http://{self._service.host}/hop/0{target}"
        elif hops_left == 0 and faults.redirect_to:
            relative = faults.redirect_to.startswith("/")
            location = f"/hop/0{faults.redirect_to}" if relative else faults.redirect_to
        self.send_response(302)
        self.send_header("Location", location)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def _send(self, request: Request, reply: Reply, faults: Faults) -> None:
        status = reply.status if faults.status == 200 else faults.status
        self.send_response(status)
        self.send_header("Content-Type", reply.content_type)
        if faults.framing == "length":
            self.send_header("Content-Length", str(max(0, reply.size + faults.announce)))
        elif faults.framing == "chunked":
            self.send_header("Transfer-Encoding", "chunked")
        if faults.framing == "close" or faults.announce:
            self.send_header("Connection", "close")
        self.end_headers()
        if status in _STATUSES_WITHOUT_BODY:
            return
        sent = 0
        try:
            for portion in self._portions(reply, faults):
                self.wfile.write(b"%x\r\n%b\r\n" % (len(portion), portion) if faults.framing == "chunked" else portion)
                sent += len(portion)
        finally:
            self._service.answered(request, status, sent, reply.size)
        if sent < reply.size:
            self._break_off()
        elif faults.framing == "chunked":
            self.wfile.write(b"0\r\n\r\n")

    def _portions(self, reply: Reply, faults: Faults) -> Iterator[memoryview]:
        """The body at the wanted speed, up to where it is cut."""
        left = reply.size if faults.cut_after is None else min(reply.size, faults.cut_after)
        rate = faults.bytes_per_second
        portion_size = max(1, rate // _PORTIONS_PER_SECOND) if rate else _BLOCK_SIZE
        for block in reply.blocks:
            view = memoryview(block)[:left]
            left -= len(view)
            for start in range(0, len(view), portion_size):
                portion = view[start:start + portion_size]
                if self._service.stopping.wait(len(portion) / rate if rate else 0):
                    return
                yield portion

    def _break_off(self) -> None:
        self.ended_in_order = False
        self.close_connection = True
