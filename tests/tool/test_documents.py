#!/usr/bin/env python3
"""The JSON that the tool writes keeps to the schemas that the project ships."""

import json
import sys
import unittest

try:
    import jsonschema  # noqa: F401
except ImportError:
    raise SystemExit("python3-jsonschema is missing (a Debian package)") from None

import tool_runs
from run_journals import TARGET, RunTest
from tool_runs import PROJECT, ScratchTest, run

sys.path.insert(0, str(PROJECT / "tests" / "documents"))
from schemas import spoilt_versions, strict_validator_of  # noqa: E402

# Archives and racks that differ in what their records hold: many boards of an entry, no entries, UTF-8, unknown
# versions, invalid and inactive elements, custom ones, files of the target, names of units and racks.
CASES = ("archive-content", "archive-content-empty", "element-table", "records-as-json", "update-plan",
         "which-elements-are-up-to-date", "files-written-to-target", "file-listed-by-target", "custom-elements",
         "elements-in-groups", "empty-target", "records-of-odd-targets")

# The exit code of each class of failure.
EXIT_CODES = {None: 0, "elements": 1, "errors": 1, "reboot": 1, "output": 1, "unsupported": 2, "archive": 3,
              "target": 4, "locked": 5, "verification": 6, "stopped": 7, "selection": 8, "stale": 9}


