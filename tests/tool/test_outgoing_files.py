#!/usr/bin/env python3
"""What the tool writes for its user: reports, captures and files of events replace a file whole or leave it as it was,
and what is known to fail is refused before the target is touched."""

import errno
import json
import os
import resource
import select
import shutil
import signal
import socket
import subprocess
import threading

import tool_runs
from tool_runs import ScratchTest, command_of, run

NOBODY = 65534
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8", "KV_TIME_SCALE": "0"}


def reason(error):
    return os.strerror(error)


# What is made of a folder of one's own, the path of the report in it, and why the report cannot be there.

def folder_missing(place):
    return place / "missing" / "r.html", reason(errno.ENOENT)


def through_a_file(place):
    (place / "file").write_text("")
    return place / "file" / "r.html", reason(errno.ENOTDIR)


def is_a_folder(place):
    (place / "r.html").mkdir()
    return place / "r.html", reason(errno.EISDIR)


def leads_nowhere(place):
    (place / "r.html").symlink_to("missing.html")
    return place / "r.html", "it is a link that leads nowhere"


def leads_to_a_folder_that_is_not_there(place):
    (place / "r.html").symlink_to("missing/r.html")
    return place / "r.html", "it is a link that leads nowhere"


def leads_in_a_ring(place):
    (place / "r.html").symlink_to("r.html")
    return place / "r.html", reason(errno.ELOOP)


def name_too_long(place):
    return place / ("x" * 251 + ".html"), reason(errno.ENAMETOOLONG)


def path_too_long(place):
    return f"{place}/{'./' * 2500}r.html", reason(errno.ENAMETOOLONG)


def full_device(place):
    (place / "r.html").symlink_to("/dev/full")
    return place / "r.html", reason(errno.ENOSPC)


def pipe_that_nobody_reads(place):
    os.mkfifo(place / "r.html")
    return place / "r.html", "nobody reads it"


def socket_of_somebody(place):
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(str(place / "r.html"))
    return place / "r.html", "nobody reads it"


UNWRITABLE = (folder_missing, through_a_file, is_a_folder, leads_nowhere, leads_to_a_folder_that_is_not_there,
              leads_in_a_ring, name_too_long, path_too_long, full_device, pipe_that_nobody_reads, socket_of_somebody)


# The same for somebody who may not do everything.

def without_search_right(place):
    (place / "closed").mkdir()
    (place / "closed").chmod(0o600)
    return place / "closed" / "r.html", reason(errno.EACCES)


def without_write_right(place):
    place.chmod(0o555)
    return place / "r.html", reason(errno.EACCES)


def file_of_somebody_else_in_a_shared_folder(place):
    place.chmod(0o1777)
    (place / "r.html").write_text("somebody's")
    os.chown(place, 1, 1)
    os.chown(place / "r.html", 1, 1)
    (place / "r.html").chmod(0o666)
    return place / "r.html", reason(errno.EPERM)


FORBIDDEN = (without_search_right, without_write_right, file_of_somebody_else_in_a_shared_folder)


def files_below(folder):
    """All names, with what the plain files hold."""
    return {path.relative_to(folder): path.read_bytes() if path.is_file() and not path.is_symlink() else None
            for path in folder.rglob("*")}


