#!/usr/bin/env python3
"""Reads a ctest report (JUnit XML): prints what failed, and on the last line how many tests passed and failed.

usage: test_report.py REPORT [FOLDER]

A report without any test, or none that can be read, counts as one failure. Skipped tests count neither way. A test that
is a whole GoogleTest program and has left a report of its own, NAME.xml in FOLDER, counts as the tests of that report."""

import sys
from pathlib import Path
import xml.etree.ElementTree as tree

SHOWN_TESTS = 10
SHOWN_LINES = 40


def outcome(case):
    """True passed, False failed, None not run."""
    if case.find("failure") is not None or case.get("status") == "fail":
        return False
    return True if case.get("status") == "run" and case.find("skipped") is None else None


def describe(case):
    lines = (case.findtext("system-out") or "").splitlines()
    left_out = [f"... {len(lines) - SHOWN_LINES} lines before"] if len(lines) > SHOWN_LINES else []
    return "\n    ".join([f"FAILED {case.get('name')}", *left_out, *lines[-SHOWN_LINES:]])


def program_cases(case, folder):
    """The cases that stand for a case of ctest: those of the program's own report, and the case itself where it has
    none, or where it has failed though its tests have not (it crashed)."""
    try:
        cases = list(tree.parse(folder / f"{case.get('name')}.xml").getroot().iter("testcase"))
    except (OSError, tree.ParseError):
        return [case]
    for inner in cases:
        inner.set("name", f"{inner.get('classname')}.{inner.get('name')}")
        if inner.get("result") == "skipped":
            tree.SubElement(inner, "skipped")
        for failure in inner.findall("failure"):
            tree.SubElement(inner, "system-out").text = failure.get("message")
    crashed = outcome(case) is False and all(outcome(inner) is not False for inner in cases)
    return cases + [case] if crashed else cases


def summarise(path, folder=None):
    """(passed, failed, texts on the failures)"""
    try:
        cases = list(tree.parse(path).getroot().iter("testcase"))
    except (OSError, tree.ParseError) as error:
        return 0, 1, [f"FAILED no test report: {error}"]
    if folder is not None:
        cases = [inner for case in cases for inner in program_cases(case, Path(folder))]
    failures = [case for case in cases if outcome(case) is False]
    passed = sum(outcome(case) is True for case in cases)
    if not passed and not failures:
        return 0, 1, ["FAILED no test was run"]
    texts = [describe(case) for case in failures[:SHOWN_TESTS]]
    texts += [f"FAILED {case.get('name')}" for case in failures[SHOWN_TESTS:]]
    return passed, len(failures), texts


def main():
    passed, failed, texts = summarise(*sys.argv[1:])
    for text in texts:
        print(text)
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
