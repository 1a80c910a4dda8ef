#!/usr/bin/env python3
"""An update that verifies itself notices update files that change while it runs; one that does not, says nothing."""

import json
import os
import subprocess
import time

import tool_runs
from tool_runs import ScratchTest, command_of


class WatchedFilesTest(ScratchTest):
    def update_with_change(self, *options, name="network.ini"):
        """Updates the example rack; the file gets another content once the first phase has begun. Its exit code."""
        archive, rack = self.lay_out_examples()
        events, self.report = self.scratch / "events", self.scratch / "report.json"
        line = ["update", "-a", archive, "-t", "127.0.0.1", "--emulate", rack, "--events", events, "--report",
                self.report, *options]
        with subprocess.Popen(command_of(*line), env={**os.environ, "KV_TIME_SCALE": "0.2"}, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, stdin=subprocess.DEVNULL) as process:
            end = time.monotonic() + 60
            while not events.exists() or b'"event":"phase"' not in events.read_bytes():
                self.assertIsNone(process.poll())
                self.assertLess(time.monotonic(), end)
                time.sleep(0.01)
            (archive / name).write_bytes((archive / name).read_bytes()[::-1])
            self.output, self.errors = process.communicate(timeout=120)
        return process.returncode

    def test_a_file_that_changes_before_its_transfer_is_different(self):
        self.assertEqual(self.update_with_change("--verify"), 6)
        message = "the target does not report what it should: 1 different; update files changed during the update"
        self.assertEqual(self.errors.decode().splitlines()[-1], f"kvreflash: {message}")
        self.assertIn(b"differs, its update file has changed", self.output)
        report = json.loads(self.report.read_text())
        self.assertEqual((report["failure"], report["message"]), ("verification", message))
        self.assertEqual([(element["entry"]["name"], element["verification"]) for element in report["elements"]
                          if element["fileChanged"]], [("network.ini", "differs")])

    def test_nothing_is_noticed_without_a_verification(self):
        self.assertEqual(self.update_with_change(), 0)
        self.assertNotIn(b"has changed", self.output)


if __name__ == "__main__":
    tool_runs.main()
