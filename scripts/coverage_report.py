#!/usr/bin/env python3
"""Prints what gcovr counted: the share of each folder, and the lines that nothing reached with their reasons.

usage: coverage_report.py COVERAGE.json REASONS

REASONS has a line "FILE | text | reason" for each line that no test can reach; the text is that of the line before and
of the line, blanks between."""

import json
import sys
from collections import defaultdict
from pathlib import Path

LEAST_LINES = 98.0
LEAST_BRANCHES = 90.0


class Count:
    """How many of a number of things were reached."""

    def __init__(self):
        self.reached = 0
        self.total = 0

    def add(self, reached):
        self.reached += bool(reached)
        self.total += 1

    def percentage(self):
        return 100.0 * self.reached / self.total if self.total else 100.0

    def __str__(self):
        return f"{self.reached:6} of {self.total:6} {self.percentage():6.1f} %"


def read_reasons(path):
    """(file, text) -> reason"""
    reasons = {}
    for line in Path(path).read_text(encoding="utf-8").splitlines():
        if line.strip() and not line.startswith("#"):
            file, text, reason = (part.strip() for part in line.split(" | "))
            reasons[file, text] = reason
    return reasons


def is_code(line):
    return not line.get("gcovr/noncode") and not line.get("gcovr/excluded")


def measure(files):
    """Counts of lines and branches by folder, and the lines that were not reached as (file, number)."""
    lines, branches, missed = defaultdict(Count), defaultdict(Count), []
    for file in files:
        folder = str(Path(file["file"]).parent)
        for line in filter(is_code, file["lines"]):
            for key in (folder, "all"):
                lines[key].add(line["count"])
                # gcov knows a branch that only exceptions take where its line ran, and in no other compilation of it.
                for branch in line["branches"]:
                    if not branch["throw"]:
                        branches[key].add(branch["count"])
            if not line["count"]:
                missed.append((file["file"], line["line_number"]))
    return lines, branches, missed


def show_missed(missed, reasons):
    """Prints them; the number of those without a reason."""
    open_lines = 0
    for file, number in missed:
        text = " ".join(line.strip() for line in Path(file).read_text(encoding="utf-8").splitlines()[number - 2:number])
        reason = reasons.get((file, text))
        open_lines += reason is None
        print(f"{file}:{number}: {text}\n    {reason or 'NO REASON GIVEN'}")
    return open_lines


def main(coverage, reasons):
    lines, branches, missed = measure(json.loads(Path(coverage).read_text(encoding="utf-8"))["files"])
    open_lines = show_missed(missed, read_reasons(reasons))
    print(f"{'':16} {'lines':^27}   {'branches':^27}")
    for key in sorted(lines, key=lambda key: (key == "all", key)):
        print(f"{key:16} {lines[key]}   {branches[key]}")
    enough = lines["all"].percentage() >= LEAST_LINES and branches["all"].percentage() >= LEAST_BRANCHES
    print(f"{len(missed)} lines are not reached, {open_lines} of them without a reason")
    return 0 if enough and open_lines == 0 and lines["all"].total > 0 else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
