"""Tests of scripts/test.sh, in a project of two rooms whose build and whose tests are stand-ins."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]

# What the script calls: each writes its command line into the file "calls". FAILING names those that fail.
STAND_INS = {
    "dpkg-query": 'if [[ $FAILING == *apt-get* ]]; then echo "unknown"; else echo "install ok installed"; fi',
    "apt-get": "exit 1",
    "sudo": 'shift; "$@"',
    "ccache": "exit 1",
    "cmake": '[[ $FAILING != *cmake* ]]',
    "wine": "true",
    "wineboot": "[[ $FAILING != *wine* ]]",
    "wineserver": "true",
    "setarch": "exit 1",
    "ctest": '''
while [[ $1 != --test-dir ]]; do shift; done
[[ $2 == *planning* ]] && failed='<testcase name="c" status="fail"/>'
while [[ $1 != --output-junit ]]; do shift; done
[[ $FAILING == *report* ]] && exit 1
echo "<testsuite><testcase name='a' status='run'/><testcase name='b' status='run'/>${failed:-}</testsuite>" >"$2"''',
}


class TestCommandTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.project = Path(folder.name)
        (self.project / "scripts").mkdir()
        for name in ("test.sh", "lib.sh", "test_report.py"):
            shutil.copy(PROJECT / "scripts" / name, self.project / "scripts")
        for room in ("archive", "planning", "support"):
            (self.project / "tests" / room).mkdir(parents=True)
            (self.project / "tests" / room / "CMakeLists.txt").touch()
        (self.project / "bin").mkdir()
        for name, text in STAND_INS.items():
            stand_in = self.project / "bin" / name
            stand_in.write_text(f'#!/usr/bin/env bash\necho "{name} $*" >>"{self.project}/calls"\n{text}\n')
            stand_in.chmod(0o755)

    def run_command(self, *arguments, failing=""):
        """The exit code, the last line and all that was printed."""
        environment = {**os.environ, "PATH": f"{self.project / 'bin'}:{os.environ['PATH']}", "FAILING": failing}
        done = subprocess.run([self.project / "scripts/test.sh", *arguments], env=environment, text=True, check=False,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.returncode, done.stdout.splitlines()[-1], done.stdout

    def calls(self, name):
        calls = (self.project / "calls").read_text().replace(f"{self.project}/", "")
        return [line for line in calls.splitlines() if line.startswith(f"{name} ")]

    def folders_tested(self):
        return [re.search(r"--test-dir (\S+)", call).group(1) for call in self.calls("ctest")]

    def test_without_a_room_all_tests_run_natively(self):
        self.assertEqual(self.run_command()[:2], (0, "2 passed, 0 failed"))
        self.assertEqual(self.folders_tested(), ["build/release/."])
        self.assertIn("--target all ", self.calls("cmake")[-1])

    def test_of_a_room_only_what_it_needs_is_built_and_run(self):
        self.assertEqual(self.run_command("archive")[:2], (0, "2 passed, 0 failed"))
        self.assertEqual(self.folders_tested(), ["build/release/tests/archive"])
        self.assertIn("--target tests/archive/all ", self.calls("cmake")[-1])

    def test_results_of_several_rooms_are_added(self):
        self.assertEqual(self.run_command("archive", "planning", "fuzz")[:2], (1, "6 passed, 1 failed"))
        self.assertEqual(self.folders_tested(),
                         ["build/release/tests/archive", "build/release/tests/planning", "build/release/fuzz"])

    def test_an_unknown_room_is_refused_with_the_rooms_that_there_are(self):
        for arguments in (("attic",), ("archive", "support"), ("all", "archive"), ("",)):
            with self.subTest(arguments):
                code, _, output = self.run_command(*arguments)
                self.assertEqual(code, 1)
                self.assertIn("The rooms are: archive planning fuzz\n", output)
                self.assertFalse((self.project / "build").exists())

    def test_all_runs_every_build(self):
        self.assertEqual(self.run_command("all")[:2], (0, "6 passed, 0 failed"))
        self.assertEqual(self.folders_tested(), ["build/release/.", "build/asan/.", "build/windows/."])
        self.assertEqual(self.calls("wineserver"), ["wineserver -k"])

    def test_a_wine_that_does_not_start_is_one_failure(self):
        self.assertEqual(self.run_command("all", failing="wine")[:2], (1, "4 passed, 1 failed"))

    def test_a_build_that_fails_is_one_failure(self):
        self.assertEqual(self.run_command(failing="cmake")[:2], (1, "0 passed, 1 failed"))
        self.assertEqual(self.run_command("archive", "planning", failing="cmake")[:2], (1, "0 passed, 1 failed"))

    def test_packages_that_cannot_be_installed_are_one_failure(self):
        self.assertEqual(self.run_command(failing="apt-get")[:2], (1, "0 passed, 1 failed"))
        self.assertEqual(self.calls("cmake"), [])

    def test_a_run_without_a_report_is_one_failure(self):
        self.assertEqual(self.run_command(failing="report")[:2], (1, "0 passed, 1 failed"))


class RoomsTest(unittest.TestCase):
    def test_the_rooms_are_the_folders_that_have_tests(self):
        listed = subprocess.run([PROJECT / "scripts/test.sh", "attic"], text=True, check=False, capture_output=True)
        rooms = re.search(r"The rooms are: (.*)", listed.stderr).group(1).split()
        folders = re.findall(r"add_subdirectory\((\w+)\)", (PROJECT / "tests/CMakeLists.txt").read_text(encoding="utf-8"))
        self.assertEqual(rooms, sorted(set(folders) - {"support"}) + ["fuzz"])


if __name__ == "__main__":
    unittest.main()