class OutgoingTest(ScratchTest):
    """The example archive and rack, and a folder for what is written."""

    def setUp(self):
        super().setUp()
        self.archive, self.rack = self.lay_out_examples()
        self.line = ["-a", self.archive, "-t", "127.0.0.1", "--emulate", self.rack]
        self.place = self.scratch / "place"
        self.place.mkdir()

    def assert_refused(self, done, message, place):
        self.assertEqual((done.code, done.output), (1, b""), message)
        self.assertEqual(done.errors.decode(), f"kvreflash: {message}\n")
        self.assertFalse((self.rack / "state").exists(), message)
        self.assertEqual(files_below(place), self.before)

    def check_report_refused(self, make, commands=("update", "plan", "verify"), **options):
        place = self.place / make.__name__
        place.mkdir()
        path, why = make(place)
        self.before = files_below(place)
        for command in commands:
            with self.subTest(make.__name__, command=command):
                done = run(command, *self.line, "--report", path, **options)
                self.assert_refused(done, f"cannot write '{path}': {why}", place)

    def mount(self, *options):
        """Mounts a file system of its own at the place, if that is allowed here."""
        if os.geteuid() != 0 or not shutil.which("mount"):
            self.skipTest("only root mounts")
        done = subprocess.run(["mount", *options, self.place], capture_output=True, check=False)
        if done.returncode != 0:
            self.skipTest(f"cannot mount here: {done.stderr.decode()}")
        self.addCleanup(subprocess.run, ["umount", self.place], check=True)

    def mount_full_disk(self):
        """Files and folders can still be made, but a report has no room."""
        self.mount("-t", "tmpfs", "-o", "size=64k", "none")
        (self.place / "filler").write_bytes(bytes(48 << 10))


class UnwritableTest(OutgoingTest):
    def test_a_report_that_cannot_be_written_is_refused_before_the_target_is_touched(self):
        for make in UNWRITABLE:
            self.check_report_refused(make)

    def test_a_report_that_may_not_be_written_is_refused_before_the_target_is_touched(self):
        if os.geteuid() != 0:
            self.skipTest("only root gives files away")
        self.scratch.chmod(0o755)
        options = {"user": NOBODY, "group": NOBODY, "extra_groups": []}
        reaches = subprocess.run(["ls", self.scratch], capture_output=True, check=False, **options).returncode == 0
        if not reaches or run("version", **options).code != 0:
            self.skipTest("others may not run the tool here, or not in this folder")
        for make in FORBIDDEN:
            self.check_report_refused(make, **options)

    def test_a_report_on_a_full_disk_is_refused_before_the_target_is_touched(self):
        def full_disk(place):
            return place / "r.html", reason(errno.ENOSPC)

        self.mount_full_disk()
        self.check_report_refused(full_disk)

    def test_a_report_on_a_read_only_disk_is_refused_before_the_target_is_touched(self):
        (self.scratch / "other").mkdir()
        self.mount("--bind", self.scratch / "other")
        done = subprocess.run(["mount", "-o", "remount,bind,ro", self.place], capture_output=True, check=False)
        if done.returncode != 0:
            self.skipTest(f"cannot mount here: {done.stderr.decode()}")
        done = run("update", *self.line, "--report", self.place / "r.html")
        self.before = files_below(self.place)
        self.assert_refused(done, f"cannot write '{self.place}/r.html': {reason(errno.EROFS)}", self.place)

    def test_a_report_over_a_file_that_is_mounted_is_refused_before_the_target_is_touched(self):
        (self.scratch / "other.html").write_text("other")
        self.place.rmdir()
        self.place.write_text("below")
        mounted = self.scratch / "mounted.html"
        self.place.rename(mounted)
        self.place = mounted
        self.mount("--bind", self.scratch / "other.html")
        done = run("update", *self.line, "--report", mounted)
        self.assertEqual((done.code, done.output), (1, b""))
        self.assertEqual(done.errors.decode(), f"kvreflash: cannot write '{mounted}': {reason(errno.EBUSY)}\n")
        self.assertFalse((self.rack / "state").exists())

    def test_events_that_nobody_reads_are_refused_before_the_target_is_touched(self):
        pipe = self.place / "events"
        os.mkfifo(pipe)
        self.before = files_below(self.place)
        done = run("update", *self.line, "--events", pipe)
        self.assert_refused(done, f"cannot create '{pipe}': nobody reads it", self.place)

    def test_a_capture_that_cannot_be_made_is_refused_before_the_target_is_asked(self):
        (self.place / "link").symlink_to("missing")
        (self.place / "file").write_text("")
        trace = self.scratch / "trace"
        rows = ((self.place / "missing" / "copy", reason(errno.ENOENT)),
                (self.place / "file" / "copy", reason(errno.ENOTDIR)),
                (self.place / "link", "it is a link that leads nowhere"))
        self.before = files_below(self.place)
        for folder, why in rows:
            with self.subTest(folder.name):
                done = run("capture", "-t", "127.0.0.1", "--emulate", self.rack, folder, trace=str(trace))
                self.assert_refused(done, f"'{folder}' cannot be created: {why}", self.place)
                self.assertFalse(trace.exists(), "nothing was called")

    def test_a_capture_onto_a_full_disk_is_refused_before_the_target_is_asked(self):
        self.mount_full_disk()
        (self.place / "empty").mkdir()
        self.before = files_below(self.place)
        for name, what in (("new", "cannot be created"), ("empty", "cannot take the file target.json")):
            done = run("capture", "-t", "127.0.0.1", "--emulate", self.rack, self.place / name)
            self.assert_refused(done, f"'{self.place / name}' {what}: {reason(errno.ENOSPC)}", self.place)


