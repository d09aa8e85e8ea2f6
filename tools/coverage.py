#!/usr/bin/env python3
"""Sums up what a build with coverage recorded: lines with code, lines reached, and their share, for each folder."""
import json
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parent.parent
NOT_THE_PROGRAM = ("build", "tests", "tools", "fuzz")


def reports(build):
    """What gcov says of each object file that was built."""
    for notes in sorted(build.resolve().rglob("*.gcno")):
        output = subprocess.run(["gcov", "--json-format", "--stdout", str(notes)], cwd=build, check=True,
                                capture_output=True).stdout
        for line in output.splitlines():
            yield json.loads(line)


def reached_lines(build):
    """For each source file of the program, its lines with code and whether any test reached them."""
    lines = defaultdict(lambda: defaultdict(bool))
    for report in reports(build):
        for file in report["files"]:
            path = Path(report["current_working_directory"], file["file"]).resolve()
            if REPOSITORY not in path.parents or path.relative_to(REPOSITORY).parts[0] in NOT_THE_PROGRAM:
                continue
            for line in file["lines"]:
                lines[path][line["line_number"]] |= line["count"] > 0
    return lines


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    folders = defaultdict(lambda: [0, 0])
    for path, lines in reached_lines(Path(sys.argv[1])).items():
        for name in (str(path.parent.relative_to(REPOSITORY)), "all"):
            folders[name][0] += len(lines)
            folders[name][1] += sum(lines.values())
    total = folders.pop("all", [0, 0])
    print(f"{'folder':28}{'lines':>8}{'reached':>9}{'share':>9}")
    for name, (count, reached) in [*sorted(folders.items()), ("all", total)]:
        print(f"{name:28}{count:8}{reached:9}{100 * reached / max(count, 1):8.1f} %")


if __name__ == "__main__":
    main()
