#!/usr/bin/env python3
"""Measures whole processes of kvreflash against others that do the same or the least, and holds the results against
the goals.

usage: measure.py BIN DATA [--sizes N,N,...] [--rounds R] [--results FILE] [--charts FOLDER]

BIN is the folder with kvreflash and the programs of reference/; archives and racks are made in DATA by generate.py.
Every command runs once for nothing, then all of them in turn, R times over, so that whatever disturbs the machine
disturbs them all. What counts are the medians of wall time; beside them stand those of processor time and of peak
memory. Output goes to /dev/null. Run it on one core (taskset -c 0), as scripts/bench.sh does.

The exit code is 0 when every goal that was judged is met.
"""

import argparse
import hashlib
import json
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile
from dataclasses import asdict, dataclass, field
from pathlib import Path

import charts

GENERATOR = Path(__file__).resolve().parent / "generate.py"
# The cost of an entry and what it needs in memory show from some size on, beside what every process needs.
LEAST_SHOWN = 1000
LEAST_JUDGED = 10000
# Of a rack that is planned for. Where it has as many elements as the archive has entries, making the emulated target
# costs more than everything else.
MOST_ELEMENTS = 10000
UPDATED_ELEMENTS = 1000  # of the update that does not wait
JOURNAL_ROUNDS = 5  # times as many as of others, with and without a journal: the difference is small
WAITING_ENTRIES = 10  # of the update that does
WAITING_ROUNDS = 3  # of which each takes many seconds
# In memory: some file systems take long to make files soon after others were removed.
SCRATCH_PARENT = "/dev/shm"
RELEASE_SIZES = (64, 1024)  # of packages, in MiB
RELEASE_ENTRIES = 64
SECONDS_PER_START = 0.5
SECONDS_PER_POLL = 0.2
TARGET = ("-t", "127.0.0.1", "--emulate")

# The cells of `kvreflash content`, not aligned.
JQ_CONTENT = r"""
def joined: if type == "array" then join(",") else . end;
def address: .id // .targetPath;
.files[]
| [ (if .boards then [.boards[].boardType | joined] | join(",") else .boardType | joined end), .name,
    (.version // "---"), .checksumCrc32,
    (if .boards then [.boards[] | "\(.boardType | joined): \(address)"] | join(", ") else address end) ]
| map(tostring) | join(" | ")"""


# --- processes --------------------------------------------------------------------------------------------------------

@dataclass
class Command:
    """A process to be measured. `before` is called ahead of each run and is not measured."""
    name: str
    arguments: list
    environment: dict = field(default_factory=dict)
    before: object = None
    rounds: int = sys.maxsize  # at most


@dataclass
class Sample:
    """What one run took: seconds, and KiB at the peak."""
    wall: float
    processor: float
    peak: int


class MeasurementError(Exception):
    """Something that was to be measured did not work."""


class Runner:
    """Runs commands by way of run_measured, which is small: see there."""

    def __init__(self, binaries):
        self.launcher = binaries / "run_measured"

    def run(self, command):
        """Runs it once."""
        if command.before is not None:
            command.before()
        arguments = [str(argument) for argument in (self.launcher, *command.arguments)]
        result = subprocess.run(arguments, env={**os.environ, **command.environment}, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, encoding="ascii", check=True)
        code, wall, processor, peak = result.stdout.split()
        if code != "0":
            raise MeasurementError(f"{command.name} ended with {code}: {' '.join(arguments[1:])}")
        return Sample(float(wall), float(processor), int(peak))


def measure(commands, rounds, run):
    """{name: samples}: all commands in turn, `rounds` times, after one round that does not count."""
    samples = {command.name: [] for command in commands}
    for number in range(rounds + 1):
        for command in commands:
            if number > command.rounds:
                continue
            sample = run(command)
            if number > 0:
                samples[command.name].append(sample)
        print(f"round {number} of {rounds}", file=sys.stderr)
    return samples