class ReplacedTest(OutgoingTest):
    def report(self, path, command="plan", **options):
        done = run(command, *self.line, "--report", path, **options)
        self.assertEqual((done.code, done.errors), (0, b""), done.errors)
        return done

    def assert_whole(self, path, command="plan"):
        document = json.loads(path.read_bytes())
        self.assertEqual(document["format"]["name"], f"kvreflash.{command}")

    def test_a_link_stays_and_the_file_that_it_leads_to_is_replaced(self):
        (self.place / "inner").mkdir()
        (self.place / "inner" / "first.json").write_text("earlier")
        (self.place / "latest.json").symlink_to("inner/first.json")
        (self.place / "r.json").symlink_to(self.place / "latest.json")
        self.report(self.place / "r.json")
        self.assertEqual(os.readlink(self.place / "latest.json"), "inner/first.json")
        self.assertEqual(os.readlink(self.place / "r.json"), str(self.place / "latest.json"))
        self.assertFalse((self.place / "inner" / "first.json").is_symlink())
        self.assert_whole(self.place / "inner" / "first.json")
        self.assertEqual(len(files_below(self.place)), 4)

    def test_what_somebody_has_beside_it_is_left_alone(self):
        (self.place / "precious").write_text("stays")
        (self.place / "r.json.new").symlink_to("precious")
        (self.place / "r.html.new").write_text("somebody's")
        self.report(self.place / "r.json")
        self.report(self.place / "r.html")
        self.assertEqual((self.place / "precious").read_text(), "stays")
        self.assertTrue((self.place / "r.json.new").is_symlink())
        self.assertEqual((self.place / "r.html.new").read_text(), "somebody's")
        self.assertEqual({path.name for path in files_below(self.place)},
                         {"precious", "r.json", "r.json.new", "r.html", "r.html.new"})

    def test_a_replaced_file_keeps_its_rights_and_a_new_one_has_those_of_the_process(self):
        old = self.place / "old.json"
        old.write_text("")
        old.chmod(0o604)
        self.report(old, preexec_fn=lambda: os.umask(0o027))
        self.report(self.place / "new.json", preexec_fn=lambda: os.umask(0o027))
        self.assertEqual([path.stat().st_mode & 0o7777 for path in (old, self.place / "new.json")], [0o604, 0o640])

    def test_the_longest_name_is_one_like_others(self):
        path = self.place / ("x" * 250 + ".json")
        self.report(path)
        self.assert_whole(path)

    def test_a_relative_path_needs_no_folder(self):
        self.report("r.json", folder=self.place)
        self.assertEqual([str(path) for path in files_below(self.place)], ["r.json"])

    def test_eight_tools_with_one_name_leave_one_whole_report_and_nothing_else(self):
        path = self.place / "r.json"
        commands = ["plan", "verify"] * 4
        tools = [subprocess.Popen(command_of(command, *self.line, "--report", path), env=ENVIRONMENT,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
                 for command in commands]
        ended = [(tool.communicate(timeout=120)[1], tool.returncode) for tool in tools]
        expected = {"plan": 0, "verify": 6}
        self.assertEqual([code for _, code in ended], [expected[command] for command in commands], ended)
        self.assertEqual([str(name) for name in files_below(self.place)], ["r.json"])
        self.assertIn(json.loads(path.read_bytes())["format"]["name"], ("kvreflash.plan", "kvreflash.verify"))

    def test_eight_captures_with_one_name_leave_one_whole_target(self):
        folder = self.place / "copy"
        tools = [subprocess.Popen(command_of("capture", "-t", "127.0.0.1", "--emulate", self.rack, folder),
                                  env=ENVIRONMENT, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.PIPE) for _ in range(8)]
        ended = [(tool.communicate(timeout=120)[1].decode(), tool.returncode) for tool in tools]
        self.assertIn(0, [code for _, code in ended], ended)
        for text, code in ended:
            self.assertIn((text, code), (("", 0), (f"kvreflash: '{folder}' exists and is not empty\n", 1)))
        self.assertEqual({str(path) for path in files_below(self.place)}, {"copy", "copy/target.json"})
        self.assertEqual(run("plan", "-a", self.archive, "-t", "127.0.0.1", "--emulate", folder).code, 0)

    def test_a_report_that_does_not_fit_leaves_the_earlier_one_and_nothing_else(self):
        path = self.place / "r.html"
        path.write_text("earlier")
        done = run("plan", *self.line, "--report", path, preexec_fn=forbid_long_files)
        self.assertEqual(done.code, 1)
        self.assertEqual(done.errors.decode(), f"kvreflash: cannot write '{path}': {reason(errno.EFBIG)}\n")
        self.assertEqual(files_below(self.place), {path.relative_to(self.place): b"earlier"})

    def test_what_a_killed_tool_has_left_does_no_harm(self):
        left = self.place / ".kvreflash-0123456789abcdef.tmp"
        left.write_text("left")
        self.report(self.place / "r.json")
        self.assertEqual(left.read_text(), "left")
        self.assert_whole(self.place / "r.json")

    def test_a_report_goes_into_a_pipe_as_it_is(self):
        (self.place / "r.json").symlink_to("/dev/stdout")
        done = self.report(self.place / "r.json")
        text, brace, document = done.output.decode().partition("\n{\n")
        self.assertIn("QB4120 (A), SN 2815, Firmware", text)
        self.assertEqual(json.loads("{" + document)["format"]["name"], "kvreflash.plan", brace)
        self.assertTrue((self.place / "r.json").is_symlink())

    @staticmethod
    def read_aside(pipe):
        """Begins to read a pipe. Returns what waits for the end of it and returns the text."""
        descriptor = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
        os.set_blocking(descriptor, True)
        pieces = []

        def read():
            # Before anybody has written a reading ends at once.
            begun = select.poll()
            begun.register(descriptor, select.POLLIN)
            if begun.poll(60000):
                while piece := os.read(descriptor, 65536):
                    pieces.append(piece)

        thread = threading.Thread(target=read, daemon=True)
        thread.start()

        def end():
            thread.join(60)
            os.close(descriptor)
            return b"".join(pieces)
        return end

    def test_reports_and_events_go_to_the_reader_of_a_pipe(self):
        ends = []
        for name in ("r.json", "events"):
            os.mkfifo(self.place / name)
            ends.append(self.read_aside(self.place / name))
        done = run("update", *self.line, "--report", self.place / "r.json", "--events", self.place / "events")
        self.assertEqual((done.code, done.errors), (0, b""))
        report, events = [end() for end in ends]
        self.assertEqual(json.loads(report)["format"]["name"], "kvreflash.update")
        self.assertIn("progress", [json.loads(line)["event"] for line in events.splitlines()])


def forbid_long_files():
    """What writes more into a file is told so, as on a full disk."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (5000, 5000))


if __name__ == "__main__":
    tool_runs.main()
