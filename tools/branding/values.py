"""The values of a brand, and what each may be: they end up in addresses, in events that nothing escapes, in file names."""
from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Callable, Optional


class BrandError(Exception):
    """Why there is no brand; the text names the value or the file."""


def _name(text: str) -> Optional[str]:
    if not text or text != text.strip():
        return "is empty, or begins or ends with a blank"
    if len(text.encode()) > 200:
        return "is longer than a file name can be"
    if text[0] in ".-":
        return f'begins with "{text[0]}", which hides a file or looks like an option'
    bad = next((char for char in text if char in '/\\:"' or not char.isprintable()), None)
    return None if bad is None else f"holds {bad!r}, which cannot be in the name of a file everywhere"


def _partner(text: str) -> Optional[str]:
    if not text or len(text) > 64:
        return "is empty or longer than 64 characters"
    bad = next((char for char in text if not re.match(r"[A-Za-z0-9._-]", char)), None)
    if bad is None:
        return None
    if not bad.isascii():
        return f"holds {bad!r}: the check would be asked for the partner (null), and events would lose their end"
    return f"holds {bad!r}, which would be read as something else in the check's query or in the body of an event"


_LABEL = r"[A-Za-z0-9](?:[A-Za-z0-9-]{0,61}[A-Za-z0-9])?"


def _host(text: str) -> Optional[str]:
    found = re.fullmatch(rf"({_LABEL}(?:\.{_LABEL})*)(?::([0-9]+))?", text)
    if not found or len(found[1]) > 253:
        return "is no host; a host is a name such as binaries.example, and may carry a port: no scheme, no path"
    if found[2] is not None and not 1 <= int(found[2]) <= 65535:
        return f"has the port {found[2]}, which is not between 1 and 65535"
    return None


def _identifier(text: str) -> Optional[str]:
    if len(text) > 155 or not re.fullmatch(r"[A-Za-z][A-Za-z0-9-]*(?:\.[A-Za-z][A-Za-z0-9-]*)+", text):
        return "is no identifier of the form com.example.installer: words of letters, digits and hyphens, joined by dots"
    return None


def _number(text: str) -> Optional[str]:
    return None if re.fullmatch(r"[0-9]{1,18}", text) else "is no number"


@dataclass(frozen=True)
class Kind:
    """One value: its option, its key in the bundle's information, its help, and what is wrong with a text, if anything."""

    option: str
    key: str
    help: str
    fault: Callable[[str], Optional[str]]

    def check(self, text: str) -> None:
        """Raises BrandError for a text that cannot be the value."""
        reason = self.fault(text)
        if reason is not None:
            raise BrandError(f"{self.option}: {text!r} {reason}")


KINDS = (
    Kind("--name", "CFBundleName", "of the installer", _name),
    Kind("--partner", "TXPartnerName", "the partner that is reported where none was before", _partner),
    Kind("--identifier", "CFBundleIdentifier", "of the installer, such as com.example.installer", _identifier),
    Kind("--binaries-host", "TXBinariesHost", "the service that names the image", _host),
    Kind("--log-host", "TXInstallerLogHost", "the service that takes events", _host),
    Kind("--support-host", "TXSupportHost", "of the help page", _host),
    Kind("--store-host", "TXStoreHost", "of the product's page in the store", _host),
    Kind("--store-identifier", "TXStoreIdentifier", "of the product in the store", _number),
    Kind("--product-identifier", "TXProductBundleIdentifier", "of the product, to find its running copies", _identifier),
    Kind("--preferences-domain", "TXAgentPreferencesDomain", "where the installer's identifier is kept", _identifier),
)
