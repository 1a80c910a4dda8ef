"""Tests of the session runner, against a stand-in that prints what its command line says."""

import contextlib
import fcntl
import io
import json
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

import cases
import leftovers
import patches
from run_sessions import run_case
from steps import Runner

STAND_IN = '''
import json, os, sys, time
def trace(call):
    with open(os.environ["KV_TRACE"], "a") as file:
        file.write(call + "\\n")
verb, *rest = sys.argv[1:]
if verb == "print":
    sys.stdout.buffer.write(rest[0].encode().decode("unicode_escape").encode())
elif verb == "complain":
    print(rest[0], file=sys.stderr)
elif verb == "cat":
    sys.stdout.write(open(rest[0]).read())
elif verb == "write":
    os.makedirs(os.path.dirname(rest[0]))
    open(rest[0], "w").close()
elif verb == "exit":
    sys.exit(int(rest[0]))
elif verb == "trace":
    for call in rest:
        trace(call)
elif verb == "hang":
    print("begun", flush=True)
    for call in rest:
        trace(call)
    print("more", flush=True)
    time.sleep(60)
'''


class RunnerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.tool = self.folder / "stand_in.py"
        self.tool.write_text(textwrap.dedent(STAND_IN))
        self.case = self.folder / "case"
        self.case.mkdir()

    def runner(self, **options):
        return Runner(self.tool, [sys.executable, "-B"], timeout=20, **options)

    def report(self, *steps, files=None, runner=None, **script):
        script = {"about": "A test.", "steps": list(steps), **script}
        (self.case / "case.json").write_text(json.dumps(script))
        for name, text in (files or {}).items():
            (self.case / name).write_text(text, newline="")
        return run_case(runner or self.runner(), self.case)

    def test_expected_output_passes(self):
        self.assertEqual(self.report({"run": "print 'a  \\n'"}, files={"1.out": "a  \n"}), "")

    def test_one_blank_less_fails_and_shows_where(self):
        report = self.report({"run": "print 'a \\n'"}, files={"1.out": "a  \n"})
        self.assertIn("step 1: 1.out", report)
        self.assertIn("-a\u00b7\u00b7", report)
        self.assertIn("+a\u00b7\n", report)

    def test_output_without_expected_file_fails(self):
        self.assertIn("1.out", self.report({"run": "print x"}))

    def test_unexpected_standard_error_fails(self):
        self.assertIn("1.err", self.report({"run": "complain x"}))

    def test_expected_standard_error_passes(self):
        self.assertEqual(self.report({"run": "complain x"}, files={"1.err": "x\n"}), "")

    def test_carriage_return_is_written_as_a_sign(self):
        self.assertEqual(self.report({"run": "print '50%\\r100%\\n'"}, files={"1.out": "50%\u240d\n100%\n"}), "")

    def test_paths_are_expected_as_the_system_shows_them(self):
        files = {"1.out": "{quote}a{separator}b{quote} {escaped-separator}\n"}
        self.assertEqual(self.report({"run": r"""print "'a/b' "/'\n'"""}, files=files), "")
        self.assertEqual(self.report({"run": r"""print '"a\\b" \\\\\n'"""}, files=files,
                                     runner=self.runner(fold_crlf=True)), "")

    def test_an_update_keeps_the_signs_of_paths(self):
        files = {"1.out": "file a{separator}b\nold\n"}
        with contextlib.redirect_stdout(io.StringIO()):
            self.report({"run": r"print 'file a/b\nnew\n'"}, files=files, runner=self.runner(update=True))
        self.assertEqual((self.case / "1.out").read_text(encoding="utf-8"), "file a{separator}b\nnew\n")

    def test_carriage_return_and_line_feed_is_folded_only_when_told(self):
        steps, files = [{"run": "print 'a\\r\\n'"}], {"1.out": "a\n"}
        self.assertIn("1.out", self.report(*steps, files=files))
        self.assertEqual(self.report(*steps, files=files, runner=self.runner(fold_crlf=True)), "")

    def test_exit_code_is_compared(self):
        self.assertIn("exit code 3, expected 0", self.report({"run": "exit 3"}))
        self.assertEqual(self.report({"run": "exit 3", "exit": 3}), "")

    def test_trace_lines_are_compared_in_order(self):
        step = {"run": """trace '{"call": "a", "id": 1}' '{"call":"b"}'""", "trace": True}
        self.assertEqual(self.report(step, files={"1.trace": '{"id":1,"call":"a"}\n{"call": "b"}\n'}), "")
        self.assertIn("1.trace", self.report(step, files={"1.trace": '{"call": "b"}\n{"id":1,"call":"a"}\n'}))

    def test_update_writes_what_was_printed(self):
        with contextlib.redirect_stdout(io.StringIO()):
            self.assertEqual(self.report({"run": "print '1%\\r'"}, runner=self.runner(update=True)), "")
        self.assertEqual((self.case / "1.out").read_text(), "1%\u240d\n")

    def test_started_tool_is_killed(self):
        steps = [{"start": """hang '{"call": "a"}' '{"call": "a"}'""", "until": {"call": "a", "count": 2}}, {"kill": True}]
        self.assertEqual(self.report(*steps, files={"1.out": "begun\n"}), "")
        self.assertIn("1.out", self.report(*steps, files={"1.out": "began\n"}))

    def test_started_tool_that_ends_too_early_fails(self):
        report = self.report({"start": "print x", "until": {"call": "a"}}, {"kill": True})
        self.assertIn("before call 1 of a", report)

    def test_case_that_leaves_the_tool_running_fails(self):
        report = self.report({"start": """hang '{"call": "a"}'""", "until": {"call": "a"}})
        self.assertIn("leaves a process running", report)

    def test_command_that_does_not_end_fails(self):
        runner = self.runner()
        runner.timeout = 0.3
        self.assertIn("did not end", self.report({"run": "hang"}, runner=runner))

    def test_file_that_no_step_uses_fails(self):
        self.assertIn("no step uses 2.out", self.report({"run": "exit 0"}, files={"2.out": ""}))

    def test_unknown_words_fail(self):
        self.assertIn("no verb", self.report({"walk": "x"}))
        self.assertIn("unknown ['exitt']", self.report({"run": "exit 0", "exitt": 0}))
        self.assertIn("unknown ['stepz']", self.report({"run": "exit 0"}, stepz=[]))
        self.assertIn("no verb among", self.report({"run": "exit 0"}, rack={"base": "box", "patch": [{"burn": 1}]}))

    def test_files_are_compared_and_listed(self):
        self.assertEqual(self.report({"same": ["archive/io.bin", "archive/io.bin"]}), "")
        self.assertIn("differ", self.report({"same": ["archive/io.bin", "archive/hcn.bin"]}))
        self.assertEqual(self.report({"listing": "rack", "files": ["target.json"]}), "")
        self.assertIn("holds ['target.json']", self.report({"listing": "rack", "files": []}))

    def test_archive_and_rack_can_be_replaced(self):
        self.assertEqual(self.report(
            {"archive": {"base": "box", "patch": [{"missing": "io.bin"}]}},
            {"listing": "archive", "files": ["archive.json", "hcn.bin", "ipl.bin"]},
            {"archive": {"base": "box", "patch": [{"descriptionText": "text"}]}},
            {"run": "cat archive/archive.json"}, files={"4.out": "text"}), "")

    def test_file_that_stays_on_the_target_fails(self):
        step = {"run": "write rack/state/transferred/below/1"}
        self.assertIn("leaves behind ['state/transferred'], expected []", self.report(step))
        self.assertEqual(self.report(step, leaves=["state/transferred"]), "")
        self.assertEqual(self.report({"run": "write rack/state/elements/1"}), "")

    def test_what_a_run_takes_and_does_not_give_back_fails(self):
        for take, release in leftovers.RELEASES.items():
            with self.subTest(take):
                taken, returned = f'{{"call": "{take}"}}', f'{{"call": "{release}"}}'
                self.assertEqual(self.report({"run": f"trace '{taken}' '{returned}'"}), "")
                report = self.report({"run": f"trace '{taken}' '{returned}' '{taken}'"}, {"run": "exit 0"})
                self.assertIn(f"leaves behind ['{take}'], expected []", report)

    def test_calls_that_failed_take_and_give_back_nothing(self):
        lock, failed = '{"call": "lock"}', '{"call": "%s", "status": 1, "errors": 1}'
        self.assertEqual(self.report({"run": f"trace '{failed % 'lock'}'"}), "")
        self.assertIn("leaves behind ['lock']", self.report({"run": f"trace '{lock}' '{failed % 'unlock'}'"}))

    def test_what_one_run_takes_another_does_not_give_back(self):
        steps = [{"run": """trace '{"call": "lock"}'"""}, {"run": """trace '{"call": "unlock"}'"""}]
        self.assertIn("leaves behind ['lock'], expected []", self.report(*steps))

    def test_what_is_left_is_told_exactly(self):
        step = {"run": """trace '{"call": "lock"}'"""}
        self.assertEqual(self.report(step, step, leaves=["lock", "lock"]), "")
        self.assertIn("leaves behind ['lock', 'lock'], expected ['lock']", self.report(step, step, leaves=["lock"]))
        self.assertIn("leaves behind [], expected ['lock']", self.report({"run": "exit 0"}, leaves=["lock"]))

    def test_killed_tool_need_not_give_anything_back(self):
        steps = [{"start": """hang '{"call": "lock"}'""", "until": {"call": "lock"}}, {"kill": True}]
        self.assertEqual(self.report(*steps, files={"1.out": "begun\n"}), "")

    def test_lock_that_is_held_is_seen(self):
        self.assertEqual(leftovers.on_target(self.folder / "rack"), [])
        lock = self.folder / "rack" / "state" / "lock"
        lock.parent.mkdir(parents=True)
        with open(lock, "wb") as file:
            self.assertEqual(leftovers.on_target(self.folder / "rack"), [])
            fcntl.flock(file, fcntl.LOCK_EX)
            self.assertEqual(leftovers.on_target(self.folder / "rack"), ["state/lock"])
        self.assertEqual(leftovers.on_target(self.folder / "rack"), [])


