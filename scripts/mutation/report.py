"""What became of the mutants: kept in a file, line by line, and told at the end."""

import hashlib
import json
from collections import Counter
from dataclasses import asdict, dataclass

from mutation.workshop import Outcome

COLUMNS = ("mutants", "not compiled", "room", "above", "sessions", "sanitizers", "timeouts", "survivors", "accepted")


def fingerprint(code):
    return hashlib.sha256(code.encode()).hexdigest()[:16]


class Results:
    """The outcomes by mutant, kept in a file of JSON lines. Those of a source that has changed since are forgotten."""

    def __init__(self, path, fingerprints):
        self.path = path
        self.fingerprints = fingerprints
        self.outcomes = {}
        lines = path.read_text(encoding="utf-8").splitlines() if path.is_file() else []
        for line in lines:
            self.take(line)

    def take(self, line):
        try:
            record = json.loads(line)
            file = record["id"].split(":")[0]
            if self.fingerprints.get(file) == record["source"]:
                self.outcomes[record["id"], record["mutated"]] = Outcome(**record["outcome"])
        except (ValueError, KeyError, TypeError):
            pass  # a line that an interrupted run has not finished

    def get(self, mutant):
        return self.outcomes.get((mutant.id, mutant.mutated))

    def add(self, mutant, outcome):
        self.outcomes[mutant.id, mutant.mutated] = outcome
        record = {"id": mutant.id, "source": self.fingerprints[mutant.file], "original": mutant.original,
                  "mutated": mutant.mutated, "outcome": asdict(outcome)}
        self.path.parent.mkdir(parents=True, exist_ok=True)
        with self.path.open("a", encoding="utf-8") as file:
            file.write(json.dumps(record) + "\n")


@dataclass(frozen=True)
class Change:
    """A mutant as lists name it: by its file and the lines that change, not by their numbers."""
    file: str
    before: tuple
    after: tuple

    @classmethod
    def of(cls, mutant, code):
        return cls(mutant.file, *mutant.changed_lines(code))

    def __str__(self):
        return "\n".join([self.file, *(f"- {line}" for line in self.before), *(f"+ {line}" for line in self.after)])


def read_accepted(text):
    """The reasons by change. A record is the file, the lines before ("- ") and after ("+ ") the change, and the reason;
    an empty line ends it. Lines that begin with "#" are remarks. Raises ValueError on anything else."""
    reasons = {}
    remarkless = "\n".join(line for line in text.splitlines() if not line.startswith("#"))
    for record in filter(str.strip, remarkless.split("\n\n")):
        lines = record.strip("\n").splitlines()
        before = tuple(line[2:] for line in lines[1:] if line.startswith("- "))
        after = tuple(line[2:] for line in lines[1:] if line.startswith("+ "))
        reason = lines[1 + len(before) + len(after):]
        if not before or not reason or any(line[:2] in ("- ", "+ ") for line in reason):
            raise ValueError(f"a survivor without lines or reason: {lines[0]}")
        reasons[Change(lines[0], before, after)] = " ".join(reason)
    return reasons


class Report:
    """Tells the outcomes of `mutants`; `codes` are the sources by file, `accepted` the reasons by change."""

    def __init__(self, mutants, codes, results, accepted):
        self.judged = [(mutant, results.get(mutant)) for mutant in mutants if results.get(mutant)]
        self.left = len(mutants) - len(self.judged)
        self.codes = codes
        self.accepted = accepted

    def change(self, mutant):
        return Change.of(mutant, self.codes[mutant.file])

    def count(self, room=None):
        """How many mutants of a room (default: all) fell under each of the columns."""
        counts = Counter()
        for mutant, outcome in self.judged:
            if room not in (None, mutant.room):
                continue
            counts["mutants"] += 1
            if outcome.verdict == "noticed":
                counts[outcome.line] += 1
            elif outcome.verdict == "timeout":
                counts["timeouts"] += 1
            elif outcome.verdict == "not compiled":
                counts["not compiled"] += 1
            else:
                counts["survivors"] += 1
                counts["accepted"] += self.change(mutant) in self.accepted
        return counts

    @staticmethod
    def percentage(counts, without_accepted=False):
        """Of the mutants that compile, those that were noticed."""
        total = counts["mutants"] - counts["not compiled"]
        noticed = total - counts["survivors"]
        total -= counts["accepted"] if without_accepted else 0
        return 100 * noticed / total if total else 100.0

    def table(self):
        rooms = sorted({mutant.room for mutant, _ in self.judged})
        rows = [("", *COLUMNS, "noticed")]
        for name, counts in [(room, self.count(room)) for room in rooms] + [("all", self.count())]:
            rows.append((name, *(str(counts[column]) for column in COLUMNS), f"{self.percentage(counts):.1f} %"))
        widths = [max(len(cell) for cell in column) for column in zip(*rows)]
        return ["  ".join([row[0].ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(row[1:], widths[1:])])
                for row in rows]

    def survivors(self):
        """The survivors, those without a reason last, as they are written in the list of accepted ones."""
        found = [(mutant, self.change(mutant)) for mutant, outcome in self.judged if outcome.verdict == "survived"]
        found.sort(key=lambda pair: pair[1] not in self.accepted)
        return [f"{mutant.id}\n{change}\n{self.accepted.get(change, 'NOT LOOKED AT')}" for mutant, change in found]

    def text(self):
        counts = self.count()
        lines = [text + "\n" for text in self.survivors()] + self.table()
        if self.left:
            lines.append(f"{self.left} mutants were not run.")
        lines.append(f"Noticed: {self.percentage(counts):.1f} %; without the {counts['accepted']} accepted survivors "
                     f"{self.percentage(counts, True):.1f} %")
        return "\n".join(lines)
