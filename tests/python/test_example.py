"""examples/python/update.py, as a program."""

import os
import signal
import subprocess
import sys
import unittest

import support
from support import ScratchTest

PROGRAM = support.PROJECT / "examples" / "python" / "update.py"


class ExampleTest(ScratchTest):
    """What the example prints, and how it ends."""

    def start(self, *arguments, scale="0"):
        environment = {**os.environ, "KV_TIME_SCALE": scale, "PYTHONWARNINGS": "error"}
        process = subprocess.Popen([sys.executable, "-B", PROGRAM, *arguments], env=environment,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")
        self.addCleanup(process.kill)
        return process

    def run_to_end(self, *arguments):
        process = self.start(*arguments)
        output, errors = process.communicate(timeout=60)
        return process.returncode, output, errors

    def test_an_update_is_shown_and_verified(self):
        code, output, errors = self.run_to_end(support.ARCHIVE, "127.0.0.1", self.rack)
        self.assertEqual((code, errors), (0, ""))
        lines = output.splitlines()
        self.assertEqual(lines[0], "20 of 26 elements are updated")
        self.assertEqual(lines[1], "  QB4120 (A), SN 2815, Firmware: 23.2a12 -> 23.2.1")
        self.assertEqual([line for line in lines if line.startswith("Phase")], [f"Phase {phase}" for phase in range(5)])
        self.assertEqual(lines[-1], "Verified: yes")

    def test_a_refused_archive_is_not_used(self):
        code, output, _errors = self.run_to_end(self.scratch, "127.0.0.1", self.rack)
        self.assertEqual(code, 3)
        self.assertRegex(output, "^error: ")

    def test_a_failure_is_stated(self):
        code, _output, errors = self.run_to_end(support.ARCHIVE, "127.0.0.9", self.rack)
        self.assertEqual(code, 4)
        self.assertRegex(errors, "^target: ")

    def test_a_folder_that_is_no_target_is_refused(self):
        code, _output, errors = self.run_to_end(support.ARCHIVE, "127.0.0.1", self.scratch)
        self.assertEqual(code, 1)
        self.assertIn(str(self.scratch), errors)

    def test_a_wrong_usage_is_answered(self):
        code, output, errors = self.run_to_end()
        self.assertEqual((code, output, errors), (64, "", "usage: update.py ARCHIVE HOST [EMULATED_TARGET]\n"))

    def test_ctrl_c_awaits_what_has_begun(self):
        process = self.start(support.ARCHIVE, "127.0.0.1", self.rack, scale="0.1")
        while process.stdout.readline() != "Phase 1\n":
            self.assertIsNone(process.poll())
        process.send_signal(signal.SIGINT)
        output, errors = process.communicate(timeout=60)
        self.assertEqual((process.returncode, errors), (7, "ended on request\n"))
        self.assertNotIn("Phase 2", output)
        self.assertEqual(list((self.rack / "state" / "transferred").glob("*")), [])


if __name__ == "__main__":
    unittest.main()
