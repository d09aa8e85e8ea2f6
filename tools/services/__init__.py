"""Local stand-ins for the web services that the installer talks to, with faults on demand."""
from .faults import Faults
from .local import LocalServices

__all__ = ["Faults", "LocalServices"]
