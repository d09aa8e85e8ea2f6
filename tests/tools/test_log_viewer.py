"""The viewer of journals: which run an event belongs to, how runs ended, the counts, and what it makes of bad lines."""
import json
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from tests.tools import TOOLS

from logviewer.journal import read_journal
from logviewer.page import page
from logviewer.runs import counts, grouped, installations

FACTS = "buildVersion=2001&lang=de-DE&launcherVersion=2.0.1&version=5.1.0-dmg"
DONE = ("23.01", "23.11", "23.12", "23.21", "23.22", "23.31", "23.32")


def entry(identifier, step, time, content='{"partnerName":"acme"}'):
    return json.dumps({"time": time, "body": f"anonymouscomputerid={identifier}&content={content}&{FACTS}&step={step}"})


def run_of(identifier, steps, start=0.0, **options):
    return [entry(identifier, step, start + place, **options) for place, step in enumerate(steps)]


def found_in(lines):
    events, complaints = read_journal(lines)
    assert not complaints, complaints
    return installations(events)


class Runs(unittest.TestCase):
    def test_endings_and_choices(self):
        rows = (
            (DONE, "installed", None),
            (DONE[:6] + ("23.34",), "installed, but the product did not start", None),
            (DONE[:2] + ("23.13",), "the check failed", None),
            (DONE[:4] + ("23.23", "23.42"), "the download failed", "downloads manually"),
            (DONE[:6] + ("23.33", "23.43"), "the installation failed", "quits"),
            (DONE[:4], "broken off during the download", None),
            (DONE[:3] + ("23.51",) + DONE[3:6] + ("23.51", "23.54"), "broken off during the installation",
             "opens the store"),
            (DONE[:1], "broken off at the start", None))
        for steps, ending, choice in rows:
            with self.subTest(steps):
                (one,) = found_in(run_of("A", steps))
                (run,) = one.runs
                self.assertEqual((run.ending, run.choice, tuple(run.steps)[:2]), (ending, choice, steps[:2]))

    def test_events_that_overtook_each_other_and_runs_that_follow_each_other(self):
        lines = run_of("A", DONE[:4]) + [entry("A", "23.11", 100.0), entry("A", "23.01", 100.2)] + \
            run_of("A", DONE[2:], 101.0)
        lines[1], lines[2] = lines[2], lines[1]
        (one,) = found_in(lines)
        self.assertEqual([tuple(run.steps) for run in one.runs], [DONE[:4], DONE])
        since_last = [row[1] for row in one.runs[1].timeline()]
        self.assertEqual(min(since_last), 0.0)
        self.assertAlmostEqual(sum(since_last), one.runs[1].seconds)

    def test_counts_by_group(self):
        lines = run_of("A", DONE) + run_of("B", DONE[:4], content="{}") + run_of("B", DONE[:2], 50.0, content="{}") + \
            run_of("C", ("23.01", "23.31"))  # what came between was lost
        found = found_in(lines)
        self.assertEqual(counts(found), [3, 3, 3, 2, 2, 1])
        self.assertEqual(grouped(found, "partner"), [("acme", [2, 2, 2, 2, 2, 1]), ("(none)", [1, 1, 1, 0, 0, 0])])
        self.assertEqual([value for value, _ in grouped(found, "installer_version")], ["2.0.1 (2001)"])


class Views(unittest.TestCase):
    def test_page_takes_no_markup_from_a_journal(self):
        text = page(found_in(run_of("<script>", DONE, content='{"partnerName":"<b>&amp;\\u202e"}')))
        for foreign in ("<script>", "<b>", "\u202e"):
            self.assertNotIn(foreign, text)
        for tag in ("html", "body", "table", "tr", "td", "th", "svg", "details", "section"):
            self.assertEqual(len(re.findall(f"<{tag}[ >]", text)), text.count(f"</{tag}>"), tag)
        self.assertEqual(text.count("<rect "), 6)
        self.assertNotRegex(text, r"(?:src|href|url)\s*[=(]")

    def test_command_line(self):
        with tempfile.TemporaryDirectory() as folder:
            journal, target = Path(folder, "journal"), Path(folder, "page.html")
            journal.write_text("\n".join(["nonsense", "[]", '{"time": 1}', '{"time": true, "body": ""}',
                                          '{"time": "soon", "body": ""}', *run_of("A\x1b[31m", DONE)]))
            viewer = [str(TOOLS / "log_viewer.py"), str(journal)]
            shown = subprocess.run(viewer, capture_output=True, text=True)
            self.assertEqual(shown.returncode, 0)
            self.assertEqual(shown.stderr.count("; skipped"), 5)
            self.assertIn("line 4: ", shown.stderr)
            self.assertNotIn("\x1b", shown.stdout)
            self.assertIn("23.32  install ended", shown.stdout)
            self.assertEqual(subprocess.run(viewer + ["--html", str(target)], capture_output=True).returncode, 0)
            again = subprocess.run(viewer + ["--html", str(target)], capture_output=True, text=True)
            self.assertEqual(again.returncode, 1)
            self.assertIn("page.html", again.stderr)
            none = subprocess.run(viewer + ["--installation", "Z"], capture_output=True, text=True)
            self.assertEqual((none.returncode, "no events" in none.stderr), (1, True))
