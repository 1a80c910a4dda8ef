#!/usr/bin/env python3
"""The tool that was built against a platform which cannot emulate: it offers no emulation, and everything else."""

import argparse
import os
import re
import subprocess
import sys
import unittest

parser = argparse.ArgumentParser()
for name in ("tool", "platform"):
    parser.add_argument(f"--{name}", required=True)
OPTIONS, REST = parser.parse_known_args()


def run(*arguments):
    """(exit code, output, errors) of the tool on this platform"""
    done = subprocess.run([OPTIONS.tool, *arguments], check=False, capture_output=True, encoding="utf-8",
                          env={**os.environ, "LD_LIBRARY_PATH": f"{OPTIONS.platform}/lib"})
    return done.returncode, done.stdout, done.stderr


class RealPlatformTest(unittest.TestCase):
    def test_nothing_offers_to_emulate(self):
        code, text, _ = run("--help")
        commands = re.findall(r"^  ([\w-]+) {2,}", text.partition("Commands:")[2].partition("\n\n")[0], re.MULTILINE)
        self.assertEqual(code, 0)
        self.assertGreater(len(commands), 10)
        self.assertNotIn("matrix", commands)
        for command in commands:
            code, text, _ = run(command, "--help")
            self.assertEqual(code, 0)
            self.assertNotIn("--emulate", text, command)

    def test_what_is_not_offered_is_a_usage_error(self):
        self.assertEqual(run("connect", "-t", "127.0.0.1", "--emulate", "rack")[0], 64)
        self.assertEqual(run("matrix", "-a", "archive", "--emulate", "rack")[0], 64)

    def test_a_session_reaches_the_service(self):
        code, output, errors = run("connect", "-t", "127.0.0.1")
        self.assertEqual((code, errors), (4, "kvreflash: the target '127.0.0.1' is not accessible\n"))
        self.assertIn("Korvel Hostlink", output)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *REST])
