"""Shows installations as one page that needs nothing else."""
from __future__ import annotations

from html import escape
from typing import Iterator, Sequence

from services.journal import visible

from .runs import FUNNEL, GROUPINGS, Installation, counts, grouped
from .text import duration, ending, facts, moment

_STYLE = """
:root { color-scheme: light dark; --bar: #2f6fdb; --line: #8886; }
body { font: 15px/1.5 system-ui, sans-serif; max-width: 62rem; margin: 2rem auto; padding: 0 1rem; }
table { border-collapse: collapse; margin: 0 0 2rem; }
th, td { padding: .2rem .8rem; border-bottom: 1px solid var(--line); text-align: right; }
th:first-child, td:first-child, .timeline td:last-child { text-align: left; }
svg text { font: 14px system-ui, sans-serif; fill: currentColor; }
svg rect { fill: var(--bar); }
summary { cursor: pointer; overflow-wrap: anywhere; }
"""
_WIDTH, _ROW, _BAR, _LABEL = 720, 40, 26, 110


def page(found: Sequence[Installation]) -> str:
    """The whole page."""
    return "\n".join(_parts(found)) + "\n"


def _text(value: str) -> str:
    return escape(visible(value))


def _parts(found: Sequence[Installation]) -> Iterator[str]:
    runs = sum(len(one.runs) for one in found)
    yield ('<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n<title>Installations</title>\n'
           f"<style>{_STYLE}</style>\n</head>\n<body>\n<h1>Installations</h1>\n"
           f"<p>installations: {len(found)}, runs: {runs}</p>")
    yield funnel_svg(counts(found))
    for name, attribute in GROUPINGS:
        yield f"<h2>By {name}</h2>\n<table>\n<tr><th>{name}</th>"
        yield "".join(f"<th>{label}</th>" for _, label in FUNNEL) + "</tr>"
        for value, reached in grouped(found, attribute):
            yield f"<tr><td>{_text(value)}</td>" + "".join(f"<td>{number}</td>" for number in reached) + "</tr>"
        yield "</table>"
    yield "<h2>Runs</h2>"
    for one in found:
        yield from _installation(one)
    yield "</body>\n</html>"


def funnel_svg(reached: Sequence[int]) -> str:
    """One centred bar a step, as wide as its share of all that were launched or seen first."""
    most = max([*reached, 1])
    height = _ROW * len(FUNNEL)
    summary = ", ".join(f"{label} {number}" for (_, label), number in zip(FUNNEL, reached))
    rows = [f'<svg viewBox="0 0 {_WIDTH} {height}" width="{_WIDTH}" role="img" aria-label="{escape(summary)}">']
    room = _WIDTH - 2 * _LABEL
    for place, ((_, label), number) in enumerate(zip(FUNNEL, reached)):
        width = room * number / most
        top = place * _ROW
        rows.append(f'<text x="0" y="{top + _BAR - 7}">{label}</text>'
                    f'<rect x="{_LABEL + (room - width) / 2:.1f}" y="{top}" width="{width:.1f}" height="{_BAR}" rx="3"/>'
                    f'<text x="{_WIDTH - _LABEL + 12}" y="{top + _BAR - 7}">{number} ({100 * number / most:.0f} %)</text>')
    return "\n".join([*rows, "</svg>"])


def _installation(one: Installation) -> Iterator[str]:
    last = one.runs[-1]
    yield f"<details>\n<summary>{_text(one.identifier)} – {_text(ending(last))}</summary>\n<p>{_text(facts(one))}</p>"
    for run in one.runs:
        yield f"<p>{moment(run.start)}, {duration(run.seconds)}: {_text(ending(run))}</p>\n<table class=\"timeline\">"
        for since_start, since_last, step, meaning in run.timeline():
            yield (f"<tr><td>{duration(since_start)}</td><td>+{duration(since_last)}</td><td>{_text(step)}</td>"
                   f"<td>{_text(meaning)}</td></tr>")
        yield "</table>"
    yield "</details>"
