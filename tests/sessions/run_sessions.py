#!/usr/bin/env python3
"""Runs whole sessions of kvreflash and compares what they print, byte for byte, with what is expected.

A case is a folder of cases/; README.md tells how one is written."""

import argparse
import difflib
import shlex
import shutil
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import cases
from patches import CaseError
from steps import Mismatch, Runner, Session


def shown(data):
    """Lines for a reader: carriage returns and blanks at line ends made visible."""
    text = data.decode("utf-8", "backslashreplace").replace("\r", "\u240d\n")
    lines = text.split("\n")
    return [line.rstrip(" ") + "\u00b7" * (len(line) - len(line.rstrip(" "))) for line in lines]


def difference(mismatch):
    if mismatch.expected is None:
        return ""
    lines = difflib.unified_diff(shown(mismatch.expected), shown(mismatch.actual), "expected", "actual", lineterm="")
    return "".join(f"    {line}\n" for line in lines)


def run_case(runner, folder, keep=False):
    """"" when the case in `folder` passed, else a report."""
    name = folder.name
    scratch = Path(tempfile.mkdtemp(prefix=f"kvsession-{name}-")).resolve()
    try:
        case = cases.Case(folder)
        cases.lay_out(case, scratch)
        session = Session(runner, case, scratch)
        session.follow()
        if session.updated:
            print(f"{name}: wrote {', '.join(session.updated)}")
        return ""
    except Mismatch as mismatch:
        return f"FAILED {name}: {mismatch}\n{difference(mismatch)}"
    except (CaseError, OSError, KeyError, ValueError) as error:
        return f"FAILED {name}: {type(error).__name__}: {error}\n"
    finally:
        if keep:
            print(f"{name}: {scratch}")
        else:
            shutil.rmtree(scratch, ignore_errors=True)


def parse_arguments():
    parser = argparse.ArgumentParser(description="Runs whole sessions and compares their output byte for byte.")
    parser.add_argument("cases", nargs="*", metavar="CASE", help="names of cases (default: all)")
    parser.add_argument("--tool", type=Path, help="the kvreflash to run")
    parser.add_argument("--launcher", default="", help='what runs the tool ("wine")')
    parser.add_argument("--fold-crlf", action="store_true", help="take CR LF of the tool as LF")
    parser.add_argument("--timeout", type=float, default=60.0, help="seconds that one command may take")
    parser.add_argument("--update", action="store_true", help="write what the tool printed into the cases, for review")
    parser.add_argument("--keep", action="store_true", help="keep the scratch folders and say where they are")
    parser.add_argument("--list", action="store_true", help="only list the cases")
    parser.add_argument("-j", "--jobs", type=int, default=2, help="cases at a time")
    arguments = parser.parse_args()
    unknown = set(arguments.cases) - set(cases.case_names())
    if unknown:
        parser.error(f"no such case: {', '.join(sorted(unknown))}")
    if not arguments.list and arguments.tool is None:
        parser.error("--tool is missing")
    return arguments


def main():
    arguments = parse_arguments()
    names = arguments.cases or cases.case_names()
    if arguments.list:
        for name in names:
            print(f"{name}: {cases.Case(cases.CASES / name).about}")
        return 0
    runner = Runner(arguments.tool.resolve(), shlex.split(arguments.launcher), arguments.fold_crlf,
                    arguments.timeout, arguments.update)
    with ThreadPoolExecutor(arguments.jobs) as pool:
        reports = list(pool.map(lambda name: run_case(runner, cases.CASES / name, arguments.keep), names))
    failed = [report for report in reports if report]
    print("".join(failed), end="")
    print(f"{len(names) - len(failed)} passed, {len(failed)} failed")
    return 1 if failed or not names else 0


if __name__ == "__main__":
    sys.exit(main())
