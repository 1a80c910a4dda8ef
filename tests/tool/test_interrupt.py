#!/usr/bin/env python3
"""Requests to end the tool, and terminals that are lost: an update ends in its own order, everything else at once."""

import fcntl
import json
import os
import resource
import signal
import subprocess
import sys
import time

import tool_runs
from tool_runs import ScratchTest, arguments, command_of, run

sys.path.insert(0, str(tool_runs.PROJECT / "tests" / "sessions"))
import leftovers  # noqa: E402

FIRST = (b"\nkvreflash: the update is asked to end: nothing new begins, and what has begun is awaited. Ask again to give "
         b"up waiting.\n")
SIGNALS = ("SIGINT", "SIGTERM", "SIGQUIT")
# Requests within a second are one.
NEXT = 1.1


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
    """Signals to a process of its own."""

    def start(self, line, scale="1", prepare=lambda: None, **streams):
        environment = {**os.environ, "KV_TIME_SCALE": scale}
        streams = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams}
        # pylint: disable-next=subprocess-popen-preexec-fn,consider-using-with
        process = subprocess.Popen(command_of(*line), env=environment, stdin=subprocess.DEVNULL, preexec_fn=prepare,
                                   start_new_session=True, **streams)
        self.addCleanup(process.kill)
        return process

    @staticmethod
    def send(process, name="SIGINT"):
        """As a terminal does: to all processes of the group, whatever launches the tool among them."""
        os.killpg(process.pid, getattr(signal, name))

    def lay_out(self, **update):
        """The example rack; the update of its FPGA, in the second phase, behaves as `update` says."""
        archive, self.rack = self.lay_out_examples()
        if update:
            path = self.rack / "target.json"
            target = json.loads(path.read_text(encoding="utf-8"))
            fpga = next(item for item in items_of(target["inventory"])
                        if item.get("parameters", {}).get("NAME") == "UserFpga")
            fpga["update"].update(update)
            path.write_text(json.dumps(target), encoding="utf-8")
        self.report = self.scratch / "report.json"
        self.line = ["-a", archive, "-t", "127.0.0.1", "--emulate", self.rack]

    def start_update(self, *options, **keywords):
        """An update that has begun with its second phase."""
        process = self.start(["update", *self.line, "--report", self.report, *options], **keywords)
        begun = b""
        while b"QB4120 (A), SN 2815, FPGA" not in begun.partition(b"Updating:")[2].partition(b"Updating:")[2]:
            piece = os.read(process.stdout.fileno(), 65536)
            self.assertTrue(piece, begun)
            begun += piece
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        return process

    def read_errors(self, process, end):
        text = b""
        while not folded(text).endswith(end):
            piece = os.read(process.stderr.fileno(), 4096)
            self.assertTrue(piece, text)
            text += piece
        return folded(text)

    def results(self):
        """What became of the elements, by the report."""
        report = json.loads(self.report.read_text(encoding="utf-8"))
        return report, [element["outcome"] for element in report["elements"] if element["decision"] == "update"]

    def check_ended(self, process, code, failure):
        self.assertEqual(process.returncode, code)
        report, results = self.results()
        self.assertEqual((report["failure"], report["exitCode"]), (failure, code))
        return report, results

    def check_next_update(self):
        again = run("update", *self.line)
        self.assertEqual(again.code, 0, again.output.decode() + again.errors.decode())
        self.assertEqual(leftovers.on_target(self.rack), [])

    def test_an_update_that_is_asked_to_end_awaits_what_has_begun(self):
        for name in SIGNALS[:1] if arguments.launcher else SIGNALS:
            with self.subTest(signal=name):
                self.setUp()
                self.lay_out()
                process = self.start_update(scale="0.2")
                self.send(process, name)
                output, errors = process.communicate(timeout=60)
                report, results = self.check_ended(process, 7, "stopped")
                self.assertTrue(report["retryable"])
                self.assertEqual(set(results), {"updated", "not-started"})
                self.assertTrue(folded(errors).startswith(FIRST))
                self.assertIn("kvreflash: ended on request: ", folded(errors).decode().splitlines()[-1])
                self.assertIn(b"Update failed!", output)
                self.assertEqual(leftovers.on_target(self.rack), [])
                self.check_next_update()

    def test_two_requests_that_arrive_together_are_one(self):
        self.lay_out()
        process = self.start_update(scale="0.2")
        self.send(process)
        self.send(process)
        errors = folded(process.communicate(timeout=60)[1])
        self.check_ended(process, 7, "stopped")
        self.assertEqual(errors.count(b"asked to end"), 1)
        self.assertNotIn(b"given up", errors)

    def test_the_second_request_gives_up_waiting(self):
        self.lay_out(state=1)
        process = self.start_update()
        self.send(process)
        self.read_errors(process, FIRST)
        time.sleep(NEXT)
        self.send(process)
        errors = folded(process.communicate(timeout=20)[1]).decode()
        report, results = self.check_ended(process, 7, "stopped")
        self.assertIn("in-progress", results)
        self.assertRegex(errors, r"waiting is given up; in progress: '.*'\. Ask again to end at once\.")
        self.assertIn("still in progress ('", errors.splitlines()[-1])
        self.assertEqual(report["message"], errors.splitlines()[-1].removeprefix("kvreflash: "))

    @unless_launched
    def test_the_third_request_ends_at_once_and_names_the_boards(self):
        self.lay_out(state=1)
        # The pause behind the start of the only element takes 10 s.
        process = self.start(["update", *self.line, "-s", "2815", "-e", "UserFpga", "--report", self.report], scale="20")
        while b"FPGA" not in os.read(process.stdout.fileno(), 65536):
            pass
        for last in (FIRST, b"end at once.\n"):
            self.send(process)
            self.read_errors(process, last)
            time.sleep(NEXT)
        self.send(process)
        errors = folded(process.communicate(timeout=20)[1]).decode()
        self.assertEqual(process.returncode, 130)
        self.assertRegex(errors, r"^\nkvreflash: ended at once; this may have cut an update on: .*S/N \d+")
        self.assertFalse(self.report.exists())

    @unless_launched
    def test_a_lost_terminal_does_not_end_an_update(self):
        self.lay_out()
        process = self.start_update(scale="0.02")
        self.send(process, "SIGHUP")
        errors = process.communicate(timeout=60)[1]
        self.assertEqual(errors, b"")
        report, results = self.check_ended(process, 0, None)
        self.assertEqual(set(results), {"updated"})
        self.assertIn("Update completed successfully!", report["messages"])

    @unless_launched
    def test_a_lost_reader_does_not_end_an_update_and_the_report_has_the_text(self):
        self.lay_out()
        process = self.start_update(scale="0.02")
        process.stdout.close()
        self.send(process, "SIGHUP")
        errors = process.stderr.read()
        process.wait(timeout=60)
        report, results = self.check_ended(process, 1, "output")
        self.assertEqual(set(results), {"updated"})
        self.assertIn("Update completed successfully!", report["messages"])
        self.assertEqual(errors, b"kvreflash: cannot write to standard output\n")

    @unless_launched
    def test_a_reached_file_size_limit_does_not_end_an_update(self):
        self.lay_out()
        limit = 64 << 20
        text = self.scratch / "text"
        with open(text, "wb") as stream:
            stream.truncate(limit - 200)
            stream.seek(0, os.SEEK_END)
            process = self.start(["update", *self.line, "--report", self.report], scale="0", stdout=stream,
                                 prepare=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
            errors = process.communicate(timeout=60)[1]
        report, results = self.check_ended(process, 1, "output")
        self.assertEqual(set(results), {"updated"})
        self.assertIn("Update completed successfully!", report["messages"])
        self.assertEqual(errors, b"kvreflash: cannot write to standard output\n")

    @unless_launched
    def test_who_has_requests_ignored_is_not_asked(self):
        self.lay_out()

        def ignore():
            for name in (*SIGNALS, "SIGHUP"):
                signal.signal(getattr(signal, name), signal.SIG_IGN)

        process = self.start_update(scale="0.02", prepare=ignore)
        for name in (*SIGNALS, "SIGHUP"):
            self.send(process, name)
        self.assertEqual(process.communicate(timeout=60)[1], b"")
        self.assertEqual(process.returncode, 0)

    @unless_launched
    def test_everything_else_ends_at_the_first_request(self):
        self.lay_out()
        for name in (*SIGNALS, "SIGHUP"):
            with self.subTest(signal=name):
                reading, writing = os.pipe()
                self.addCleanup(os.close, reading)
                fill(writing)
                process = self.start(["content", *self.line[:2]], stdout=writing)
                os.close(writing)
                await_blocked(process.pid)
                self.send(process, name)
                self.assertEqual(process.wait(timeout=20), 130)
                self.assertEqual(process.communicate()[1], b"")

    def test_an_element_that_never_ends_is_named_and_given_up_at_the_limit(self):
        self.lay_out(state=1)
        process = self.start(["update", *self.line, "--report", self.report, "--stall-limit", "100"], scale="0")
        output, errors = process.communicate(timeout=120)
        report, results = self.check_ended(process, 1, "elements")
        self.assertIn("in-progress", results)
        self.assertFalse(report["retryable"])
        lines = folded(errors).decode().splitlines()
        self.assertRegex(lines[0], r"^kvreflash: nothing has changed for 3\d s; waiting for '")
        self.assertRegex(lines[1], r"^kvreflash: nothing has changed for 9\d s; waiting for '")
        self.assertRegex(lines[2], r"^kvreflash: nothing changed any more: .* still in progress \('")
        self.assertEqual(len(lines), 3)
        # Text and report repeat nothing.
        self.assertLess(len(output), 20000)
        self.assertLess(len(report["messages"]), 20000)


def items_of(item):
    """An item of a description and all below it."""
    yield item
    for child in item.get("items", []):
        yield from items_of(child)


def fill(descriptor):
    """Fills a pipe."""
    flags = fcntl.fcntl(descriptor, fcntl.F_GETFL)
    fcntl.fcntl(descriptor, fcntl.F_SETFL, flags | os.O_NONBLOCK)
    try:
        while True:
            os.write(descriptor, b"x" * 4096)
    except BlockingIOError:
        pass
    fcntl.fcntl(descriptor, fcntl.F_SETFL, flags)


def await_blocked(process):
    """Waits until a process waits within a system call that writes."""
    deadline = time.monotonic() + 20
    while time.monotonic() < deadline:
        with open(f"/proc/{process}/syscall", encoding="ascii") as call:
            if call.read().split()[0] in ("1", "20"):  # write, writev
                return
        time.sleep(0.01)
    raise AssertionError("the tool does not write")


if __name__ == "__main__":
    tool_runs.main()
