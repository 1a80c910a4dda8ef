#!/usr/bin/env python3
"""Runs are remembered, and those that did not come to their end go on."""

import json
import os
import random
import re
import shutil
import subprocess
import time

import tool_runs
from run_journals import TARGET, RunTest
from tool_runs import run

# So many moments, drawn with this seed.
MOMENTS = int(os.environ.get("KV_KILL_MOMENTS", "15"))
SEED = int(os.environ.get("KV_KILL_SEED", "1"))
# Pauses long enough to be hit, short enough to wait for.
TIME_SCALE = "0.002"


class JournalTest(RunTest):
    def test_an_update_is_remembered_with_its_elements(self):
        self.assertEqual(self.update("--verify").code, 0)
        (one,) = self.runs()
        self.assertEqual((one["state"], one["command"], one["end"]["exitCode"], one["open"]),
                         ("complete", "update", 0, False))
        self.assertEqual(one["target"]["given"], TARGET)
        if not tool_runs.arguments.launcher:  # which has paths of its own
            self.assertEqual(one["target"]["places"], [str(self.rack)])
            self.assertEqual(one["archiveFolder"], str(self.archive))
        document = self.history(one["id"])
        updated = [element for element in document["elements"] if element["decision"] == "update"]
        self.assertEqual({element["progress"] for element in updated}, {"done"})
        self.assertEqual({element["outcome"] for element in updated}, {"updated"})
        after = updated[0]["after"]
        self.assertEqual(after["version"], updated[0]["availableVersion"])
        text = run("history", "--journal", self.journal, one["id"])
        self.assertEqual(text.code, 0)
        self.assertIn(b"complete", text.output)
        self.assertIn(b"complete", run("history", "--journal", self.journal).output)
        self.assertEqual(run("history", "--journal", self.journal, one["id"], "--report",
                             self.scratch / "report.html").code, 0)
        self.assertIn("QB4120", (self.scratch / "report.html").read_text(encoding="utf-8"))

    def test_its_lines_are_the_records_of_the_events_chained(self):
        self.assertEqual(self.update("--events", self.scratch / "events").code, 0)
        lines = [json.loads(line) for line in self.files()[0].read_text(encoding="utf-8").splitlines()]
        self.assertEqual([line["number"] for line in lines], list(range(len(lines))))
        names = [line["event"] for line in lines]
        self.assertEqual(names[:3] + names[-2:], ["begin", "plan", "locked", "unlocked", "runEnd"])
        events = [json.loads(line) for line in (self.scratch / "events").read_text(encoding="utf-8").splitlines()]
        told = [event["event"] for event in events if event["event"] not in ("progress", "runBegin")]
        kept = [name for name in names if name not in ("begin", "intent")]
        self.assertEqual(kept, told)
        intents = [line for line in lines if line["event"] == "intent"]
        self.assertEqual([line["phase"] for line in intents], list(range(len(intents))))
        for line in intents:
            self.assertEqual(lines[line["number"] + 1]["event"], "phase")

    def test_its_files_are_private(self):
        if os.name != "posix" or tool_runs.arguments.launcher:
            self.skipTest("rights of POSIX")
        self.assertEqual(self.update().code, 0)
        self.assertEqual(self.journal.stat().st_mode & 0o777, 0o700)
        self.assertEqual(self.files()[0].stat().st_mode & 0o777, 0o600)

    def test_a_refused_update_leaves_no_run(self):
        self.assertEqual(run("update", "-a", self.archive, "-t", TARGET, "--emulate", self.rack, "-e", "nothing",
                             "--journal", self.journal).code, 8)
        self.assertEqual(self.files(), [])

    def test_a_reboot_is_remembered(self):
        done = run("reboot", "-t", TARGET, "--emulate", self.rack, "--journal", self.journal)
        (one,) = self.runs()
        self.assertEqual((one["command"], one["end"]["exitCode"]), ("reboot", done.code))
        self.assertEqual(self.resume(one["id"]).code, 8)

    def test_a_folder_that_was_asked_for_must_be_writable(self):
        (self.scratch / "file").write_text("")
        done = self.on_target("update", "--journal", self.scratch / "file")
        self.assertEqual(done.code, 1)
        self.assertIn("the journal in", self.last_error(done))
        self.assertFalse((self.rack / "state").exists())

    def test_the_default_folder_is_one_warning(self):
        former = os.environ["XDG_STATE_HOME"]
        (self.scratch / "file").write_text("")
        os.environ["XDG_STATE_HOME"] = str(self.scratch / "file")
        self.addCleanup(os.environ.__setitem__, "XDG_STATE_HOME", former)
        done = self.on_target("update")
        self.assertEqual(done.code, 0)
        if not tool_runs.arguments.launcher:
            self.assertEqual(done.errors.count(b"warning: the journal in"), 1, done.errors)
        self.assertEqual(self.on_target("update", "--journal", "none").errors, b"")

    def test_without_a_journal_nothing_is_known(self):
        self.assertEqual(self.runs(), [])
        self.assertEqual(self.history("20261122T101500123Z-0a1b2c3d", code=8)["failure"], "selection")
        self.assertEqual(self.resume().code, 8)
        self.assertEqual(self.resume("../x").code, 8)
        self.assertEqual(run("history", "--journal", self.journal, "--wait").code, 8)

    def test_runs_of_one_target_are_found_by_it(self):
        self.assertEqual(self.update().code, 0)
        self.assertEqual(len(self.history("-t", TARGET)["runs"]), 1)
        self.assertEqual(len(self.history("-t", "10.0.0.1")["runs"]), 0)

    def test_a_run_that_goes_on_is_awaited(self):
        # Long enough to be seen by a tool that takes its time to start.
        environment = dict(os.environ, KV_TIME_SCALE="0.5" if tool_runs.arguments.launcher else "0.05")
        process = subprocess.Popen(tool_runs.command_of("update", "-a", self.archive, "-t", TARGET, "--emulate",
                                                        self.rack, "--journal", self.journal), env=environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while not self.runs():
            self.assertIsNone(process.poll())
        (one,) = self.runs()
        if one["state"] == "running":
            self.assertEqual(self.resume(one["id"]).code, 5)
            self.assertEqual(self.resume().code, 5)
        self.assertEqual(run("history", "--journal", self.journal, "--wait", one["id"]).code, 0)
        self.assertEqual(process.wait(), 0)

    def test_a_file_that_was_changed_says_so(self):
        self.assertEqual(self.update().code, 0)
        file = self.files()[0]
        file.write_bytes(file.read_bytes().replace(b'"event":"locked"', b'"event":"loocked"'))
        (one,) = self.runs()
        self.assertEqual((one["state"], one["fault"]),
                         ("broken-off", "line 4 does not follow the one before: the file was changed"))


class UnlistedFilesTest(RunTest):
    def reasons(self, done):
        (element,) = [element for element in json.loads(done.output)["elements"] if not element["address"]]
        return element["decision"], element["reasons"]

    def test_are_written_once_if_they_are_the_same(self):
        self.assertEqual(self.reasons(self.update("--json", "--unlisted-files", "changed"))[0], "update")
        done = self.update("--json", "--unlisted-files", "changed")
        self.assertEqual(self.reasons(done), ("leave", ["written-before"]))
        self.assertEqual(self.reasons(self.update("--json"))[0], "update")
        content = (self.archive / "network.ini").read_bytes()
        (self.archive / "network.ini").write_bytes(content + b"# more\n")
        done = self.update("--json", "--unlisted-files", "changed")
        decision, reasons = self.reasons(done)
        self.assertEqual((decision, reasons[-1]), ("update", "content-differs"))

    def test_are_written_again_if_nobody_knows(self):
        self.assertEqual(self.update().code, 0)
        done = self.on_target("update", "--journal", "none", "--json", "--unlisted-files", "changed")
        self.assertEqual(self.reasons(done)[0], "update")
        other = self.scratch / "other"
        shutil.copytree(self.rack, other)
        done = run("update", "-a", self.archive, "-t", TARGET, "--emulate", other, "--journal", self.journal, "--json",
                   "--unlisted-files", "changed")
        self.assertEqual(self.reasons(done)[0], "update")

    def test_are_left_out_on_request(self):
        done = self.update("--json", "--unlisted-files", "never")
        self.assertEqual(self.reasons(done), ("leave", ["unlisted-left-out"]))
        self.assertEqual(list((self.rack / "state").rglob("network.ini")), [])
        self.assertEqual(self.reasons(self.on_target("plan", "--json", "--unlisted-files", "never")),
                         ("leave", ["unlisted-left-out"]))


class ResumeTest(RunTest):
    def start(self):
        return subprocess.Popen(tool_runs.command_of("update", "-a", self.archive, "-t", TARGET, "--emulate", self.rack,
                                                     "--journal", self.journal),
                                env=dict(os.environ, KV_TIME_SCALE=TIME_SCALE), stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def test_nothing_left_to_do_is_a_success(self):
        self.break_off("unlocked")
        done = self.resume()
        self.assertEqual(done.code, 0, done.errors.decode())
        self.assertIn(b"Going on with the run", done.output)
        first, second = self.runs()
        self.assertEqual((first["state"], first["resumedBy"], second["resumes"]),
                         ("broken-off", second["id"], first["id"]))
        self.assertEqual(self.resume().code, 8)

    def test_files_that_the_journal_has_as_written_count_as_done(self):
        self.break_off("unlocked")
        done = self.resume("--json")
        (element,) = [element for element in json.loads(done.output)["elements"] if not element["address"]]
        self.assertEqual(element["reasons"], ["done-before"])

    def test_another_archive_is_refused(self):
        self.break_off("locked")
        image = self.archive / "network.ini"
        image.write_bytes(image.read_bytes() + b"\n")
        done = self.resume()
        self.assertEqual(done.code, 9)
        self.assertIn(b"run: update file 'network.ini': sha256 is ", done.errors)
        self.assertTrue(self.last_error(done).startswith("kvreflash: nothing was touched: the run cannot go on: "))

    def test_what_is_in_doubt_is_updated_on_request_only(self):
        def forget(target):
            """The first element reports nothing."""
            def walk(item):
                if item["id"] == "UPDATE_ELEMENT":
                    for name in ("VERSION", "CHECKSUM_CRC32"):
                        item["parameters"].pop(name, None)
                    item["parameters"]["VERSION"] = "0.0"
                    return True
                return any(walk(sub) for sub in item.get("items", []))
            self.assertTrue(walk(target["inventory"]))

        self.break_off("intent", 4)
        self.reset()
        self.edit_target(forget)
        done = self.resume("--json", "--verify")
        self.assertEqual(done.code, 1, done.errors.decode())
        said = re.search("1 element in doubt: 'resume ([^ ]+) --redo' updates ", self.last_error(done))
        self.assertTrue(said, self.last_error(done))
        doubtful = [element for element in json.loads(done.output)["elements"] if "in-doubt" in element["reasons"]]
        self.assertEqual(len(doubtful), 1)
        done = self.resume("--json", "--redo", said[1])
        self.assertEqual(done.code, 0, done.errors.decode())
        self.assertEqual(json.loads(done.output)["elements"][doubtful[0]["index"]]["outcome"], "updated")

    def test_a_stopped_update_goes_on(self):
        if tool_runs.arguments.launcher:
            self.skipTest("signals of POSIX")
        environment = dict(os.environ, KV_TIME_SCALE="0.05")
        process = subprocess.Popen(tool_runs.command_of("update", "-a", self.archive, "-t", TARGET, "--emulate",
                                                        self.rack, "--journal", self.journal), env=environment,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        while not self.runs():
            time.sleep(0.01)
        process.terminate()
        self.assertEqual(process.wait(), 7)
        (one,) = self.runs()
        self.assertEqual((one["state"], one["open"]), ("stopped", True))
        self.assertEqual(self.resume().code, 0)
        finished = self.state()
        self.reset()
        self.assertEqual(self.update().code, 0)
        self.assertEqual(self.state(), finished)

    def test_killed_at_any_moment_it_leads_to_the_same_target(self):
        began = time.monotonic()
        self.assertEqual(self.start().wait(), 0)
        seconds = time.monotonic() - began
        complete = self.state()
        moments = random.Random(SEED)
        killed = 0
        for number in range(MOMENTS):
            self.reset()
            shutil.rmtree(self.journal)
            moment = moments.uniform(0, seconds)
            with self.subTest(number=number, moment=moment):
                update = self.start()
                try:
                    update.wait(moment)
                except subprocess.TimeoutExpired:
                    update.kill()
                    update.wait()
                    killed += 1
                self.check_resumed(complete)
        print(f"{MOMENTS} moments of seed {SEED}, {killed} of them during the update")
        self.assertGreater(killed, MOMENTS // (4 if tool_runs.arguments.launcher else 2))

    def check_resumed(self, complete):
        runs = self.runs()
        if not runs or runs[0]["state"] == "complete":
            self.assertEqual(self.update().code, 0)
        else:
            self.assertEqual(runs[0]["state"], "broken-off")
            self.check_done(runs[0]["id"])
            done = self.resume("--redo")
            self.assertEqual(done.code, 0, done.errors.decode())
        self.assertEqual(self.state(), complete)

    def check_done(self, name):
        """What the journal says is done the target reports."""
        shown = json.loads(run("elements", "--json", "-t", TARGET, "--emulate", self.rack).output)["elements"]
        reported = {element["address"]: element["installed"] for element in shown}
        for element in self.history(name)["elements"]:
            if element["progress"] == "done" and element["address"]:
                found = reported[element["address"]]
                self.assertEqual(found["checksumCrc32"] or element["availableChecksum"], element["availableChecksum"])
                self.assertTrue(found["valid"])


if __name__ == "__main__":
    tool_runs.main()
