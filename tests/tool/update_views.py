"""What a session of the tool leaves: its text, its report, its events, its trace and the target. The words of documents
and the places where they stand are here and in no test."""

import json
import re
import shutil
from collections import Counter
from pathlib import Path

import tool_runs
from tool_runs import cases

# What the report and the verification say of an element.
UPDATED = "updated"
FAILED = "failed"
CANCELLED = "cancelled"
FILE_MISSING = "file-missing"
AS_EXPECTED = "as-expected"
DIFFERS = "differs"
UNCHANGED = "unchanged"
GONE = "gone"
NOT_JUDGED = "not-judged"
NOT_LISTED = "not-listed"
VERIFICATION_WORDS = (AS_EXPECTED, DIFFERS, UNCHANGED, GONE, NOT_JUDGED, NOT_LISTED)
# The target does not report what it should.
FAULTS = (DIFFERS, UNCHANGED, GONE)

# The classes of failure that an exit code stands for.
CLASSES = {
    0: {None},
    1: {"elements", "errors", "reboot", "output"},
    2: {"unsupported"},
    3: {"archive"},
    4: {"target"},
    5: {"locked"},
    6: {"verification"},
    7: {"stopped"},
    8: {"selection"},
    9: {"stale"},
}
RETRYABLE = {"target", "locked", "stopped"}

# The calls that change a target, or are about to.
CHANGING_CALLS = {"lock", "transferFile", "update2", "KvHIM_createFTClientHandle", "KvHIM_makeDir", "KvHIM_putFileU",
                  "KvHIM_renameFile", "KvHIM_FORCE_resetDevice"}

# The value of the event that ends the last phase.
NO_PHASE = 0xFFFFFFFF

REPORT, EVENTS, TRACE = "r.json", "e.jsonl", "trace.jsonl"
TARGET = ("-t", "127.0.0.1", "--emulate", "rack")
ARCHIVE = ("-a", "archive")


class ElementView:
    """An element of a report."""

    def __init__(self, record):
        self.index = record["index"]
        self.name = record["displayName"]
        self.address = record["address"] or ""
        self.outcome = record["outcome"]
        self.reason = record["reason"]
        self.verification = record["verification"]
        self.file = record["entry"]["name"] if record["entry"] else None

    def __repr__(self):
        return f"element {self.index} ({self.name}): {self.outcome}, {self.verification}"

    def is_file(self):
        """True for one that is written into the target's file system."""
        return not self.address or "/FILESYSTEM_ELEMENT[" in self.address

    def has_failed(self):
        """True for one that the session notified of."""
        return self.outcome in (FAILED, CANCELLED)

    def claims_success(self):
        """True if somebody who reads the report takes it as installed."""
        if self.verification == AS_EXPECTED:
            return True
        return self.outcome == UPDATED and self.verification not in (*FAULTS, NOT_JUDGED)


class DocumentView:
    """What every document of a session has."""

    def __init__(self, document):
        self.document = document

    @property
    def format(self):
        return self.document.get("format")

    @property
    def failure(self):
        return self.document.get("failure", "nothing of a class")

    @property
    def retryable(self):
        return self.document.get("retryable")

    @property
    def message(self):
        return self.document.get("message")


class ReportView(DocumentView):
    """A report in JSON."""

    def __init__(self, document):
        super().__init__(document)
        # Without a plan there are none.
        self.elements = [ElementView(record) for record in document.get("elements", [])]

    def at(self, address):
        """The element of this inventory address; None if there is none."""
        return next((element for element in self.elements if element.address == address), None)

    def with_index(self, index):
        return next((element for element in self.elements if element.index == index), None)

    def failed(self):
        return [element for element in self.elements if element.has_failed()]

    def judged(self, word):
        return [element for element in self.elements if element.verification == word]


class EventsView:
    """The events of an update."""

    def __init__(self, lines):
        self.events = [json.loads(line) for line in lines]

    def element_errors(self):
        return [event["value"] for event in self.events if event["event"] == "elementError"]

    def phases(self):
        return [event["value"] for event in self.events if event["event"] == "phase"]

    def last(self):
        return self.events[-1] if self.events else {}


class TraceView:
    """The calls of a session."""

    def __init__(self, lines):
        self.calls = [json.loads(line) for line in lines]

    def of(self, name):
        return [call for call in self.calls if call["call"] == name]

    def succeeded(self, name):
        return [call for call in self.of(name) if not has_failed(call)]

    def changes_target(self):
        return [call for call in self.calls if call["call"] in CHANGING_CALLS]

    def through_unlock(self):
        """The calls up to the one that gives the lock back, or up to the scan if there is none."""
        names = [call["call"] for call in self.calls]
        last = "unlock" if "unlock" in names else "scan"
        return self.calls[:names.index(last) + 1]

    def transfers(self, name):
        """True if a file of this name went to the target."""
        return any(re.split(r"[\\/]", call["path"])[-1] == name for call in self.of("transferFile"))


def has_failed(call):
    return bool(call.get("errors") or call.get("status"))


