"""Reads a journal: one JSON object a line, with the time of arrival and the body of one event."""
from __future__ import annotations

import json
import math
from datetime import datetime
from typing import Iterable, List, Tuple

from services.log import Event, parse_event


class BadLine(ValueError):
    """A line that holds no event; the text says why."""


def read_journal(lines: Iterable[str]) -> Tuple[List[Event], List[str]]:
    """The events in the order of the lines, and a sentence about each line that could not be read."""
    events, complaints = [], []
    for number, line in enumerate(lines, 1):
        if not line.strip():
            continue
        try:
            events.append(_event(line))
        except BadLine as error:
            complaints.append(f"line {number}: {error}")
    return events, complaints


def _event(line: str) -> Event:
    try:
        entry = json.loads(line)
    except (ValueError, RecursionError):
        raise BadLine("not JSON") from None
    if not isinstance(entry, dict):
        raise BadLine("not a JSON object")
    if not isinstance(entry.get("body"), str):
        raise BadLine('no text "body"')
    return parse_event(_seconds(entry.get("time")), entry["body"].encode(errors="replace"))


def _seconds(value: object) -> float:
    if isinstance(value, str):
        try:
            value = datetime.fromisoformat(value.replace("Z", "+00:00")).timestamp()
        except (ValueError, OverflowError):
            raise BadLine(f'"time" {value!r} is no date of the form 2026-01-31T12:00:00Z') from None
    if isinstance(value, bool) or not isinstance(value, (int, float)) or not math.isfinite(value):
        raise BadLine('no "time", in seconds since 1970 or as a date')
    try:
        datetime.fromtimestamp(value)
    except (ValueError, OverflowError, OSError):
        raise BadLine(f'"time" {value} is out of range') from None
    return float(value)
