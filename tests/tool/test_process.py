#!/usr/bin/env python3
"""The tool as a process among others: readers that go away, closed streams, arguments that are no text."""

import errno
import json
import os
import resource
import shlex
import signal
import subprocess

import tool_runs
from tool_runs import ScratchTest, arguments, cases, command_of, run

LOST = b"kvreflash: cannot write to standard output\n"


class ProcessTest(ScratchTest):
    """Runs that no test inside one process can make."""

    def update_line(self):
        archive, rack = self.lay_out_case("version")
        return ["update", "-a", archive, "-t", "127.0.0.1", "--emulate", rack]

    def assert_updated(self, line):
        """The update before came to its end: there is nothing left to do."""
        done = run(*line)
        self.assertEqual(done.code, 0)
        self.assertIn(b"No update is required for these elements:", done.output)
        self.assertNotIn(b"Updating:", done.output)

    def start(self, line, **streams):
        environment = {**os.environ, "KV_TIME_SCALE": "0"}
        return subprocess.Popen([arguments.tool.resolve(), *line], env=environment, stdin=subprocess.DEVNULL, **streams)

    def test_an_update_survives_the_reader_of_its_output(self):
        line = self.update_line()
        read, write = os.pipe()
        os.close(read)
        process = self.start(line, stdout=write, stderr=subprocess.PIPE)
        os.close(write)
        self.assertEqual(process.communicate()[1], LOST)
        self.assertEqual(process.returncode, 1)
        self.assert_updated(line)

    def test_an_update_survives_the_reader_of_its_events(self):
        line = self.update_line()
        read, write = os.pipe()
        os.close(read)
        process = self.start([*line, "--events", "-"], stdout=subprocess.PIPE, stderr=write)
        os.close(write)
        self.assertIn(b"Update completed successfully!", process.communicate()[0])
        self.assertEqual(process.returncode, 1)
        self.assert_updated(line)

    def run_closed(self, line, *descriptors):
        """Runs the tool in a shell that closes these descriptors before."""
        closed = " ".join(f"{descriptor}>&-" for descriptor in descriptors)
        return run_shell([arguments.tool.resolve(), *line], closed)

    def test_messages_do_not_go_into_a_file_that_has_the_number_of_a_closed_stream(self):
        line = self.update_line()
        events = self.scratch / "events"
        done = self.run_closed([*line, "--events", events], 1)
        self.assertEqual((done.returncode, done.stderr), (1, LOST))
        self.assert_updated(line)
        told = [json.loads(text) for text in events.read_text(encoding="utf-8").splitlines()]
        # Two phases, each with three percentages, and the end.
        steps = [event["event"] for event in told if event["event"] in ("phase", "progress")]
        self.assertEqual(steps, 2 * (["phase"] + 3 * ["progress"]) + ["phase"])
        self.assertEqual((told[-1]["event"], told[-1]["failure"], told[-1]["exitCode"]), ("runEnd", "output", 1))

    def test_a_session_needs_no_standard_error_and_no_standard_input(self):
        done = self.run_closed(["version"], 0, 2)
        self.assertEqual(done.returncode, 0)
        self.assertEqual(done.stdout.decode(), f"{cases.printed_version()}\n")

    def test_without_any_stream_a_usage_error_is_one(self):
        self.assertEqual(self.run_closed(["nonsense"], 0, 1, 2).returncode, 64)

    def test_an_argument_that_is_not_utf8_is_refused(self):
        process = self.start([b"content", b"-a", b"\xff\xfe"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        output, errors = process.communicate()
        self.assertEqual((process.returncode, output), (64, b""))
        self.assertTrue(errors.startswith(b"kvreflash: argument 3 is not valid UTF-8; run "), errors)

    def test_a_capture_that_cannot_be_written_whole_leaves_nothing(self):
        rack = self.lay_out_examples()[1]
        (self.scratch / "empty").mkdir()
        for name, left in (("new", False), ("empty", True)):
            folder = self.scratch / name
            done = run("capture", "-t", "127.0.0.1", folder, "--emulate", rack, preexec_fn=forbid_long_files)
            self.assertEqual((done.code, done.output), (1, b""))
            self.assertEqual(done.errors.decode(),
                             f"kvreflash: '{folder}' cannot take the file target.json: {os.strerror(errno.EFBIG)}\n")
            self.assertEqual(folder.exists(), left)
            self.assertEqual(list(folder.glob("*")), [])

    def test_an_update_that_the_journal_cannot_take_touches_nothing(self):
        archive, rack = self.lay_out_examples()
        done = run("update", "-a", archive, "-t", "127.0.0.1", "--emulate", rack, "--journal", self.scratch / "journal",
                   "--preflight", "--verify", "--json", "--events", "-", preexec_fn=forbid_long_files)
        self.assertEqual(done.code, 1)
        message = f"nothing was touched: the journal cannot be written: {os.strerror(errno.EFBIG)}"
        lines = done.errors.decode().splitlines()
        events = [json.loads(line) for line in lines if line.startswith("{")]
        self.assertEqual([line for line in lines if not line.startswith("{")][-1], f"kvreflash: {message}")
        end, document = events[-1], json.loads(done.output)
        self.assertEqual((end["event"], end["exitCode"]), ("runEnd", 1))
        for verdict in (end, document):
            self.assertEqual((verdict["failure"], verdict["retryable"], verdict["message"]), ("output", False, message))
        self.assertFalse((rack / "state").exists())

    def test_what_a_capture_prints_can_be_pasted_into_a_shell(self):
        rack = self.lay_out_examples()[1]
        folder = self.scratch / "it's a `copy` of $HOME"
        done = run("capture", "-t", "127.0.0.1", folder, "--emulate", rack)
        self.assertEqual((done.code, done.errors), (0, b""))
        options = done.output.decode().splitlines()[-1].removeprefix("Rehearse with: ")
        self.assertTrue(options.startswith("--emulate "), options)
        command = f"{shlex.join(command_of('connect', '-t', '127.0.0.1'))} {options}"
        self.assertEqual(subprocess.run(["sh", "-c", command], capture_output=True, check=False).returncode, 0, command)

    def test_a_path_of_a_message_can_be_pasted_into_a_shell(self):
        folder = self.scratch / "it's my archive"
        folder.mkdir()
        (folder / "archive.json").write_text("{", encoding="utf-8")
        line = run("content", "-a", folder).errors.decode().splitlines()[-1]
        self.assertIn(f"{folder}/archive.json", shlex.split(line))
        found = run("check", "-a", folder)
        place = found.output.decode().splitlines()[0].partition(": error: ")[0]
        printed = subprocess.run(["sh", "-c", f"printf %s {place}"], capture_output=True, check=False).stdout.decode()
        self.assertRegex(printed.removeprefix(f"{folder}/archive.json"), r"^:1:\d+$")
        self.assertEqual(shlex.split(found.errors.decode())[1:3], [f"{folder}/archive.json", "has"])


def forbid_long_files():
    """What writes more into a file is told so, as on a full disk."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (5000, 5000))


def run_shell(command, redirections):
    environment = {**os.environ, "KV_TIME_SCALE": "0"}
    return subprocess.run(["sh", "-c", f'exec "$@" {redirections}', "sh", *map(str, command)], env=environment,
                          capture_output=True, check=False, timeout=60)


if __name__ == "__main__":
    tool_runs.main()
