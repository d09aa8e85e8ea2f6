"""Shows installations in a terminal."""
from __future__ import annotations

from datetime import datetime, timezone
from typing import Iterator, Sequence

from services.journal import visible

from .runs import FUNNEL, GROUPINGS, Installation, counts, grouped


def moment(seconds: float) -> str:
    """A time of day in UTC, readable anywhere."""
    return datetime.fromtimestamp(seconds, timezone.utc).strftime("%Y-%m-%d %H:%M:%S UTC")


def duration(seconds: float) -> str:
    if seconds < 60:
        return f"{seconds:.2f} s"
    minutes, rest = divmod(int(seconds), 60)
    return f"{minutes} min {rest:02} s" if minutes < 60 else f"{minutes // 60} h {minutes % 60:02} min"


def facts(one: Installation) -> str:
    return (f"installer {one.installer_version} · product {one.product_version} · {one.language} · "
            f"partner {one.partner}")


def ending(run) -> str:
    return run.ending + (f"; the person {run.choice}" if run.choice else "")


def runs_text(found: Sequence[Installation]) -> Iterator[str]:
    """Each run as a time line."""
    for one in found:
        yield visible(f"{one.identifier}  {facts(one)}")
        for run in one.runs:
            yield f"  {moment(run.start)}, {duration(run.seconds)}: {ending(run)}"
            for since_start, since_last, step, meaning in run.timeline():
                yield visible(f"    {duration(since_start):>12}  {'+' + duration(since_last):>12}  {step:5}  {meaning}")
        yield ""


def funnel_text(found: Sequence[Installation]) -> Iterator[str]:
    """How many installations reached each step, over all and by group."""
    runs = sum(len(one.runs) for one in found)
    yield f"installations: {len(found)}, runs: {runs}"
    for title, rows in [("", [("all", counts(found))]), *((f"by {name}", grouped(found, attribute))
                                                          for name, attribute in GROUPINGS)]:
        shown = [(visible(value), reached) for value, reached in rows]
        width = max(len(title), *(len(value) for value, _ in shown), 20)
        yield ""
        yield f"{title:{width}}" + "".join(f"{name:>12}" for _, name in FUNNEL)
        for value, reached in shown:
            yield f"{value:{width}}" + "".join(f"{number:>12}" for number in reached)