class PatchTest(unittest.TestCase):
    def setUp(self):
        self.rack = cases.read_json(cases.HERE / "bases" / "box" / "target.json")

    def change(self, *changes):
        patches.apply(patches.RACK_VERBS, self.rack, changes)

    def test_item_is_found_by_its_address(self):
        self.change({"item": "HCN/UPDATE_INFO/UPDATE_ELEMENT[2]", "parameters": {"VERSION": "9.0"}, "without": ["VALID"],
                     "update": {"state": 3}})
        element = self.rack["inventory"]["items"][0]["items"][0]["items"][1]
        self.assertEqual((element["parameters"]["VERSION"], element["parameters"]["NAME"]), ("9.0", "UserFirmware"))
        self.assertNotIn("VALID", element["parameters"])
        self.assertEqual(element["update"], {"state": 3})

    def test_dropped_item_leaves_the_addresses_of_the_others(self):
        self.change({"dropItem": "HCN/UPDATE_INFO/UPDATE_ELEMENT[1]"})
        item, _ = patches.find_item(self.rack, "HCN/UPDATE_INFO/UPDATE_ELEMENT[2]")
        self.assertEqual(item["parameters"]["ID"], 2)

    def test_fault_is_added(self):
        self.change({"fault": "lock", "occurrence": 2})
        self.assertEqual(self.rack["faults"], [{"call": "lock", "occurrence": 2}])

    def test_values_are_set_dropped_and_appended(self):
        self.change({"set": "serviceStatus", "to": 33}, {"append": "addresses", "value": "127.0.0.2"},
                    {"drop": "addresses/0"})
        self.assertEqual((self.rack["serviceStatus"], self.rack["addresses"]), (33, ["127.0.0.2"]))

    def test_places_that_do_not_exist_are_refused(self):
        for change in ({"item": "HCN[2]"}, {"dropItem": "CN"}, {"drop": "faults"}, {"set": "a/b", "to": 1},
                       {"append": "inventory/items/7", "value": 1}):
            with self.subTest(change), self.assertRaises(patches.CaseError):
                self.change(change)


if __name__ == "__main__":
    unittest.main()
