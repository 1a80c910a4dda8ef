"""Runs the example in C: it updates a copy of the example rack, and then finds nothing to do."""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

arguments = None


class ExampleTest(unittest.TestCase):
    """The program as a user starts it."""

    def run_example(self, *more):
        command = [*([arguments.launcher] if arguments.launcher else []), arguments.program, *more]
        environment = dict(os.environ, KV_TIME_SCALE="0")
        done = subprocess.run(list(map(str, command)), env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                              check=False)
        return done.returncode, done.stdout.decode().replace("\r\n", "\n"), done.stderr.decode().strip()

    def test_it_updates_verifies_and_finds_nothing_left(self):
        with tempfile.TemporaryDirectory() as scratch:
            rack = Path(scratch, "rack")
            shutil.copytree(arguments.rack, rack)
            code, output, _errors = self.run_example(arguments.archive, "127.0.0.1", rack)
            self.assertEqual(code, 0)
            self.assertIn("20 of 26 elements are updated\n", output)
            self.assertIn("Phase 4\n", output)
            self.assertTrue(output.endswith("Verified: yes\n"))
            code, output, _errors = self.run_example(arguments.archive, "127.0.0.1", rack)
            self.assertEqual(code, 0)
            self.assertIn("1 of 26 elements are updated\n", output)

    def test_what_fails_has_its_exit_code(self):
        with tempfile.TemporaryDirectory() as scratch:
            shutil.copytree(arguments.rack, Path(scratch, "rack"))
            code, _output, errors = self.run_example(arguments.archive, "127.0.0.7", Path(scratch, "rack"))
            self.assertEqual(code, 4)
            self.assertTrue(errors.startswith("target: "), errors)
            Path(scratch, "archive.json").write_text("{", encoding="ascii")
            code, output, _errors = self.run_example(scratch, "127.0.0.1", Path(scratch, "rack"))
            self.assertEqual(code, 3)
            self.assertTrue(output.startswith("error: "), output)
            code, _output, errors = self.run_example(arguments.archive, "127.0.0.1", Path(scratch, "none"))
            self.assertEqual(code, 1)
            self.assertNotEqual(errors, "")
        self.assertEqual(self.run_example()[0], 64)


def main():
    global arguments
    parser = argparse.ArgumentParser()
    for name in ("--program", "--archive", "--rack"):
        parser.add_argument(name, type=Path, required=True)
    parser.add_argument("--launcher")
    arguments, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest])


if __name__ == "__main__":
    main()
