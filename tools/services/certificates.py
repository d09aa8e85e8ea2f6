"""Short-lived certificates for loopback hosts, made with the openssl command line."""
from __future__ import annotations

import os
import ssl
import subprocess
import threading
from typing import Dict, List

_CONFIGURATION = """\
[req]
distinguished_name = subject
prompt = no
[subject]
CN = Tolvix local services
[root]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign
subjectKeyIdentifier = hash
[this-host]
basicConstraints = critical, CA:FALSE
extendedKeyUsage = serverAuth
subjectAltName = IP:127.0.0.1, DNS:localhost
[other-host]
basicConstraints = critical, CA:FALSE
extendedKeyUsage = serverAuth
subjectAltName = DNS:elsewhere.invalid
"""

# Kind of certificate: the section above and the days until it expires.
_KINDS = {"valid": ("this-host", 2), "wrong-host": ("other-host", 2), "expired": ("this-host", -1)}
CERTIFICATE_KINDS = tuple(_KINDS)


class Certificates:
    """A root certificate and, made when first asked for, one server certificate of each kind.

    Everything is written into `folder`, which belongs to the caller. Any thread may call `context`.
    Raises OSError or RuntimeError if openssl is missing or fails.
    """

    def __init__(self, folder: str):
        self._folder = folder
        self._lock = threading.Lock()
        self._contexts: Dict[str, ssl.SSLContext] = {}
        with open(os.path.join(folder, "openssl.cnf"), "x", encoding="ascii") as file:
            file.write(_CONFIGURATION)
        self._new_key("root.key")
        self._openssl(["req", "-new", "-x509", "-config", "openssl.cnf", "-extensions", "root", "-sha256",
                       "-days", "2", "-key", "root.key", "-out", "root.pem"])
        self._new_key("server.key")
        self.context("valid")

    @property
    def root(self) -> str:
        """The file with the certificate that a client has to trust."""
        return os.path.join(self._folder, "root.pem")

    def context(self, kind: str) -> ssl.SSLContext:
        """The server side of TLS with the certificate of that kind (one of CERTIFICATE_KINDS)."""
        with self._lock:
            if kind not in self._contexts:
                self._make(kind)
                context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
                context.set_alpn_protocols(["http/1.1"])
                context.load_cert_chain(os.path.join(self._folder, f"{kind}.pem"),
                                        os.path.join(self._folder, "server.key"))
                self._contexts[kind] = context
            return self._contexts[kind]

    def _make(self, kind: str) -> None:
        section, days = _KINDS[kind]
        self._openssl(["req", "-new", "-config", "openssl.cnf", "-subj", f"/CN={kind}",
                       "-key", "server.key", "-out", f"{kind}.csr"])
        self._openssl(["x509", "-req", "-in", f"{kind}.csr", "-CA", "root.pem", "-CAkey", "root.key", "-sha256",
                       "-set_serial", str(2 + CERTIFICATE_KINDS.index(kind)), "-days", str(days),
                       "-extfile", "openssl.cnf", "-extensions", section, "-out", f"{kind}.pem"])

    def _new_key(self, name: str) -> None:
        self._openssl(["ecparam", "-name", "prime256v1", "-genkey", "-noout", "-out", name])

    def _openssl(self, arguments: List[str]) -> None:
        done = subprocess.run(["openssl"] + arguments, cwd=self._folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
        if done.returncode != 0:
            raise RuntimeError(f"openssl {arguments[0]} failed: {done.stderr.decode(errors='replace').strip()}")
