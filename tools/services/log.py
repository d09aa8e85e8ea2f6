"""The service that takes the installer's events."""
from __future__ import annotations

import json
import re
import threading
import time
from dataclasses import dataclass
from typing import Dict, List, Optional, TextIO

from .certificates import Certificates
from .journal import Journal
from .messages import Reply, Request, json_reply, split_pairs
from .service import Service

PATH = "/1/installerlog/create"
KEYS = ("anonymouscomputerid", "os", "version", "osversion", "country", "oscountry", "lang", "oslang",
        "launcherVersion", "buildVersion", "freshInstall", "step", "content")

STEPS = {
    "23.01": "launched",
    "23.11": "check starts",
    "23.12": "check ended",
    "23.13": "check failed",
    "23.21": "download starts",
    "23.22": "download ended",
    "23.23": "download failed",
    "23.31": "install starts",
    "23.32": "install ended",
    "23.33": "install failed",
    "23.34": "launch of the product failed",
    "23.42": "failure alert: manual download chosen",
    "23.43": "failure alert: quit chosen",
    "23.51": "store edition found",
    "23.52": "store warning: manual download chosen",
    "23.53": "store warning: quit chosen",
    "23.54": "store warning: store opened",
}


@dataclass(frozen=True)
class Event:
    """One event: seconds since the start, the form's fields, its JSON content (None if unreadable), the raw body."""

    time: float
    fields: Dict[str, str]
    content: Optional[object]
    raw: bytes

    @property
    def step(self) -> str:
        return self.fields.get("step", "")

    @property
    def meaning(self) -> str:
        return STEPS.get(self.step, "unknown step")


def parse_event(seconds: float, body: bytes) -> Event:
    """Reads the body of an event. Never fails: what cannot be read is left out."""
    text = body.decode(errors="replace")
    fields: Dict[str, str] = {}
    content = None
    mark = re.search(r"(?:^|&)content=(?=\{)", text)
    if mark:
        # JSON tells where it ends, so whatever its strings hold cannot be taken for a field.
        try:
            content, end = json.JSONDecoder().raw_decode(text, mark.end())
        except (ValueError, RecursionError):
            pass
        else:
            fields["content"] = text[mark.end():end]
            text = text[:mark.start()] + text[end:]
    fields.update(split_pairs(text, [key for key in KEYS if key not in fields]))
    return Event(seconds, fields, content, body)


class LogService(Service):
    """Takes events; `events` holds them in the order of arrival. `events_file` gets one JSON object per line, the
    journal that tools/log_viewer.py reads; docs/service.md describes it."""

    name = "log"
    events_file: Optional[TextIO] = None

    def __init__(self, certificates: Certificates, journal: Journal):
        self.events: List[Event] = []
        self._arrival = threading.Condition()
        super().__init__(certificates, journal)

    def received(self, request: Request) -> None:
        super().received(request)
        if request.method != "POST" or request.path != PATH:
            return
        event = parse_event(request.time, request.body)
        with self._arrival:
            self.events.append(event)
            if self.events_file is not None:
                self.events_file.write(_json_line(event))
                self.events_file.flush()
            self.journal.line(self.name, _readable(event))
            self._arrival.notify_all()

    def answered(self, request: Request, status: int, sent: int, size: int) -> None:
        if status != 200 or sent < size:
            super().answered(request, status, sent, size)

    def reply(self, request: Request) -> Reply:
        if request.method != "POST" or request.path != PATH:
            return json_reply(404, {"code": 404, "message": f"nothing at {request.path}"})
        return json_reply(200, {"code": 200})

    @property
    def steps(self) -> List[str]:
        """The step codes so far, in the order of arrival."""
        return [event.step for event in list(self.events)]

    def wait_for_step(self, step: str, timeout: float) -> bool:
        """Waits until an event with that step has arrived; False after `timeout` seconds without one."""
        with self._arrival:
            return self._arrival.wait_for(lambda: step in self.steps, timeout)


def _json_line(event: Event) -> str:
    return json.dumps({"time": round(time.time(), 6), "body": event.raw.decode(errors="replace"), "step": event.step,
                       "meaning": event.meaning, "fields": event.fields, "content": event.content}) + "\n"


def _readable(event: Event) -> str:
    details = {key: value for key, value in event.fields.items() if key not in ("step", "content")}
    if isinstance(event.content, dict):
        details.update(event.content)
    values = " ".join(f"{key}={value}" for key, value in details.items())
    return f"{event.step:5}  {event.meaning:37}  {values}"