class DocumentsTest(ScratchTest):
    """What the tool really writes."""

    def document(self, command, *line):
        """The document of a command, which keeps to its schema and says what the exit code says."""
        done = run(command, *line)
        self.assertTrue(done.output, done.errors.decode())
        document = json.loads(done.output)
        strict_validator_of(command).validate(document)
        self.assertEqual(document["format"], {"name": f"kvreflash.{command}", "version": 1})
        self.check_verdict(document, done.code)
        return document

    def check_verdict(self, document, exit_code):
        failure = document["failure"]
        self.assertEqual(EXIT_CODES[failure], exit_code)
        self.assertEqual(document["retryable"], failure in ("target", "locked", "stopped"))
        self.assertEqual(bool(document["message"]), failure is not None)

    def documents(self, archive, rack):
        """{command: document} of the commands that read no more than this."""
        target = ("-t", "127.0.0.1", "--emulate", rack)
        lines = {"content": ("--json", "-a", archive), "elements": ("--json", *target),
                 "plan": ("--json", "-a", archive, *target), "check": ("--format", "json", "-a", archive)}
        return {command: self.document(command, *line) for command, line in lines.items()}

    def test_the_examples_keep_to_the_schemas(self):
        documents = self.documents(*self.lay_out_examples())
        self.assertEqual(len(documents["plan"]["elements"]), len(documents["elements"]["elements"]) + 1)
        self.assertEqual(documents["plan"]["files"], documents["content"]["files"])

    def test_a_failure_is_a_document_too(self):
        archive, rack = self.lay_out_examples()
        missing = self.scratch / "missing"
        target = ("-t", "127.0.0.1", "--emulate", rack)
        failures = {("content", "-a", missing): "archive", ("elements", "-t", "127.0.0.2", "--emulate", rack): "target",
                    ("plan", "-a", missing, *target): "archive", ("explain", "-a", missing, *target): "archive",
                    ("plan", "-a", archive, "-t", "127.0.0.2", "--emulate", rack): "target"}
        for line, failure in failures.items():
            with self.subTest(line):
                document = self.document(*line, "--json")
                self.assertEqual(document["failure"], failure)
                self.assertNotIn("elements", document)

    def test_the_session_cases_keep_to_the_schemas(self):
        for name in CASES:
            with self.subTest(name):
                self.documents(*self.lay_out_case(name))

    def matrix(self, archive, *racks):
        """The document of a matrix, some of whose targets may fail."""
        targets = [word for rack in racks for word in ("--emulate", rack)]
        return self.document("matrix", "--json", "-a", archive, *targets)

    def test_matrices_keep_to_the_schema(self):
        archive, rack = self.lay_out_examples()
        racks = [rack, *(self.lay_out_case(name)[1] for name in CASES), self.scratch / "no rack"]
        document = self.matrix(archive, *racks)
        self.assertEqual([target["folder"] for target in document["targets"]], [str(folder) for folder in racks])
        self.assertEqual(document["targets"][-1]["failure"], "target")
        states = {element["state"] for target in document["targets"] for element in target.get("elements", [])}
        self.assertEqual(states, {"would-update", "up-to-date", "no-entry", "disabled"})
        self.assertEqual({target.get("supported") for target in document["targets"]}, {True, False, None})

    def test_a_spoilt_matrix_does_not_keep_to_its_schema(self):
        archive, rack = self.lay_out_case("records-as-json")
        self.check_spoilt("matrix", self.matrix(archive, rack, self.scratch / "no rack"))

    def check_spoilt(self, schema, document):
        """Spoilt versions of a document do not keep to its schema; how many there are."""
        validator = strict_validator_of(schema)
        tried = 0
        for spoilt in spoilt_versions(document):
            self.assertFalse(validator.is_valid(spoilt), spoilt)
            tried += 1
        return tried

    def explanation(self, archive, rack, *options):
        return self.document("explain", "--json", "-a", archive, "-t", "127.0.0.1", "--emulate", rack, *options)

    def test_explanations_keep_to_the_schema(self):
        decisions, reasons = set(), set()
        for folders in (self.lay_out_examples(), *map(self.lay_out_case, CASES)):
            for options in ((), ("--skip-custom",), ("--configuration",)):
                for element in self.explanation(*folders, *options).get("elements", []):
                    decisions.add(element["decision"])
                    reasons.update(element["reasons"])
        self.assertEqual(decisions, {"update", "leave"})
        self.assertLessEqual({"version-differs", "checksum-differs", "invalid", "inactive", "up-to-date", "no-entry",
                              "custom-left-out", "carrier-board-missing"}, reasons)

    def test_a_spoilt_explanation_does_not_keep_to_its_schema(self):
        self.check_spoilt("explain", self.explanation(*self.lay_out_examples(), "-b", "QB4120", "-e", "UserIpl"))

    def report(self, command, archive, rack, *options):
        file = self.scratch / "report.json"
        done = run(command, "-a", archive, "-t", "127.0.0.1", "--emulate", rack, "--report", file, *options)
        document = json.loads(file.read_text(encoding="utf-8"))
        strict_validator_of(command).validate(document)
        self.assertEqual(document["format"]["name"], f"kvreflash.{command}")
        self.assertEqual(document["exitCode"], done.code)
        self.check_verdict(document, done.code)
        return document

    def test_reports_keep_to_the_schema_of_their_command(self):
        archive, rack = self.lay_out_examples()
        documents = [self.report("plan", archive, rack), self.report("plan", archive, rack, "-d", "none.json"),
                     self.report("update", archive, rack, "--disable", "3"),
                     self.report("update", archive, rack, "--force", "--verify", "--reboot"),
                     self.report("verify", archive, rack), self.report("update", *self.lay_out_case("events"))]
        self.assertEqual([document["exitCode"] for document in documents], [0, 3, 0, 0, 0, 1])

    def test_a_spoilt_report_does_not_keep_to_its_schema(self):
        archive, rack = self.lay_out_examples()
        document = self.report("update", archive, rack, "-e", "UserIpl", "--verify", "--reboot")
        self.assertGreater(self.check_spoilt("update", document), 100)

    def test_a_json_report_is_the_document_of_its_command(self):
        archive, rack = self.lay_out_examples()
        file = self.scratch / "report.json"
        for command, options in (("plan", ()), ("verify", ()), ("update", ("--verify",)), ("plan", ("-d", "none"))):
            with self.subTest(command, options=options):
                done = run(command, "-a", archive, "-t", "127.0.0.1", "--emulate", rack, "--json", "--report", file,
                           *options)
                self.assertEqual(done.output.decode(), file.read_text(encoding="utf-8"))

    def test_updates_keep_to_the_schema(self):
        archive, rack = self.lay_out_examples()
        target = ("-t", "127.0.0.1", "--emulate", rack)
        document = self.document("update", "--json", "-a", archive, *target)
        self.assertEqual((document["stage"], document["exitCode"]), ("ended", 0))
        self.assertIn("updated", {element["outcome"] for element in document["elements"]})
        self.assertNotIn("elements", self.document("update", "--json", "-a", self.scratch / "missing", *target))
        refused = self.document("update", "--json", "-a", archive, *target, "-b", "QB9999")
        self.assertEqual((refused["failure"], refused["elements"]), ("selection", []))

    def test_reboots_keep_to_the_schema(self):
        _, rack = self.lay_out_examples()
        document = self.document("reboot", "--json", "-t", "127.0.0.1", "--emulate", rack)
        self.assertEqual((document["stage"], document["archive"], document["archiveFolder"], document["files"]),
                         ("rebooted", None, "", []))
        self.assertEqual({element["decision"] for element in document["elements"]}, {None})
        document = self.document("reboot", "--json", "-t", "127.0.0.9", "--emulate", rack)
        self.assertEqual(document["failure"], "target")

    def test_settings_keep_to_the_schema(self):
        document = self.document("settings", "--json", "--no-settings")
        self.assertEqual(document["file"]["state"], "ignored")
        self.check_spoilt("settings", document)

    def test_what_failed_has_its_reason(self):
        reasons = {}
        for name in ("events", "update-file-missing", "update-fails-and-cancels-later-phase"):
            for element in self.report("update", *self.lay_out_case(name))["elements"]:
                reasons.setdefault(element["outcome"], set()).add(element["reason"])
        for outcome in ("failed", "cancelled", "file-missing"):
            self.assertTrue(reasons[outcome])
            self.assertNotIn("", reasons[outcome])
        self.assertEqual(reasons["updated"] | reasons.get("not-planned", {""}), {""})

    def events(self, folders, exit_code, *options):
        archive, rack = folders
        file = self.scratch / "events.jsonl"
        done = run("update", "-a", archive, "-t", "127.0.0.1", "--emulate", rack, "--events", file, *options)
        self.assertEqual(done.code, exit_code, done.output.decode())
        events = [json.loads(line) for line in file.read_text(encoding="utf-8").splitlines()]
        for event in events:
            strict_validator_of("events").validate(event)
        return events

    def test_events_keep_to_the_schema(self):
        events = self.events(self.lay_out_examples(), 0, "--verify") + self.events(self.lay_out_case("events"), 1)
        self.assertEqual({event["event"] for event in events}, {
            "runBegin", "plan", "locked", "phase", "progress", "transfer", "elementStart", "elementError", "elementEnd",
            "unlocked", "verify", "runEnd"})
        for event in events:
            self.check_spoilt("events", event)

    def test_events_begin_and_end_with_the_run(self):
        archive, rack = self.lay_out_examples()
        missing = self.scratch / "missing"
        for folder, exit_code, failure in ((archive, 0, None), (missing, 3, "archive")):
            first, *_, last = self.events((folder, rack), exit_code)
            self.assertEqual((first["event"], first["command"], first["target"], first["archiveFolder"]),
                             ("runBegin", "update", "127.0.0.1", str(folder)))
            self.assertEqual((last["event"], last["exitCode"], last["failure"]), ("runEnd", exit_code, failure))

    def test_events_name_what_failed_and_why(self):
        folders = self.lay_out_case("events")
        events = self.events(folders, 1)
        names = [element["displayName"] for element in self.report("plan", *folders)["elements"]]
        failed = [event for event in events if event["event"] == "elementError"]
        self.assertTrue(failed)
        for event in failed:
            self.assertEqual(event["name"], names[event["value"]])
            self.assertTrue(event["reason"])

    def test_a_spoilt_document_does_not_keep_to_its_schema(self):
        documents = self.documents(*self.lay_out_case("records-as-json"))
        tried = sum(self.check_spoilt(*found) for found in documents.items())
        self.assertGreater(tried, 300)


