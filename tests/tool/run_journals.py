"""What tests of saved plans and of the journal share."""

import json
import shutil

from tool_runs import ScratchTest, run

TARGET = "127.0.0.1"


class RunTest(ScratchTest):
    """Tests with the example archive, the example rack and a journal of their own."""

    def setUp(self):
        super().setUp()
        self.archive, self.rack = self.lay_out_examples()
        self.journal = self.scratch / "journal"
        self.plan = self.scratch / "plan.json"
        self.report = self.scratch / "report.json"
        self.every_view = ("--preflight", "--verify", "--json", "--report", self.report)

    def on_target(self, command, *more):
        return run(command, "-a", self.archive, "-t", TARGET, "--emulate", self.rack, *more)

    def update(self, *more):
        return self.on_target("update", "--journal", self.journal, *more)

    def save(self, *more, code=0):
        done = self.on_target("plan", "--save", self.plan, "--journal", self.journal, *more)
        self.assertEqual(done.code, code, done.errors.decode())
        return done

    def run_plan(self, *more, journal=None):
        return run("update", "--plan", self.plan, "--emulate", self.rack, "--journal", journal or self.journal, *more)

    def resume(self, *more):
        return run("resume", "--emulate", self.rack, "--journal", self.journal, *more)

    def history(self, *more, code=0):
        done = run("history", "--journal", self.journal, "--json", *more)
        self.assertEqual(done.code, code, done.errors.decode())
        return json.loads(done.output)

    def runs(self):
        return self.history()["runs"]

    def files(self):
        """The files of the runs, from the oldest to the newest."""
        return sorted(self.journal.glob("*.jsonl"))

    def break_off(self, event, occurrence=1):
        """Updates, and cuts the journal behind this record, as a computer does that loses its power. The target is what
        it was after the update."""
        self.assertEqual(self.update().code, 0)
        self.cut_journal(event, occurrence)

    def cut_journal(self, event, occurrence=1):
        """Cuts the last file of the journal behind this record."""
        lines = self.files()[-1].read_bytes().splitlines(keepends=True)
        places = [place for place, line in enumerate(lines) if b'"event":"%s"' % event.encode() in line]
        self.files()[-1].write_bytes(b"".join(lines[:places[occurrence - 1] + 1]))

    def reset(self):
        shutil.rmtree(self.rack / "state", ignore_errors=True)

    def state(self):
        """What the target shows, and the files that it has."""
        shown = run("elements", "--json", "-t", TARGET, "--emulate", self.rack)
        self.assertEqual(shown.code, 0, shown.errors.decode())
        files = {path: path.read_bytes() for path in sorted((self.rack / "state").rglob("*"))
                 if path.is_file() and "cfdrive" in path.parts}
        return shown.output, files

    def assert_agree(self, done, code, failure):
        """The exit code, the last line, the document and the report of an update with every view say the same. Returns
        the document."""
        self.assertEqual(done.code, code, done.errors.decode())
        document = json.loads(done.output)
        self.assertEqual((document["exitCode"], document["failure"]), (code, failure))
        self.assertEqual(json.loads(self.report.read_text(encoding="utf-8")), document)
        if failure:
            self.assertEqual(self.last_error(done), f"kvreflash: {document['message']}")
        return document

    def last_error(self, done):
        return done.errors.decode().splitlines()[-1]

    def edit_target(self, edit):
        """Changes the description of the rack: `edit` is called with it."""
        path = self.rack / "target.json"
        target = json.loads(path.read_text(encoding="utf-8"))
        edit(target)
        path.write_text(json.dumps(target), encoding="utf-8")
