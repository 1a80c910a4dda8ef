#!/usr/bin/env python3
"""A plan that was saved is what runs, or nothing does."""

import json
import os
import shutil
import subprocess

import tool_runs
from run_journals import TARGET, RunTest
from tool_runs import run


def first(items, identifier):
    """The first item of this identifier, in preorder; None if there is none."""
    for item in items:
        if item["id"] == identifier:
            return item
        found = first(item.get("items", []), identifier)
        if found is not None:
            return found
    return None


def first_element(target):
    return first([target["inventory"]], "UPDATE_ELEMENT")


class SavedPlanTest(RunTest):
    def assert_stale(self, done, *differences):
        self.assertEqual(done.code, 9, done.errors.decode())
        self.assertTrue(self.last_error(done).startswith("kvreflash: nothing was touched: the plan does not hold any "
                                                         "more: "), self.last_error(done))
        for difference in differences:
            self.assertIn(f"kvreflash: plan: {difference}", done.errors.decode())
        self.assertFalse((self.rack / "state").exists())

    def test_what_was_saved_is_shown_and_run(self):
        self.save()
        self.assertFalse((self.rack / "state").exists())
        shown = run("plan", "--show", self.plan)
        self.assertEqual(shown.code, 0, shown.errors.decode())
        self.assertIn(b"Changes       20\n", shown.output)
        document = json.loads(run("plan", "--show", self.plan, "--json").output)
        self.assertEqual(document["format"], {"name": "kvreflash.plan", "version": 1})
        planned = json.loads(self.on_target("plan", "--json").output)
        for element, shown in zip(planned["elements"], document["elements"], strict=True):
            self.assertEqual({**element, **shown}, element)
        self.assertEqual(run("plan", "--show", self.plan, "--report", self.scratch / "plan.html").code, 0)
        self.assertIn("<html", (self.scratch / "plan.html").read_text(encoding="utf-8"))
        done = self.run_plan("--json", "--report", self.scratch / "report.json", "--events", self.scratch / "events")
        self.assertEqual(done.code, 0, done.errors.decode())
        self.assertEqual(json.loads(done.output)["verificationCounts"]["as-expected"], 19)
        undisturbed = self.state()
        self.reset()
        self.assertEqual(self.update().code, 0)
        self.assertEqual(self.state(), undisturbed)
        self.assertEqual([one["plan"] for one in self.runs()], [json.loads(self.plan.read_text())["id"], None])

    def test_a_plan_is_shown_when_nothing_of_it_is_left(self):
        self.save()
        shutil.rmtree(self.archive)
        shutil.rmtree(self.rack)
        self.assertEqual(run("plan", "--show", self.plan).code, 0)

    def test_options_that_decide_are_those_of_the_plan(self):
        self.save("--force", "--disable", "3", "-b", "QB4120,QB7001", "--no-downgrade", "--unlisted-files", "never")
        options = json.loads(self.plan.read_text(encoding="utf-8"))["options"]
        self.assertEqual((options["force"], options["disable"], options["noDowngrade"], options["unlistedFiles"]),
                         (True, ["3"], True, "never"))
        self.assertIn(b"Options       --board-type QB4120,QB7001 --force --no-downgrade --unlisted-files never "
                      b"--disable 3\n", run("plan", "--show", self.plan).output)
        done = self.run_plan("--json")
        self.assertEqual(done.code, 0, done.errors.decode())
        elements = json.loads(done.output)["elements"]
        self.assertEqual(elements[3]["reasons"], ["up-to-date", "disabled"]
                         if "up-to-date" in elements[3]["reasons"] else ["disabled"])
        self.assertTrue(all(one["outcome"] == "updated" for one in elements if one["decision"] == "update"))

    def test_a_second_run_is_refused(self):
        self.save()
        self.assertEqual(self.run_plan().code, 0)
        done = self.run_plan()
        self.assertEqual(done.code, 9)
        self.assertIn(b"plan: 'QB4120 (A), SN 2815, Firmware' (", done.errors)
        self.assertEqual(len(self.runs()), 1)

    def test_a_second_run_is_refused_where_nothing_shows(self):
        self.assertEqual(self.update().code, 0)
        self.save()  # only the file that is not listed is left
        self.assertEqual(json.loads(self.plan.read_text())["changes"], 1)
        self.assertEqual(self.run_plan().code, 0)
        done = self.run_plan()
        self.assertEqual(done.code, 9, done.errors.decode())
        self.assertIn("it was run with success already: " + self.runs()[-1]["id"], self.last_error(done))
        without = self.run_plan(journal="none")
        self.assertEqual(without.code, 0)
        self.assertIn(b"kvreflash: warning: without a journal nobody knows whether this plan was run before\n",
                      without.errors)

    def test_whatever_has_changed_on_the_target_is_named(self):
        self.save()
        saved = (self.rack / "target.json").read_bytes()
        state = first_element(json.loads(saved))["parameters"]
        edits = {"VERSION": ("23.2a11", 'installed.version is "23.2a11", and was'),
                 "CHECKSUM_CRC32": (7, "installed.checksumCrc32 is 7, and was"),
                 "VALID": (0, "installed.valid is false, and was true"),
                 "ACTIVE": (0, "installed.active is false, and was true")}
        for parameter, (value, difference) in edits.items():
            self.assertIn(parameter, state)
            with self.subTest(parameter):
                self.edit_target(lambda target: first_element(target)["parameters"].update({parameter: value}))
                done = self.run_plan("--preflight", "--verify", "--report", self.scratch / "report.json")
                self.assertEqual(done.code, 9)
                self.assertIn(difference, done.errors.decode())
                self.assertEqual(json.loads((self.scratch / "report.json").read_text())["failure"], "stale")
                self.assertFalse((self.rack / "state").exists())
            (self.rack / "target.json").write_bytes(saved)
        self.assertEqual(self.run_plan().code, 0)

    def test_every_view_says_that_it_does_not_hold_any_more(self):
        self.save()
        self.edit_target(lambda target: first_element(target)["parameters"].update(VERSION="23.2a11"))
        document = self.assert_agree(self.run_plan(*self.every_view), 9, "stale")
        self.assertEqual((document["retryable"], document["stage"], document["look"]), (False, "prepared", None))
        self.assertEqual({element["outcome"] for element in document["elements"]}, {"not-started", "not-planned"})
        self.assertFalse((self.rack / "state").exists())
        self.assertEqual(self.files(), [])

    def test_another_rack_is_another_target(self):
        self.save()

        def other_board(target):
            board = first([target["inventory"]], "CN")
            board["parameters"]["PRODUCT/SERIAL_NUMBER"] = 4711

        self.edit_target(other_board)
        done = self.run_plan()
        self.assertEqual(done.code, 9)
        self.assertRegex(done.errors.decode(), r"target.nodeSerialNumbers is \[.*4711.*\], and was \[")
        self.assertIn("serialNumber is 4711, and was", done.errors.decode())

    def test_whatever_has_changed_in_the_archive_is_named(self):
        self.save()
        image = self.archive / "network.ini"
        content = image.read_bytes()
        image.write_bytes(content[:-1] + bytes([content[-1] ^ 1]))
        self.assert_stale(self.run_plan(), "update file 'network.ini': sha256 is ")
        image.write_bytes(content + b"\n")
        self.assert_stale(self.run_plan(), f"update file 'network.ini': size is {len(content) + 1}, and was "
                                           f"{len(content)}")
        image.write_bytes(content)
        description = self.archive / "archive.json"
        description.write_bytes(description.read_bytes() + b"\n")
        self.assert_stale(self.run_plan(), "archive.descriptionSha256 is ")

    def test_the_archive_may_have_moved(self):
        self.save()
        moved = self.scratch / "moved"
        self.archive.rename(moved)
        self.assertEqual(self.run_plan().code, 3)
        self.assertEqual(self.run_plan("-a", moved).code, 0)

    def test_a_file_that_was_edited_is_refused(self):
        self.save()
        text = self.plan.read_text(encoding="utf-8")
        for edited in (text.replace('"changes": 20', '"changes": 19'), text + " ", text.replace("23.2.1", "23.2.2"), ""):
            self.plan.write_text(edited, encoding="utf-8")
            for done in (self.run_plan(), run("plan", "--show", self.plan)):
                self.assertEqual(done.code, 9, done.errors.decode())
                self.assertIn("plan.json", self.last_error(done))
        self.plan.unlink()
        done = self.run_plan("--json")
        self.assertEqual(done.code, 9)
        self.assertEqual(json.loads(done.output)["failure"], "stale")
        self.assertFalse((self.rack / "state").exists())

    def test_options_that_decide_are_refused_beside_a_plan(self):
        self.save()
        for option in (("-t", TARGET), ("-d", "archive.json"), ("-b", "X"), ("-s", "1"), ("-e", "X"),
                       ("--configuration",), ("--skip-custom",), ("--force",), ("--disable", "1"), ("--no-downgrade",),
                       ("--unlisted-files", "never")):
            done = self.run_plan(*option)
            self.assertEqual(done.code, 64, option)
            self.assertIn("--plan contradicts --", self.last_error(done))
            done = run("plan", "--show", self.plan, *option)
            self.assertEqual(done.code, 64, option)
        self.assertIn("--archive is required", self.last_error(run("update", "-t", TARGET)))
        self.assertIn("--archive is required", self.last_error(run("plan", "-t", TARGET)))

    def test_a_plan_of_a_target_that_is_not_supported_is_not_saved(self):
        description = json.loads((self.archive / "archive.json").read_text(encoding="utf-8"))
        description["files"] = description["files"][-1:]
        (self.archive / "archive.json").write_text(json.dumps(description), encoding="utf-8")
        self.save(code=2)
        self.assertFalse(self.plan.exists())

    def test_a_plan_that_cannot_be_written_says_so(self):
        self.plan = self.scratch / "nowhere" / "plan.json"
        self.assertIn("cannot write", self.last_error(self.save(code=1)))

    def test_of_two_runs_at_once_one_runs(self):
        self.save()
        line = tool_runs.command_of("update", "--plan", self.plan, "--emulate", self.rack, "--journal", self.journal)
        environment = dict(os.environ, KV_TIME_SCALE="0.02")
        both = [subprocess.Popen(line, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                 stderr=subprocess.PIPE) for _ in range(2)]
        errors = [process.communicate()[1].decode() for process in both]
        codes = sorted(process.returncode for process in both)
        self.assertEqual(codes[0], 0, errors)
        self.assertIn(codes[1], (5, 9), errors)
        self.assertEqual(len(self.runs()), 1)


if __name__ == "__main__":
    tool_runs.main()
