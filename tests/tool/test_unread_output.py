#!/usr/bin/env python3
"""Standard error that nobody reads: it holds no command, and an interrupt ends one as ever."""

import json
import os
import pty
import signal
import socket
import subprocess
import time

import tool_runs
from tool_runs import ScratchTest, command_of, run

# The tool waits 3 s in all for a reader; a busy machine takes longer.
BOUND = 60
UPDATED = b"    Update completed successfully!\n"


def fill(descriptor):
    """Writes until nothing more is taken."""
    os.set_blocking(descriptor, False)
    try:
        while True:
            os.write(descriptor, b".")
    except BlockingIOError:
        pass
    os.set_blocking(descriptor, True)


def unread_pipe():
    return os.pipe()


def unread_socket():
    return tuple(end.detach() for end in socket.socketpair())


def unread_terminal():
    return pty.openpty()


class UnreadTest(ScratchTest):
    """The example archive and rack, and tools whose standard error is full before they begin."""

    def setUp(self):
        super().setUp()
        self.archive, self.rack = self.lay_out_examples()
        self.line = ["-a", self.archive, "-t", "127.0.0.1", "--emulate", self.rack]

    def full(self, make=unread_pipe):
        """The end that is written to. Nobody ever reads from the other one, which stays open."""
        reader, writer = make()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        fill(writer)
        return writer

    def start(self, *line, errors, scale="0", output=subprocess.PIPE):
        environment = {**os.environ, "KV_TIME_SCALE": scale}
        # pylint: disable-next=consider-using-with
        process = subprocess.Popen(command_of(*line), env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                   stderr=errors)
        if process.stdout:
            self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def assert_ends(self, process, code):
        output = process.communicate(timeout=BOUND)[0]
        self.assertEqual(process.returncode, code, output)
        return output

    def test_no_command_is_held(self):
        empty = self.scratch / "empty"
        empty.mkdir()
        rows = ((["plan", *self.line, "--json"], 0), (["nonsense"], 64), (["check", "-a", empty], 3),
                (["update", *self.line, "--disable", "nothing"], 8), (["elements", "-t", "127.0.0.9"], 4))
        started = [(make, line, code, self.start(*line, errors=self.full(make)))
                   for make in (unread_pipe, unread_socket, unread_terminal) for line, code in rows]
        for make, line, code, process in started:
            with self.subTest(make.__name__, command=line[0]):
                self.assert_ends(process, code)

    def test_a_document_is_written_all_the_same(self):
        output = self.assert_ends(self.start("plan", *self.line, "--json", errors=self.full()), 0)
        self.assertEqual(json.loads(output)["format"]["name"], "kvreflash.plan")

    def test_many_texts_wait_only_once(self):
        begin = time.monotonic()
        output = self.assert_ends(self.start("plan", "-v", *self.line, "--json", errors=self.full()), 0)
        self.assertGreater(run("plan", "-v", *self.line, "--json").errors.count(b"\n"), 40)
        self.assertLess(time.monotonic() - begin, BOUND, output)

    def test_an_update_whose_events_nobody_reads_comes_to_its_end_and_says_so(self):
        report = self.scratch / "r.json"
        process = self.start("update", *self.line, "--events", "-", "--report", report, errors=self.full())
        self.assertIn(UPDATED, self.assert_ends(process, 1))
        self.assertEqual(json.loads(report.read_bytes())["failure"], "output")
        self.assertIn(b"No update is required for these elements:", run("update", *self.line).output)

    def test_a_reader_that_comes_late_gets_everything(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        fill(writer)
        expected = run("plan", "-v", *self.line, "--json").errors
        process = self.start("plan", "-v", *self.line, "--json", errors=writer, output=subprocess.DEVNULL)
        os.close(writer)
        got = b""
        while piece := os.read(reader, 4096):
            got += piece
        self.assert_ends(process, 0)
        self.assertEqual(got.lstrip(b"."), expected.lstrip(b"."))

    def test_eight_tools_with_one_pipe_all_end(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        tools = [self.start("plan", "-v", *self.line, "--json", errors=writer) for _ in range(8)]
        tools += [self.start("explain", "-v", *self.line, "--json", errors=writer) for _ in range(8)]
        for tool in tools:
            self.assert_ends(tool, 0)

    def test_the_pipe_stays_as_others_have_it(self):
        writer = self.full()
        self.assert_ends(self.start("nonsense", errors=writer), 64)
        self.assertTrue(os.get_blocking(writer))

    def test_an_interrupt_ends_a_command_that_waits(self):
        line = ["elements", *self.line[2:], "-b", "none"]
        expected = run(*line)
        self.assertEqual((expected.code, expected.errors.count(b"\n")), (8, 1))
        process = self.start(*line, errors=self.full())
        output = b""
        while len(output) < len(expected.output):
            output += os.read(process.stdout.fileno(), 65536)
        # What follows on standard error is waiting now.
        process.send_signal(signal.SIGINT)
        self.assert_ends(process, 130)

    def test_an_update_that_is_interrupted_ends(self):
        process = self.start("update", *self.line, errors=self.full(), scale="0.02")
        begun = b""
        while b"Updating:" not in begun:
            piece = os.read(process.stdout.fileno(), 65536)
            self.assertTrue(piece, begun)
            begun += piece
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=BOUND)
        # The update goes on, or nothing new is started.
        self.assertIn(process.returncode, (0, 7))


if __name__ == "__main__":
    tool_runs.main()
