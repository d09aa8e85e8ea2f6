"""Sorts events into installations and runs, and tells how each run ended."""
from __future__ import annotations

from collections import defaultdict
from dataclasses import dataclass
from typing import Dict, Iterable, List, Optional, Sequence, Tuple

from services.log import STEPS, Event

# A run only ever moves forward through these, so their order also mends events that overtook each other on the way.
_ORDER = {code: place for place, code in enumerate(
    ("23.01", "23.11", "23.12", "23.13", "23.51", "23.21", "23.22", "23.23", "23.31", "23.32", "23.33", "23.34",
     "23.42", "23.43", "23.52", "23.53", "23.54"))}

FUNNEL = (("23.01", "launched"), ("23.12", "found"), ("23.21", "download"), ("23.22", "downloaded"),
          ("23.31", "install"), ("23.32", "installed"))

_FAILED = {"23.13": "the check failed", "23.23": "the download failed", "23.33": "the installation failed"}
_UNDER_WAY = (("23.31", "during the installation"), ("23.21", "during the download"), ("23.11", "during the check"))
CHOICES = {"23.42": "downloads manually", "23.43": "quits", "23.52": "downloads manually", "23.53": "quits",
           "23.54": "opens the store"}

UNKNOWN = "(unknown)"
NONE = "(none)"


@dataclass
class Run:
    """One run of an installer: its events, in the order in which they were sent."""

    events: List[Event]

    @property
    def steps(self) -> List[str]:
        return [event.step for event in self.events]

    @property
    def start(self) -> float:
        return min(event.time for event in self.events)

    @property
    def seconds(self) -> float:
        """From the first event's arrival to the last one's."""
        return max(event.time for event in self.events) - self.start

    @property
    def ending(self) -> str:
        """Where the run ended."""
        steps = set(self.steps)
        for code, text in _FAILED.items():
            if code in steps:
                return text
        if "23.34" in steps:
            return "installed, but the product did not start"
        if "23.32" in steps:
            return "installed"
        for code, text in _UNDER_WAY:
            if code in steps:
                return f"broken off {text}"
        return "broken off at the start"

    @property
    def choice(self) -> Optional[str]:
        """What the person chose in an alert, if an event tells."""
        return next((CHOICES[step] for step in self.steps if step in CHOICES), None)

    def timeline(self) -> List[Tuple[float, float, str, str]]:
        """For each event: seconds since the start, seconds since the event before, step, meaning."""
        rows, before = [], self.start
        for event in self.events:
            moment = max(event.time, before)  # one that was overtaken counts as sent when the next one arrived
            rows.append((moment - self.start, moment - before, event.step or "?", STEPS.get(event.step, "unknown step")))
            before = moment
        return rows


@dataclass
class Installation:
    """All runs of one installer identifier, the first one first."""

    identifier: str
    runs: List[Run]

    def reached(self, step: str) -> bool:
        """Whether any run got to that step of FUNNEL; a later step tells so where the step's own event was lost."""
        codes = [code for code, _ in FUNNEL]
        enough = {*codes[codes.index(step):], "23.34"}  # a product that does not start is installed
        return any(enough & set(run.steps) for run in self.runs)

    @property
    def installer_version(self) -> str:
        version, build = self._last_field("launcherVersion"), self._last_field("buildVersion")
        return f"{version} ({build})" if version and build else version or UNKNOWN

    @property
    def product_version(self) -> str:
        return self._last_field("version") or NONE

    @property
    def language(self) -> str:
        return self._last_field("lang") or UNKNOWN

    @property
    def partner(self) -> str:
        contents = [event.content for run in self.runs for event in run.events]
        names = [content.get("partnerName") for content in contents if isinstance(content, dict)]
        if not names:
            return UNKNOWN
        return next((str(name) for name in reversed(names) if name), NONE)

    def _last_field(self, key: str) -> str:
        values = [event.fields.get(key) for run in self.runs for event in run.events]
        return next((value for value in reversed(values) if value), "")


GROUPINGS = (("installer version", "installer_version"), ("product version", "product_version"),
             ("language", "language"), ("partner", "partner"))


def installations(events: Iterable[Event]) -> List[Installation]:
    """The events by installation, in the order of their first events."""
    by_identifier: Dict[str, List[Event]] = defaultdict(list)
    for event in sorted(events, key=lambda event: event.time):
        by_identifier[event.fields.get("anonymouscomputerid") or UNKNOWN].append(event)
    return [Installation(identifier, _runs(own)) for identifier, own in by_identifier.items()]


def _runs(events: Sequence[Event]) -> List[Run]:
    """A step that comes again begins the next run; the store edition alone may be reported twice in one."""
    runs: List[List[Event]] = []
    for event in events:
        seen = {earlier.step for earlier in runs[-1]} if runs else set()
        if not runs or (event.step in seen and event.step != "23.51"):
            runs.append([])
        runs[-1].append(event)
    return [Run(sorted(run, key=lambda event: _ORDER.get(event.step, len(_ORDER)))) for run in runs]


def counts(found: Sequence[Installation]) -> List[int]:
    """How many of the installations reached each step of FUNNEL."""
    return [sum(one.reached(step) for one in found) for step, _ in FUNNEL]


def grouped(found: Sequence[Installation], attribute: str) -> List[Tuple[str, List[int]]]:
    """The counts for each value of one of GROUPINGS, the largest group first."""
    groups: Dict[str, List[Installation]] = defaultdict(list)
    for one in found:
        groups[getattr(one, attribute)].append(one)
    rows = [(value, len(members), counts(members)) for value, members in groups.items()]
    return [(value, reached) for value, _, reached in sorted(rows, key=lambda row: (-row[1], row[0]))]
