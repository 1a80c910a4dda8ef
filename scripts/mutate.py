#!/usr/bin/env python3
"""Checks the tests by mutation: changes operators, constants, conditions and calls in src/ one at a time, and counts
how many of these changes the tests notice.

Mutants are built and run in working copies of the tree. Results are kept, so that a run that was interrupted goes on
where it ended. Survivors that were looked at and are accepted stand with the reason in scripts/mutation-survivors.txt.
Exit code 0 only when at least 90 % of the mutants that compile were noticed, the accepted ones counted as survivors."""

import argparse
import os
import signal
import sys
import threading
import time
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from mutation.places import all_mutants
from mutation.report import Change, Report, Results, fingerprint, read_accepted
from mutation.sample import choose
from mutation.suite import Suite
from mutation.workshop import BrokenBaseline, Stopped, Workshop

PROJECT = Path(__file__).resolve().parent.parent
ACCEPTED = PROJECT / "scripts/mutation-survivors.txt"
TARGET = 90.0


def parse_arguments():
    parser = argparse.ArgumentParser(prog="mutate.sh", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=640, help="how many mutants (default: %(default)s)")
    parser.add_argument("--seed", default="1", help="another seed makes another choice (default: %(default)s)")
    parser.add_argument("--room", action="append", default=[], help="a folder of src/ (default: all)")
    parser.add_argument("--only", action="append", default=[], metavar="ID", help="this mutant, FILE:LINE:COLUMN:KIND")
    parser.add_argument("--jobs", type=int, default=1, help="mutants at a time, each in its own copy (default: 1)")
    parser.add_argument("--list", action="store_true", help="only list the mutants")
    parser.add_argument("--report", action="store_true", help="only tell what earlier runs found")
    parser.add_argument("--again", action="store_true", help="run the survivors of earlier runs again")
    parser.add_argument("--work", type=Path, default=PROJECT / "build/mutate",
                        help="the folder of the copies and the results (default: build/mutate)")
    return parser.parse_args()


def chosen_mutants(arguments):
    mutants = all_mutants(PROJECT)
    if arguments.only:
        return [mutant for mutant in mutants if mutant.id in arguments.only]
    return choose([mutant for mutant in mutants if not arguments.room or mutant.room in arguments.room],
                  arguments.count, arguments.seed)


class Run:
    """Judges mutants in several workshops at a time."""

    def __init__(self, arguments, results):
        self.results = results
        self.suite = Suite(PROJECT)
        self.lock = threading.Lock()
        cores = len(os.sched_getaffinity(0))
        self.workshops = [Workshop(PROJECT, arguments.work.resolve() / f"copy{number}", max(1, cores // arguments.jobs))
                          for number in range(1, arguments.jobs + 1)]

    def judge_all(self, mutants):
        self.waiting = list(mutants)
        self.total = len(mutants)
        for workshop in self.workshops:
            workshop.prepare(self.suite)
        print(f"The unchanged sources pass; {self.total} mutants to run", flush=True)
        self.began = time.monotonic()
        with ThreadPoolExecutor(len(self.workshops)) as pool:
            try:
                list(pool.map(self.work, self.workshops))
            except BaseException:
                self.stop()
                raise

    def stop(self):
        with self.lock:
            self.waiting.clear()
        for workshop in self.workshops:
            workshop.stop()

    def work(self, workshop):
        while True:
            with self.lock:
                if not self.waiting:
                    return
                mutant = self.waiting.pop(0)
            try:
                outcome = workshop.judge(self.suite, mutant)
            except Stopped:
                return
            with self.lock:
                self.results.add(mutant, outcome)
                self.tell(mutant, outcome)

    def tell(self, mutant, outcome):
        done = self.total - len(self.waiting)
        told = " ".join(filter(None, (outcome.verdict, outcome.check, outcome.detail)))
        print(f"{done}/{self.total} {time.monotonic() - self.began:.0f} s: {mutant.id}: {told} ({outcome.seconds} s)",
              flush=True)


def list_mutants(mutants):
    for mutant in mutants:
        shown = " ".join(mutant.original.split())
        print(f"{mutant.id}: {shown} => {' '.join(mutant.mutated.split()) or '(nothing)'}")
    rooms = Counter(mutant.room for mutant in mutants)
    print(f"{len(mutants)} mutants: {', '.join(f'{room} {number}' for room, number in sorted(rooms.items()))}")


def main():
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    arguments = parse_arguments()
    mutants = chosen_mutants(arguments)
    if not mutants:
        print("No such mutant", file=sys.stderr)
        return 2
    if arguments.list:
        list_mutants(mutants)
        return 0
    codes = {mutant.file: (PROJECT / mutant.file).read_text(encoding="utf-8") for mutant in mutants}
    accepted = read_accepted(ACCEPTED.read_text(encoding="utf-8")) if ACCEPTED.is_file() else {}
    results = Results(arguments.work / "results.jsonl", {file: fingerprint(code) for file, code in codes.items()})
    if not arguments.report:
        try:
            Run(arguments, results).judge_all(
                [mutant for mutant in mutants if results.get(mutant) is None or
                 arguments.again and results.get(mutant).verdict == "survived"])
        except BrokenBaseline as reason:
            print(reason, file=sys.stderr)
            return 2
    report = Report(mutants, codes, results, accepted)
    print(report.text())
    return 0 if report.percentage(report.count()) >= TARGET and not report.left else 1


if __name__ == "__main__":
    sys.exit(main())
