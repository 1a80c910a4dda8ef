#!/usr/bin/env python3
"""Runs that go on are runs like others: they are stopped, killed, shown and reported, and go on themselves."""

import json
import os
import shutil
import signal
import subprocess
import sys
import time

import tool_runs
from run_journals import RunTest
from tool_runs import command_of, run

sys.path.insert(0, str(tool_runs.PROJECT / "tests" / "documents"))
from schemas import strict_validator_of  # noqa: E402


class StoppedResumeTest(RunTest):
    """A run that goes on is asked to end."""

    def setUp(self):
        if tool_runs.arguments.launcher:
            self.skipTest("what launches the tool is in between")
        super().setUp()

    def start_resume(self, *more):
        """One that goes on with phase 1 and has begun with that."""
        process = subprocess.Popen(command_of("resume", "--journal", self.journal, "--json", "--report", self.report,
                                              *more), env={**os.environ, "KV_TIME_SCALE": "0.1"},
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(process.kill)
        end = time.monotonic() + 60
        while len(self.files()) < 2 or b'"event":"phase"' not in self.files()[-1].read_bytes():
            self.assertIsNone(process.poll())
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)
        return process

    def stop(self, process):
        process.send_signal(signal.SIGINT)
        output, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 7, errors.decode())
        return json.loads(output), errors.decode()

    def test_it_ends_in_its_own_order_and_goes_on_later(self):
        self.assertEqual(self.update().code, 0)
        finished = self.state()
        self.cut_journal("intent", 2)
        self.reset()
        document, errors = self.stop(self.start_resume())
        last = errors.splitlines()[-1]
        self.assertRegex(last, r"^kvreflash: ended on request: \d+ elements not started$")
        self.assertEqual((document["exitCode"], document["failure"], document["message"]),
                         (7, "stopped", last.removeprefix("kvreflash: ")))
        self.assertEqual(json.loads(self.report.read_text(encoding="utf-8")), document)
        outcomes = [element["outcome"] for element in document["elements"] if element["decision"] == "update"]
        self.assertEqual(set(outcomes), {"updated", "not-started"})

        first, second = self.runs()
        self.assertEqual((first["state"], first["open"], first["resumedBy"]), ("broken-off", False, second["id"]))
        self.assertEqual((second["state"], second["open"], second["end"]["exitCode"]), ("stopped", True, 7))
        self.assertNotEqual(self.state(), finished)

        done = self.resume("--verify")
        self.assertEqual(done.code, 0, done.errors.decode())
        self.assertEqual(self.state(), finished)
        third = self.runs()[-1]
        self.assertEqual((third["state"], third["resumes"]), ("complete", second["id"]))
        self.assertEqual([one["open"] for one in self.runs()], [False, False, False])
        self.assertEqual(self.resume().code, 8)

    def test_what_was_done_before_both_stays_done(self):
        self.break_off("unlocked")
        shutil.rmtree(self.rack / "state" / "elements")  # what the target reports is as it was
        self.stop(self.start_resume())
        done = self.resume("--json")
        self.assertEqual(done.code, 0, done.errors.decode())
        (element,) = [element for element in json.loads(done.output)["elements"] if not element["address"]]
        self.assertEqual((element["decision"], element["reasons"]), ("leave", ["done-before"]))


class BrokenOffTest(RunTest):
    """What is said of a run that did not come to its end."""

    def setUp(self):
        super().setUp()
        self.break_off("elementEnd", 5)
        (self.one,) = self.runs()

    def show(self, *more):
        return run("history", "--journal", self.journal, self.one["id"], *more)

    def test_document_and_report_agree_with_its_journal(self):
        done = self.show("--json", "--report", self.report)
        self.assertEqual((done.code, done.errors), (0, b""))
        document = json.loads(done.output)
        strict_validator_of("run").validate(document)
        self.assertEqual(document["run"], self.one)
        self.assertEqual((self.one["state"], self.one["open"], self.one["end"]), ("broken-off", True, None))
        report = json.loads(self.report.read_text(encoding="utf-8"))
        strict_validator_of("update").validate(report)
        self.assertEqual((report["failure"], report["message"], report["exitCode"]), ("errors", "the run broke off", 1))
        self.assertEqual((report["begin"], report["end"], report["stage"]), (self.one["begin"], None, "locked"))
        outcomes = [element["outcome"] for element in document["elements"]]
        self.assertEqual([element["outcome"] for element in report["elements"]], outcomes)
        self.assertEqual(outcomes.count("updated"), 5)
        meanings = {"done": "updated", "in-progress": "in-progress", "untouched": "not-started",
                    "not-planned": "not-planned"}
        self.assertEqual([meanings[element["progress"]] for element in document["elements"]], outcomes)

    def test_who_waits_for_it_gets_the_exit_code_of_its_report(self):
        self.assertEqual(self.show("--wait").code, 1)

    def test_its_page_says_so(self):
        page = self.scratch / "report.html"
        self.assertEqual(self.show("--report", page).code, 0)
        self.assertIn("the run broke off", page.read_text(encoding="utf-8"))


if __name__ == "__main__":
    tool_runs.main()