class TextView:
    """What a session says on its standard streams."""

    def __init__(self, done):
        self.output = done.output.decode()
        self.errors = done.errors.decode()

    def is_completed(self):
        return "\n    Update completed successfully!\n" in self.output

    def has_results(self):
        return "\nResults:\n" in self.output

    def reports_errors(self):
        return "\nReported errors:\n" in self.output

    def failed_elements(self):
        """How many elements the results name."""
        return self.output.partition("\nResults:")[2].count("\n    ERROR: ")

    def verification(self):
        """The counts of the verification, by word."""
        line = re.search(r"^Verification:(.*)$", self.output, re.MULTILINE)
        pattern = "|".join(word.replace("-", " ") for word in VERIFICATION_WORDS)
        found = re.findall(rf"(\d+) ({pattern})\b", line[1]) if line else []
        return Counter({word.replace(" ", "-"): int(count) for count, word in found})

    def reason(self):
        """The last line on standard error that is not an event."""
        lines = [line for line in self.errors.splitlines() if not line.startswith("{")]
        return lines[-1] if lines else ""


class Rack:
    """The folder of an emulated target."""

    def __init__(self, folder):
        self.folder = folder
        self.path = folder / "target.json"
        self.description = cases.read_json(self.path)

    def text(self):
        return self.path.read_text(encoding="utf-8")

    def describe(self, text):
        self.path.write_text(text, encoding="utf-8")

    def add(self, patches):
        """Changes the description, and keeps the state."""
        cases.patches.apply(cases.patches.RACK_VERBS, self.description, patches)
        self.describe(json.dumps(self.description))

    def reset(self):
        shutil.rmtree(self.folder / "state", ignore_errors=True)

    def state(self):
        """All files that the emulation keeps."""
        return {path.relative_to(self.folder).as_posix(): path.read_bytes()
                for path in sorted((self.folder / "state").rglob("*")) if path.is_file()}

    def files(self):
        """The files of the target's own file system, by their paths on it."""
        root = "state/cfdrive/"
        return {path.removeprefix(root): data for path, data in self.state().items() if path.startswith(root)}

    def place(self, address):
        """The address of an element's board and its identifier, as the calls of an update name them. None for a file
        that the inventory does not have."""
        if not address:
            return None
        item, _ = cases.patches.find_item(self.description, address)
        return address.rsplit("/", 2)[0], item["parameters"]["ID"]


class Session:
    """A run of the tool that has ended, with everything that it left."""

    def __init__(self, folder, line):
        for name in (REPORT, EVENTS, TRACE):
            (folder / name).unlink(missing_ok=True)
        self.rack = Rack(folder / "rack")
        self.before = self.rack.state()
        done = tool_runs.run(*line, folder=folder, trace=TRACE)
        self.after = self.rack.state()
        self.code = done.code
        self.text = TextView(done)
        self.trace = TraceView(lines_of(folder / TRACE))
        self.events = EventsView(lines_of(folder / EVENTS))
        report = folder / REPORT
        self.report = ReportView(cases.read_json(report)) if report.exists() else None

    def __str__(self):
        return f"exit code {self.code}\n{self.text.output}\n{self.text.errors}"

    def failed_places(self):
        """The boards and identifiers whose update could not be started, as the trace has them."""
        return {(call["address"], call["id"]) for call in self.trace.of("update2") if has_failed(call)}

    def has_run(self):
        """True if the target was locked, so that there is something to notify of."""
        return any(not has_failed(call) for call in self.trace.of("lock"))

    def touched(self):
        """What was done to the target: calls that change it, and files that are not what they were."""
        files = {path for path in {*self.before, *self.after} if self.before.get(path) != self.after.get(path)}
        return [call["call"] for call in self.trace.changes_target()] + sorted(files)


def lines_of(path):
    return path.read_text(encoding="utf-8").splitlines() if path.exists() else []


def update_line(*options):
    return "update", *ARCHIVE, *TARGET, *map(str, options)


def lay_out(folder, rack=(), archive=()):
    """Makes the example archive and the example rack in `folder`, both with patches; what was there before goes."""
    for name in ("archive", "rack"):
        shutil.rmtree(folder / name, ignore_errors=True)
    cases.lay_out_archive({"base": "examples", "patch": archive}, folder / "archive")
    (folder / "rack").mkdir()
    cases.write_target({"base": "examples", "patch": rack}, folder / "rack")


def recipe_of(name):
    """How the example archive makes an update file."""
    recipes = cases.read_json(Path(cases.ARCHIVE_BASES["examples"]) / "recipes.json")["updateFiles"]
    return next(dict(recipe) for recipe in recipes if recipe["name"] == name)


def other_version(name, version):
    """The patch of an archive after which the header of a file states another version than the description. The
    checksum stays."""
    recipe = recipe_of(name)
    data = cases.make_archive.make_files([recipe])[name]
    checksum, _ = cases.make_archive.installed(data)
    return {"recipe": {**recipe, "version": version, "checksum": checksum}}