def medians(samples):
    """{name: the sample of medians}"""
    return {name: Sample(statistics.median(one.wall for one in runs), statistics.median(one.processor for one in runs),
                         statistics.median(one.peak for one in runs)) for name, runs in samples.items()}


# --- data -------------------------------------------------------------------------------------------------------------

class Data:
    """The archives and racks, made once and kept as long as they are the same."""

    def __init__(self, folder, binaries=None):
        self.folder = folder
        self.binaries = binaries  # those with kvreflash, which makes packages
        self.generator = hashlib.sha256(GENERATOR.read_bytes()).hexdigest()

    def make(self, kind, name, *arguments):
        """The folder of this name, with what generate.py makes of the arguments."""
        out = self.folder / name
        stamp, wanted = out / "made-by.txt", " ".join((self.generator, kind, *map(str, arguments)))
        if not stamp.exists() or stamp.read_text(encoding="utf-8") != wanted:
            print(f"making {out}", file=sys.stderr)
            shutil.rmtree(out, ignore_errors=True)
            subprocess.run([sys.executable, "-B", GENERATOR, kind, out, *map(str, arguments)], check=True)
            stamp.write_text(wanted, encoding="utf-8")
        return out

    def archive(self, entries):
        return self.make("archive", f"archive-{entries}", "--entries", entries)

    def archive_with_files(self, entries):
        return self.make("archive", f"archive-{entries}-with-files", "--entries", entries, "--files")

    def archive_without_checksums(self, entries):
        """Its checksums stand in the update files alone."""
        return self.make("archive", f"archive-{entries}-without-checksums", "--entries", entries, "--files",
                         "--without-checksums")

    def rack(self, elements, entries):
        return self.make("rack", f"rack-{elements}-of-{entries}", "--elements", elements, "--entries", entries)

    def outdated_rack(self, elements):
        """A rack on which an update installs every entry."""
        return self.make("rack", f"outdated-rack-{elements}", "--elements", elements, "--entries", elements,
                         "--current", 0, "--unknown", 0)

    def current_rack(self, elements):
        """A rack on which an update has nothing to install."""
        return self.make("rack", f"current-rack-{elements}", "--elements", elements, "--entries", elements,
                         "--current", 1, "--unknown", 0)

    def release(self, megabytes):
        """A folder with a signed package whose update files have so many MiB together."""
        return self.make("release", f"release-{megabytes}", "--entries", RELEASE_ENTRIES,
                         "--file-size", (megabytes << 20) // RELEASE_ENTRIES, "--tool", self.binaries / "kvreflash")

    def sizes_of(self, entries):
        """Bytes of the descriptions that a plan reads: of the archive and of the target."""
        elements = min(entries, MOST_ELEMENTS)
        return ((self.archive(entries) / "archive.json").stat().st_size,
                (self.rack(elements, entries) / "target.json").stat().st_size)


def empty_folder(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()


def copy_rack(rack, out):
    """A fresh copy of an emulated target, without what updates have left on it."""
    empty_folder(out)
    shutil.copyfile(rack / "target.json", out / "target.json")


# --- what is measured -------------------------------------------------------------------------------------------------

class Programs:
    """Makes the commands. Targets are updated in the folder `scratch`."""

    def __init__(self, binaries, data, scratch):
        self.binaries = binaries
        self.data = data
        self.scratch = scratch

    def tool(self, *arguments):
        return [self.binaries / "kvreflash", *arguments]

    def once(self):
        return [Command("empty process", [self.binaries / "empty_process"]), Command("version", self.tool("version"))]

    def of_size(self, entries):
        """Reading and planning with archives of so many entries."""
        archive = self.data.archive(entries)
        description = archive / "archive.json"
        rack = self.data.rack(min(entries, MOST_ELEMENTS), entries)
        rows = {
            "archive-version": self.tool("archive-version", "-a", archive),
            "parse_boost": [self.binaries / "parse_boost", description],
            "parse_rapidjson": [self.binaries / "parse_rapidjson", description],
            "parse_nlohmann": [self.binaries / "parse_nlohmann", description],
            "parse_simdjson": [self.binaries / "parse_simdjson", description],
            "dump": self.tool("dump", "-a", archive),
            "jq dump": ["jq", "--indent", "4", ".", description],
            "print_boost": [self.binaries / "parse_boost", "--print", description],
            "print_rapidjson": [self.binaries / "parse_rapidjson", "--print", description],
            "print_nlohmann": [self.binaries / "parse_nlohmann", "--print", description],
            "content": self.tool("content", "-a", archive),
            "jq content": ["jq", "-r", JQ_CONTENT, description],
            "connect": self.tool("connect", *TARGET, rack),
            "plan": self.tool("plan", "-a", archive, *TARGET, rack),
        }
        return [Command(at(name, entries), arguments) for name, arguments in rows.items()]

    def completion(self, entries):
        """Checksums from update files, and the least that looking into these files costs. The files are in memory:
        what drops files from the system's memory between two runs is not measured."""
        archive = Data(self.scratch).archive_without_checksums(entries)
        empty = self.scratch / "no-files.txt"
        empty.write_text("", encoding="utf-8")
        read_heads = self.binaries / "read_heads"
        return [Command(at("completion", entries), self.tool("archive-version", "-a", archive)),
                Command(at("read_heads", entries), [read_heads, archive / "files.txt"]),
                Command("read_heads of nothing", [read_heads, empty])]

    def update(self, name, entries, time_scale, journal=None, **more):
        """`journal`: an empty folder before each run. In the scratch folder it does not wait for a disk."""
        archive, rack = self.data.archive_with_files(entries), self.data.outdated_rack(entries)
        copy = self.scratch / name.replace(" ", "-")
        arguments = self.tool("update", "-a", archive, *TARGET, copy, "--journal", journal or "none")

        def before():
            copy_rack(rack, copy)
            if journal is not None:
                empty_folder(journal)

        return Command(name, arguments, {"KV_TIME_SCALE": time_scale}, before=before, **more)

    def updates(self):
        """The update that does not wait, with and without a journal."""
        return [self.update("update", UPDATED_ELEMENTS, "0"),
                self.update("update with journal", UPDATED_ELEMENTS, "0", self.scratch / "journal")]

    def releases(self):
        """Updates that have nothing to do but to read a package, and what others take for the files in it."""
        size = RELEASE_SIZES[-1]
        files = sorted((self.data.release(size) / "archive").iterdir())
        copies = self.scratch / "copies"

        def copying(name, program):
            return Command(at(name, size), [program, *files, copies], before=lambda: empty_folder(copies))

        return [*(self.update_from(megabytes) for megabytes in RELEASE_SIZES),
                Command(at("sha256sum", size), ["sha256sum", *files]), copying("cp", "cp"),
                copying("hash_and_copy", self.binaries / "hash_and_copy")]

    def update_from(self, megabytes):
        """Its private copy is in the scratch folder, as are the copies of others."""
        release, rack = self.data.release(megabytes), self.data.current_rack(RELEASE_ENTRIES)
        copy = self.scratch / f"rack-{megabytes}"
        arguments = self.tool("update", "-a", release / "release.kva", "--trust", release / "trust", *TARGET, copy,
                              "--journal", "none")
        return Command(at("update from package", megabytes), arguments, {"TMPDIR": str(self.scratch)},
                       before=lambda: copy_rack(rack, copy))

    def asked_waiting(self, command):
        """Seconds that an update waits, computed from the updates that it starts and its progress lines."""
        trace = self.scratch / "trace.jsonl"
        trace.unlink(missing_ok=True)
        command.before()
        environment = {**os.environ, "KV_TIME_SCALE": "0", "KV_TRACE": str(trace)}
        result = subprocess.run([*command.arguments, "--progress", "line"], env=environment, stdout=subprocess.PIPE,
                                check=True)
        calls = [json.loads(line)["call"] for line in trace.read_text(encoding="utf-8").splitlines()]
        return waiting_of(calls.count("update2"), result.stdout.count(b"\r"))


def at(name, entries):
    """The name of a measurement at one size."""
    return f"{name} {entries}"


def waiting_of(starts, polls):
    return starts * SECONDS_PER_START + polls * SECONDS_PER_POLL


# --- goals ------------------------------------------------------------------------------------------------------------

@dataclass
class Goal:
    """A result beside what it is to be at most. Without a limit, or where the size is too small to be judged, it is
    only shown."""
    name: str
    entries: int
    value: float
    limit: float = None
    processor: float = None  # the value that processor time gives
    judged: bool = True

    @property
    def verdict(self):
        if self.limit is None or not self.judged:
            return "-"
        return "met" if self.value <= self.limit else "missed"


def divided(a, b):
    return a / b if b > 0 else float("inf")


class Judge:
    """Holds the medians against the goals."""

    def __init__(self, results, sizes, description_sizes, waiting):
        self.results = results
        self.sizes = sizes
        self.description_sizes = description_sizes  # {entries: (archive, target)} in bytes
        self.waiting = waiting  # seconds that the waiting update asks for

    def ratio(self, label, entries, name, others, limit, judged=True):
        ours = self.results[name]
        wall = min(self.results[other].wall for other in others)
        processor = min(self.results[other].processor for other in others)
        return Goal(label, entries, divided(ours.wall, wall), limit, divided(ours.processor, processor), judged)

    def goals(self):
        result = [self.ratio("version / empty process", 0, "version", ["empty process"], 2.5)]
        for entries in self.sizes:
            result += self.of_size(entries)
        shown = [entries for entries in self.sizes if entries >= LEAST_SHOWN]
        for smaller, larger in zip(shown, shown[1:]):
            result += self.growth(smaller, larger)
        return result + [self.completion(self.sizes[-1])] + self.updates() + self.releases()

    def of_size(self, entries):
        large = entries >= LEAST_JUDGED

        def name(text):
            return at(text, entries)

        return [
            self.ratio("dump / jq --indent 4", entries, name("dump"), [name("jq dump")], 0.22),
            self.ratio("dump / bare parse and print", entries, name("dump"),
                       [name("print_boost"), name("print_rapidjson")], None),
            self.ratio("content / jq -r", entries, name("content"), [name("jq content")], 0.22),
            self.ratio("archive-version / bare parse", entries, name("archive-version"),
                       [name("parse_boost"), name("parse_rapidjson")], 2, large),
            self.ratio("plan / content", entries, name("plan"), [name("content")], 1.5, entries > MOST_ELEMENTS),
            self.plan_without_scan(entries),
            *(self.memory(entries, large) if entries >= LEAST_SHOWN else []),
        ]

    def plan_without_scan(self, entries):
        """What a plan costs besides serving and scanning the emulated target."""
        plan, connect, version, content = (self.results[name] for name in (
            at("plan", entries), at("connect", entries), "version", at("content", entries)))
        return Goal("plan without scan / content", entries,
                    divided(plan.wall - connect.wall + version.wall, content.wall),
                    processor=divided(plan.processor - connect.processor + version.processor, content.processor))

    def memory(self, entries, judged):
        """Peak memory in sizes of what is read. A plan is judged if the rack is the smaller part, as its time is."""
        archive, target = self.description_sizes[entries]
        rows = [("archive-version", "description", archive, judged), ("content", "description", archive, judged),
                ("dump", "description", archive, judged),
                ("plan", "descriptions", archive + target, entries > MOST_ELEMENTS)]
        return [Goal(f"peak memory of {name} / {unit}", entries,
                     self.results[at(name, entries)].peak * 1024 / size, 5, None, is_judged)
                for name, unit, size, is_judged in rows]

    def growth(self, smaller, larger):
        """The cost of an entry beside that in an archive of the size before."""
        result = []
        for name in ("archive-version", "content", "dump"):
            small, large = (per_entry(self.results[at(name, entries)], self.results["version"], entries)
                            for entries in (smaller, larger))
            result.append(Goal(f"cost of an entry in {name} / at {smaller}", larger, divided(large[0], small[0]), 1.3,
                               divided(large[1], small[1]), smaller >= LEAST_JUDGED))
        return result

    def completion(self, entries):
        """Reading the checksums, without the load of the description, beside the least that it costs."""
        whole, load, floor, nothing = (self.results[name] for name in (
            at("completion", entries), at("archive-version", entries), at("read_heads", entries),
            "read_heads of nothing"))
        return Goal("completion / reading the heads", entries,
                    divided(whole.wall - load.wall, floor.wall - nothing.wall), 1.3,
                    divided(whole.processor - load.processor, floor.processor - nothing.processor),
                    entries >= LEAST_JUDGED)

    def updates(self):
        fast, written, waiting = (self.results[name] for name in ("update", "update with journal", "waiting update"))
        return [Goal("seconds of an update that does not wait", UPDATED_ELEMENTS, fast.wall, 1, fast.processor),
                Goal("processor time of an update with journal / without", UPDATED_ELEMENTS,
                     divided(written.processor, fast.processor), 1.05),
                Goal("update / waiting that it asks for", WAITING_ENTRIES, divided(waiting.wall, self.waiting), 1.01),
                Goal("processor time while waiting", WAITING_ENTRIES, divided(waiting.processor, waiting.wall), 0.005)]


    def releases(self):
        """Reading a package beside what must be done with its files, and its memory beside that of a small one."""
        small, large = (self.results[at("update from package", size)] for size in RELEASE_SIZES)
        hashing, copying, both = (self.results[at(name, RELEASE_SIZES[-1])]
                                  for name in ("sha256sum", "cp", "hash_and_copy"))
        return [Goal("update from a package of 1 GiB / sha256sum and cp", RELEASE_ENTRIES,
                     divided(large.wall, hashing.wall + copying.wall), 1.3,
                     divided(large.processor, hashing.processor + copying.processor)),
                Goal("update from a package of 1 GiB / bare hash and copy", RELEASE_ENTRIES,
                     divided(large.wall, both.wall), processor=divided(large.processor, both.processor)),
                Goal("MiB of peak memory at 1 GiB more than at 64 MiB", RELEASE_ENTRIES,
                     (large.peak - small.peak) / 1024, 4)]


def per_entry(result, start, entries):
    """Seconds of wall and of processor time that an entry costs, without the start of the process."""
    return (result.wall - start.wall) / entries, (result.processor - start.processor) / entries


# --- reports ----------------------------------------------------------------------------------------------------------

def number(value, digits=3):
    return "" if value is None else f"{value:.{digits}f}"


def aligned(rows):
    """The rows as lines of a table; the first column is of words."""
    widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
    lines = ["  ".join(cell.rjust(width) if column else cell.ljust(width)
                       for column, (cell, width) in enumerate(zip(row, widths))).rstrip() for row in rows]
    return "\n".join(lines)


def goal_table(goals):
    rows = [("goal", "entries", "by wall time", "by processor", "at most", "verdict")]
    rows += [(goal.name, str(goal.entries or ""), number(goal.value), number(goal.processor), number(goal.limit, 3),
              goal.verdict) for goal in goals]
    return aligned(rows)


def median_table(results):
    rows = [("process", "wall ms", "processor ms", "peak MB")]
    rows += [(name, number(one.wall * 1e3, 2), number(one.processor * 1e3, 2), number(one.peak / 1024, 1))
             for name, one in results.items()]
    return aligned(rows)


def machine():
    models = [line.split(":", 1)[1].strip() for line in Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
              if line.startswith("model name")]
    return {"processor": models[0] if models else "unknown", "cores": os.cpu_count(), "system": platform.platform(),
            "loadAverage": os.getloadavg()[0], "coresUsed": len(os.sched_getaffinity(0))}


def write_results(path, samples, results, goals, about):
    document = {"about": about, "medians": {name: asdict(one) for name, one in results.items()},
                "goals": [{**asdict(goal), "verdict": goal.verdict} for goal in goals],
                "samples": {name: [asdict(one) for one in runs] for name, runs in samples.items()}}
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(json.dumps(document, indent=1) + "\n", encoding="utf-8")


def write_charts(folder, results, goals, sizes):
    folder.mkdir(parents=True, exist_ok=True)
    start = results["version"]
    shown = [entries for entries in sizes if entries >= LEAST_SHOWN]
    costs = {name: [(entries, 1e6 * per_entry(results[at(name, entries)], start, entries)[0]) for entries in shown]
             for name in ("archive-version", "content", "dump", "plan")}
    judged = [goal for goal in goals if goal.verdict != "-"]
    memory = [goal for goal in judged if goal.name.startswith("peak memory")]
    ratios = [goal for goal in judged if goal not in memory]
    pages = {
        "cost-per-entry.svg": charts.lines("Cost of an entry", "entries of the archive", "microseconds", costs),
        "ratios.svg": charts.bars("Results, as parts of what the goals allow", rows_of(ratios), 1),
        "peak-memory.svg": charts.bars("Peak memory, in sizes of the description",
                                       [(label(goal), goal.value) for goal in memory], 5),
    }
    for name, text in pages.items():
        (folder / name).write_text(text, encoding="utf-8")


def label(goal):
    return f"{goal.name}, {goal.entries:,}" if goal.entries else goal.name


def rows_of(goals):
    return [(label(goal), goal.value / goal.limit) for goal in goals]


# --- the command ------------------------------------------------------------------------------------------------------

def read_arguments(arguments):
    parser = argparse.ArgumentParser(description="Measures kvreflash against others and against its goals.")
    parser.add_argument("bin", type=Path, help="folder with the programs")
    parser.add_argument("data", type=Path, help="folder for archives and racks")
    parser.add_argument("--sizes", default="1,1000,10000,100000", help="entries of the archives")
    parser.add_argument("--rounds", type=int, default=7, help="how often each process is measured (default: 7)")
    parser.add_argument("--results", type=Path, help="JSON file for the results (default: none)")
    parser.add_argument("--charts", type=Path, help="folder for SVG charts (default: none)")
    given = parser.parse_args(arguments)
    given.sizes = sorted({int(size) for size in given.sizes.split(",")})
    if given.sizes[0] < 1 or given.rounds < 1:
        parser.error("sizes and rounds are positive numbers")
    return given


def main(arguments=None):
    given = read_arguments(arguments)
    with tempfile.TemporaryDirectory(prefix="kv-bench-", dir=SCRATCH_PARENT) as scratch:
        return measure_all(given, Path(scratch))


def measure_all(given, scratch):
    data = Data(given.data.resolve(), given.bin.resolve())
    data.folder.mkdir(parents=True, exist_ok=True)
    programs = Programs(given.bin.resolve(), data, scratch)
    waiting = programs.update("waiting update", WAITING_ENTRIES, "1", rounds=WAITING_ROUNDS)
    commands = programs.once()
    for entries in given.sizes:
        commands += programs.of_size(entries)
    commands += programs.completion(given.sizes[-1])
    commands += [waiting, *programs.releases()]
    about = {"machine": machine(), "rounds": given.rounds, "sizes": given.sizes}
    try:
        asked = programs.asked_waiting(waiting)
        run = Runner(given.bin.resolve()).run
        samples = {**measure(commands, given.rounds, run),
                   **measure(programs.updates(), JOURNAL_ROUNDS * given.rounds, run)}
    except MeasurementError as error:
        print(f"measure.py: {error}", file=sys.stderr)
        return 1
    results = medians(samples)
    goals = Judge(results, given.sizes, {entries: data.sizes_of(entries) for entries in given.sizes}, asked).goals()
    print(median_table(results), goal_table(goals), sep="\n\n")
    if given.results:
        write_results(given.results, samples, results, goals, {**about, "askedWaiting": asked})
    if given.charts:
        write_charts(given.charts, results, goals, given.sizes)
    return 1 if any(goal.verdict == "missed" for goal in goals) else 0


if __name__ == "__main__":
    sys.exit(main())
