#!/usr/bin/env python3
"""Ctrl-C: an update is interrupted by a second one only, everything else at once."""

import json
import os
import re
import signal
import subprocess

import tool_runs
from tool_runs import ScratchTest, arguments, command_of, run

WARNING = (b"\nkvreflash: the target is being updated; interrupting may leave it incomplete. The update goes on. "
           b"Interrupt again within 3 s to end at once.\n")


def folded(text):
    return text.replace(b"\r\n", b"\n")


def unless_launched(test):
    """Of a test that only the tool's own process can make."""
    def wrapper(self):
        if arguments.launcher:
            self.skipTest("what launches the tool is in between")
        test(self)
    return wrapper


class InterruptTest(ScratchTest):
    """Interrupts of a process of its own."""

    def start(self, line, disposition=signal.SIG_DFL, scale="1"):
        def set_disposition():
            signal.signal(signal.SIGINT, disposition)

        environment = {**os.environ, "KV_TIME_SCALE": scale}
        # pylint: disable-next=subprocess-popen-preexec-fn,consider-using-with
        process = subprocess.Popen(command_of(*line), env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, preexec_fn=set_disposition, start_new_session=True)
        self.addCleanup(process.kill)
        return process

    @staticmethod
    def interrupt(process):
        """As a terminal does: all processes of the group, whatever launches the tool among them."""
        os.killpg(process.pid, signal.SIGINT)

    def start_update(self, **options):
        """An update that has begun with its second phase."""
        archive, rack = self.lay_out_examples()
        self.line = ["-a", archive, "-t", "127.0.0.1", "--emulate", rack]
        process = self.start(["update", *self.line], **options)
        begun = b""
        while b"QB4120 (A), SN 2815, FPGA" not in begun.partition(b"Updating:")[2].partition(b"Updating:")[2]:
            piece = os.read(process.stdout.fileno(), 65536)
            self.assertTrue(piece, begun)
            begun += piece
        return process

    def read_warning(self, process):
        text = b""
        while len(folded(text)) < len(WARNING):
            piece = os.read(process.stderr.fileno(), 4096)
            self.assertTrue(piece, text)
            text += piece
        return folded(text)

    def test_the_second_interrupt_ends_an_update_at_once(self):
        process = self.start_update()
        self.interrupt(process)
        self.assertEqual(self.read_warning(process), WARNING)
        self.assertIsNone(process.poll())
        self.interrupt(process)
        errors = folded(process.communicate(timeout=20)[1]).decode()
        self.assertEqual(process.returncode, 130)
        head, _, elements = errors.partition("reported failed:\n")
        self.assertEqual(head, "\nkvreflash: interrupted; the target may be incomplete. Elements of phase 1 that were not ")
        self.assertRegex(elements, re.compile(r"^  \d+  QB4120 \(A\), SN 2815, FPGA$", re.MULTILINE))
        self.assertEqual(run("update", *self.line).code, 0)

    def test_an_update_survives_one_interrupt(self):
        process = self.start_update(scale="0.02")
        self.interrupt(process)
        output, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(folded(errors), WARNING)
        self.assertIn(b"Update completed successfully!", output)

    @unless_launched
    def test_who_has_interrupts_ignored_is_not_interrupted(self):
        process = self.start_update(disposition=signal.SIG_IGN, scale="0.02")
        for _ in range(3):
            self.interrupt(process)
        self.assertEqual(process.communicate(timeout=60)[1], b"")
        self.assertEqual(process.returncode, 0)

    @unless_launched
    def test_everything_else_ends_at_the_first_interrupt(self):
        archive, _ = self.lay_out_examples()
        path = archive / "archive.json"
        description = json.loads(path.read_text(encoding="utf-8"))
        # Far more than a pipe holds: the tool waits for its reader.
        description["files"] *= 1000
        path.write_text(json.dumps(description), encoding="utf-8")
        process = self.start(["content", "-a", archive])
        self.assertTrue(process.stdout.read(1))
        self.interrupt(process)
        self.assertEqual(process.wait(timeout=20), 130)
        self.assertEqual(process.communicate()[1], b"")


if __name__ == "__main__":
    tool_runs.main()
