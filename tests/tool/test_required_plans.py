#!/usr/bin/env python3
"""A machine on which nothing is updated without a plan that was saved."""

import json

import tool_runs
from machine_settings import FILE, USAGE, SettingsTest
from run_journals import TARGET


class CautiousMachineTest(SettingsTest):
    """A machine whose settings file requires a plan."""

    def setUp(self):
        super().setUp()
        self.write("require-plan = true", f"journal = {self.journal}")

    def on_machine(self, command, *more):
        return self.run_tool(command, "-t", TARGET, "--emulate", self.rack, *more)

    def save_there(self):
        done = self.on_machine("plan", "-a", self.archive, "--save", self.plan)
        self.assertEqual(done.code, 0, done.errors.decode())

    def update_there(self, *more):
        return self.run_tool("update", "--emulate", self.rack, *more)

    def assert_refused(self, done, message):
        """A usage error, before anything is written."""
        self.assertEqual((done.code, done.output), (USAGE, b""), done.errors.decode())
        self.assertEqual(done.errors.decode(), f"kvreflash: {message}\n")
        self.assertFalse(self.report.exists())


class UpdateTest(CautiousMachineTest):
    def test_an_update_without_a_plan_is_refused(self):
        for more in ((), ("--verify",), ("--journal", "none"), ("--disable", "3"), self.every_view,
                     ("--events", self.scratch / "events")):
            with self.subTest(more):
                self.assert_refused(self.on_machine("update", "-a", self.archive, *more),
                                    f"update needs --plan: the settings file '{FILE}' requires a plan")
        self.assertFalse((self.rack / "state").exists())
        self.assertFalse(self.journal.exists())
        self.assertFalse((self.scratch / "events").exists())

    def test_an_update_with_a_plan_runs(self):
        self.save_there()
        self.assert_agree(self.update_there("--plan", self.plan, *self.every_view), 0, None)
        self.assertEqual([(one["state"], one["plan"]) for one in self.runs()],
                         [("complete", json.loads(self.plan.read_text(encoding="utf-8"))["id"])])

    def test_a_plan_that_does_not_hold_any_more_does_not_run(self):
        self.save_there()
        self.assertEqual(self.update_there("--plan", self.plan).code, 0)
        self.assert_agree(self.update_there("--plan", self.plan, *self.every_view), 9, "stale")
        self.assertEqual(len(self.runs()), 1)

    def test_who_ignores_the_settings_needs_no_plan(self):
        done = self.on_machine("update", "-a", self.archive, "--no-settings", "--journal", self.journal,
                               *self.every_view)
        self.assert_agree(done, 0, None)
        self.assertEqual([one["plan"] for one in self.runs()], [None])

    def test_a_machine_that_requires_none_runs_both(self):
        self.write("require-plan = false", f"journal = {self.journal}")
        self.save_there()
        self.assertEqual(self.update_there("--plan", self.plan).code, 0)
        self.assertEqual(self.on_machine("update", "-a", self.archive).code, 0)

    def test_other_commands_are_as_on_every_machine(self):
        archive = ("-a", self.archive)
        for command, *more in (("plan", *archive), ("verify", *archive), ("elements",), ("reboot",)):
            with self.subTest(command):
                here = self.on_machine(command, *more)
                self.reset()
                elsewhere = self.on_machine(command, *more, "--no-settings")
                self.assertEqual((here.code, here.output, here.errors),
                                 (elsewhere.code, elsewhere.output, elsewhere.errors))
                self.assertNotEqual(here.code, USAGE)
                self.reset()
        self.assertEqual([one["command"] for one in self.runs()], ["reboot"])


class ResumeTest(CautiousMachineTest):
    def test_a_run_of_a_plan_goes_on(self):
        self.save_there()
        self.assertEqual(self.update_there("--plan", self.plan).code, 0)
        finished = self.state()
        self.cut_journal("intent", 2)
        self.reset()
        self.assert_agree(self.run_tool("resume", *self.every_view), 0, None)
        self.assertEqual(self.state(), finished)
        first, second = self.runs()
        self.assertEqual((first["resumedBy"], second["resumes"]), (second["id"], first["id"]))
        self.assertEqual((first["plan"], second["plan"]), (json.loads(self.plan.read_text())["id"],) * 2)
        self.assertEqual(self.update_there("--plan", self.plan).code, 9)

    def test_a_run_without_a_plan_does_not(self):
        self.break_off("intent", 2)
        self.reset()
        (one,) = self.runs()
        message = f"the run {one['id']} had no plan: the settings file '{FILE}' requires one"
        for more in ((), (one["id"],), ("--redo",), self.every_view):
            with self.subTest(more):
                self.assert_refused(self.run_tool("resume", *more), message)
        self.assertFalse((self.rack / "state").exists())
        self.assertEqual(self.runs(), [one])
        done = self.run_tool("resume", "--no-settings", "--journal", self.journal, *self.every_view)
        self.assert_agree(done, 0, None)
        self.assertEqual(len(self.runs()), 2)


if __name__ == "__main__":
    tool_runs.main()