class RunDocumentsTest(RunTest):
    """What the tool writes of runs, and of plans that are saved."""

    def checked_lines(self, file):
        """The lines of a journal, each of which keeps to its schema."""
        validator = strict_validator_of("journal")
        lines = [json.loads(line) for line in file.read_text(encoding="utf-8").splitlines()]
        for line in lines:
            validator.validate(line)
        return lines

    def checked(self, schema, document):
        """The document, which keeps to its schema, whose spoilt versions do not."""
        validator = strict_validator_of(schema)
        validator.validate(document)
        for spoilt in spoilt_versions(document):
            self.assertFalse(validator.is_valid(spoilt), spoilt)
        return document

    def test_each_line_of_a_journal_keeps_to_its_schema(self):
        self.assertEqual(self.update("--verify", "--reboot").code, 0)
        lines = self.checked_lines(*self.files())
        self.assertEqual({line["event"] for line in lines}, {
            "begin", "plan", "locked", "intent", "phase", "transfer", "elementStart", "elementEnd", "unlocked",
            "verify", "reboot", "runEnd"})
        self.assertTrue([line["sha256"] for line in lines if "sha256" in line])
        validator = strict_validator_of("journal")
        for line in lines:
            for spoilt in spoilt_versions(line):
                self.assertFalse(validator.is_valid(spoilt), spoilt)

    def test_so_do_those_of_an_update_that_fails_and_of_a_reboot(self):
        archive, rack = self.lay_out_case("events")
        target = ("-t", TARGET, "--emulate", rack, "--journal", self.journal)
        self.assertEqual(run("update", "-a", archive, *target).code, 1)
        run("reboot", *target)
        update, reboot = map(self.checked_lines, self.files())
        self.assertIn("elementError", [line["event"] for line in update])
        self.assertEqual((reboot[0]["command"], reboot[0]["plan"]["archive"]["descriptionSha256"]), ("reboot", ""))

    def test_the_history_keeps_to_its_schema(self):
        self.assertEqual(self.checked("history", self.history())["runs"], [])
        self.assertEqual(self.update("--verify").code, 0)
        run("reboot", "-t", TARGET, "--emulate", self.rack, "--journal", self.journal)
        (self.journal / "20261122T101500123Z-0a1b2c3d.jsonl").write_text("no journal\n", encoding="utf-8")
        document = self.checked("history", self.history())
        self.assertEqual([one["command"] for one in document["runs"]], ["update", "reboot"])

    def test_a_run_keeps_to_its_schema(self):
        self.assertEqual(self.update("-e", "UserIpl", "--verify").code, 0)
        self.assertEqual(self.update("-e", "UserIpl").code, 0)
        for one in self.runs():
            document = self.checked("run", self.history(one["id"]))
            self.assertEqual(document["run"], one)
            self.assertTrue(document["elements"])
        document = self.checked("run", self.history("20261122T101500123Z-0a1b2c3d", code=8))
        self.assertEqual((document["run"], document["elements"]), (None, []))

    def test_a_run_that_broke_off_keeps_to_the_schemas(self):
        self.assertEqual(self.update("-e", "UserIpl").code, 0)
        (file,) = self.files()
        lines = file.read_bytes().splitlines(keepends=True)
        for count in range(1, len(lines)):
            file.write_bytes(b"".join(lines[:count]))
            (one,) = self.checked("history", self.history())["runs"]
            self.assertEqual((one["state"], one["end"]), ("broken-off", None))
            strict_validator_of("run").validate(self.history(one["id"]))

    def test_a_saved_plan_keeps_to_its_schema(self):
        self.save("-e", "UserIpl", "--disable", "1", "--unlisted-files", "changed")
        document = self.checked("saved-plan", json.loads(self.plan.read_text(encoding="utf-8")))
        self.assertEqual((document["options"]["elements"], document["options"]["unlistedFiles"]),
                         ("UserIpl", "changed"))
        self.assertEqual(self.run_plan("--json").code, 0)
        lines = self.checked_lines(*self.files())
        self.assertEqual(lines[0]["plan"]["id"], document["id"])


if __name__ == "__main__":
    tool_runs.main()
