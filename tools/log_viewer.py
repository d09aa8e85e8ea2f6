#!/usr/bin/env python3
"""Shows what a journal of installer events tells: each run as a time line, and how many installations got how far.

A journal is what tools/local_services.py --events writes; docs/service.md tells how to make one from the access log of
another service. Without options both views go to the terminal.
"""
import argparse
import os
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from logviewer.journal import read_journal  # noqa: E402
from logviewer.page import page  # noqa: E402
from logviewer.runs import installations  # noqa: E402
from logviewer.text import funnel_text, runs_text  # noqa: E402


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, allow_abbrev=False)
    parser.add_argument("journal", nargs="+", help='a journal; "-" is the standard input')
    parser.add_argument("--installation", metavar="ID", help="only this installer identifier, or those that begin so")
    parser.add_argument("--runs", action="store_true", help="only the runs")
    parser.add_argument("--funnel", action="store_true", help="only how many got how far")
    parser.add_argument("--html", metavar="FILE", help="write one page instead; the file must not be there yet")
    return parser.parse_args()


def read(name):
    """The events of one journal; what cannot be read is told on standard error."""
    if name == "-":
        events, complaints = read_journal(sys.stdin)
    else:
        with open(name, encoding="utf-8", errors="replace") as file:
            events, complaints = read_journal(file)
    for complaint in complaints:
        print(f"log_viewer: {name}, {complaint}; skipped", file=sys.stderr)
    return events


def show(options, found):
    if options.html:
        with open(options.html, "x", encoding="utf-8") as file:
            file.write(page(found))
        return
    if options.runs or not options.funnel:
        print("\n".join(runs_text(found)))
    if options.funnel or not options.runs:
        print("\n".join(funnel_text(found)))


def main():
    options = parse_arguments()
    sys.stdout.reconfigure(errors="backslashreplace")
    try:
        found = installations(event for name in options.journal for event in read(name))
        if options.installation:
            found = [one for one in found if one.identifier.startswith(options.installation)]
        if not found:
            print("log_viewer: no events", file=sys.stderr)
            return 1
        show(options, found)
        sys.stdout.flush()
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())  # nobody reads any more
    except OSError as error:
        print(f"log_viewer: {error.filename}: {error.strerror}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
