"""What a check has found out."""
from __future__ import annotations

from dataclasses import dataclass, field
from typing import List, Tuple

FINE, WARNING, FAILURE = "ok", "warning", "FAILURE"


@dataclass
class Findings:
    """Sentences in the order in which they were found, each with its weight.

    A failure stops an installation; a warning is something that installs today and ought not to stay so.
    """

    lines: List[Tuple[str, str]] = field(default_factory=list)

    def fine(self, text: str) -> None:
        self.lines.append((FINE, text))

    def warn(self, text: str) -> None:
        self.lines.append((WARNING, text))

    def fail(self, text: str) -> None:
        self.lines.append((FAILURE, text))

    @property
    def failed(self) -> bool:
        return any(weight == FAILURE for weight, _ in self.lines)

    def texts(self, weight: str) -> List[str]:
        return [text for own, text in self.lines if own == weight]
