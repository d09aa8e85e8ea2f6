"""A service on a loopback port: accepts connections, answers requests, breaks what it is told to break."""
from __future__ import annotations

import select
import socket
import ssl
import threading
from typing import Dict, List, Optional

from .certificates import Certificates
from .exchange import Exchange
from .faults import Faults
from .journal import Journal
from .messages import Reply, Request

_POLL_SECONDS = 0.05
_IDLE_SECONDS = 60
_TLS_HANDSHAKE = b"\x16"


class Service:
    """Base of the services. Listens as soon as it is made, on 127.0.0.1 and a free port.

    Each connection has its own thread. `faults` may be changed or replaced at any time, from any
    thread. `requests` grows by one for each request that has arrived completely.
    """

    name = "service"
    plain_http = False

    def __init__(self, certificates: Certificates, journal: Journal):
        self.faults = Faults()
        self.requests: List[Request] = []
        self.journal = journal
        self.stopping = threading.Event()
        self._certificates = certificates
        self._lock = threading.Lock()
        self._connections: Dict[int, socket.socket] = {}  # by the thread that serves it
        self._accepting: Optional[threading.Thread] = None
        self._refusing = threading.Event()
        self._socket = self._bound(0)
        self.port: int = self._socket.getsockname()[1]
        self.accept_connections()

    @property
    def host(self) -> str:
        """Address and port, as they stand in a URL."""
        return f"127.0.0.1:{self.port}"

    def reply(self, request: Request) -> Reply:
        """The answer to a request, before any fault. Called on the connection's thread."""
        raise NotImplementedError

    def received(self, request: Request) -> None:
        """Takes note of a request."""
        self.requests.append(request)

    def answered(self, request: Request, status: int, sent: int, size: int) -> None:
        """Takes note of an answer of which `sent` bytes of `size` went out."""
        extent = f"{size} bytes" if sent == size else f"{sent} of {size} bytes"
        self.journal.line(self.name, f"{request.method} {request.target} -> {status}, {extent}")

    def refuse_connections(self) -> None:
        """Breaks all connections and refuses new ones, as a service that is down; the port stays ours."""
        if self._accepting is None:
            return
        self._refusing.set()
        self._accepting.join()
        self._accepting = None
        self._socket.close()
        self._socket = self._bound(self.port)
        self._break_connections()

    def accept_connections(self) -> None:
        """Accepts connections (again)."""
        if self._accepting is not None:
            return
        self._refusing.clear()
        self._socket.listen(64)
        self._accepting = threading.Thread(target=self._accept, name=f"{self.name} listener", daemon=True)
        self._accepting.start()

    def stop(self) -> None:
        """Closes the port and every connection; answers under way break off."""
        self.stopping.set()
        if self._accepting is not None:
            self._refusing.set()
            self._accepting.join()
        self._socket.close()
        self._break_connections()

    def hang_on(self, connection: socket.socket) -> None:
        """Waits until the client gives up or the service stops."""
        while not self.stopping.is_set():
            if select.select([connection], [], [], _POLL_SECONDS)[0]:
                return

    @staticmethod
    def _bound(port: int) -> socket.socket:
        listener = socket.socket()
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        listener.bind(("127.0.0.1", port))
        listener.settimeout(_POLL_SECONDS)
        return listener

    def _accept(self) -> None:
        while not self._refusing.is_set():
            try:
                connection, address = self._socket.accept()
            except socket.timeout:
                continue
            except OSError:  # out of descriptors, for instance: the next attempt may succeed
                self._refusing.wait(_POLL_SECONDS)
                continue
            threading.Thread(target=self._serve, args=(connection, address), daemon=True,
                             name=f"{self.name} connection").start()

    def _serve(self, connection: socket.socket, address: object) -> None:
        try:
            self._track(connection)
            connection.settimeout(_IDLE_SECONDS)
            secure = not self.plain_http or connection.recv(1, socket.MSG_PEEK) == _TLS_HANDSHAKE
            if secure:
                context = self._certificates.context(self.faults.certificate)
                connection = context.wrap_socket(connection, server_side=True, do_handshake_on_connect=False)
                self._track(connection)
                connection.do_handshake()
            if Exchange(connection, address, self).ended_in_order and secure:
                _say_goodbye(connection)
        except OSError as error:
            self.journal.line(self.name, f"connection broke: {error}")
        finally:
            with self._lock:
                del self._connections[threading.get_ident()]
            _shut_down(connection)
            connection.close()

    def _track(self, connection: socket.socket) -> None:
        with self._lock:
            self._connections[threading.get_ident()] = connection
        if self.stopping.is_set():
            _shut_down(connection)

    def _break_connections(self) -> None:
        with self._lock:
            for connection in self._connections.values():
                _shut_down(connection)


def _say_goodbye(connection: ssl.SSLSocket) -> None:
    """Tells the client that the body ends here and was not cut; does not wait for its answer."""
    connection.settimeout(0)
    try:
        connection.unwrap()
    except (OSError, ValueError):
        pass


def _shut_down(connection: socket.socket) -> None:
    try:
        # Not the method of SSLSocket: that one pulls the TLS state from under the thread that uses it.
        socket.socket.shutdown(connection, socket.SHUT_RDWR)
    except OSError:
        pass
