#!/usr/bin/env python3
"""The manual page and the completion that the build makes of the tool's help."""

import re
import shutil
import subprocess
import unittest

import tool_runs
from tool_runs import arguments, run


def manual(name):
    return arguments.tool.resolve().parents[1] / "manual" / name


def help_entries(text, heading):
    part = text.partition(f"\n{heading}:\n")[2].partition("\n\n")[0]
    return re.findall(r"^  (\S+)", part, re.MULTILINE)


class ManualTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.help = run("--help").output.decode()
        cls.commands = help_entries(cls.help, "Commands")

    def page(self):
        """The page as it is read, without its marks."""
        return manual("kvreflash.1").read_text(encoding="utf-8").replace("\\-", "-").replace("\\fB", "").replace("\\fR", "")

    def test_the_page_has_every_command_with_its_options(self):
        self.assertGreater(len(self.commands), 10)
        sections = dict(re.findall(r"^\.SS (\S+)\n(.*?)(?=^\.S)", self.page(), re.MULTILINE | re.DOTALL))
        self.assertEqual(list(sections), self.commands)
        for command in self.commands:
            for names in help_entries(run(command, "--help").output.decode(), "Options"):
                if "--help" not in names:
                    self.assertIn(names.replace(",", ", "), sections[command], command)

    def test_the_page_has_the_table_of_exit_codes(self):
        codes = re.findall(r"^  (\d+) +(\S.*)$", self.help.partition("Exit codes:")[2], re.MULTILINE)
        section = self.page().partition(".SH EXIT CODES\n")[2]
        self.assertEqual(re.findall(r"^\.TP\n(\d+)\n(.*)$", section, re.MULTILINE), codes)
        self.assertEqual(len(codes), 12)

    @unittest.skipUnless(shutil.which("groff"), "there is no groff")
    def test_the_page_is_set_without_warnings(self):
        done = subprocess.run(["groff", "-man", "-Tutf8", "-ww", manual("kvreflash.1")], capture_output=True, check=True)
        self.assertEqual(done.stderr, b"")
        self.assertIn(b"User Commands", done.stdout)

    def complete(self, *words):
        script = (f"source {manual('kvreflash')}; COMP_WORDS=(kvreflash \"$@\"); COMP_CWORD=$#; _kvreflash; "
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        return subprocess.run(["bash", "-c", script, "bash", *words], capture_output=True, check=True, encoding="utf-8",
                              cwd=tool_runs.PROJECT).stdout.split()

    def test_commands_are_completed(self):
        self.assertEqual(self.complete("up"), ["update"])
        self.assertEqual(set(self.complete("")), {*self.commands, "--help"})

    def test_options_of_the_command_are_completed(self):
        self.assertEqual(set(self.complete("update", "--re")), {"--reboot", "--report"})
        self.assertEqual(self.complete("version", "--re"), [])

    def test_folders_and_files_are_completed(self):
        self.assertEqual(self.complete("check", "-a", "examples/a"), ["examples/archive"])
        self.assertEqual(self.complete("update", "--archive", "README"), [])
        self.assertEqual(self.complete("update", "--report", "README"), ["README.md"])
        self.assertEqual(self.complete("capture", "examples/a"), ["examples/archive"])

    def test_values_behind_an_equals_sign_are_completed(self):
        self.assertEqual(self.complete("check", "--archive", "=", "examples/a"), ["examples/archive"])
        self.assertIn("examples", self.complete("check", "--archive", "="))

    def test_words_are_completed_and_nothing_else_is(self):
        self.assertEqual(self.complete("check", "--format", ""), ["text", "json"])
        self.assertEqual(self.complete("update", "--progress", ""), ["auto", "line", "plain", "none"])
        self.assertEqual(self.complete("update", "--disable", ""), [])
        self.assertEqual(self.complete("update", ""), [])


if __name__ == "__main__":
    tool_runs.main()
