#!/usr/bin/env python3
"""What is not a regular file, in every place where a file of an archive, of a target or of its state is read: nothing
waits for it, the message is that of a file that cannot be read, and exit code, messages and state agree."""

import contextlib
import json
import os
import shutil
import stat

import tool_runs
from tool_runs import ScratchTest, arguments, in_posix_quotes, pastable

# Seconds after which a run counts as one that waits.
PATIENCE = 20


def pipe_beside(path):
    """The pipe that a link at that path leads to: not in the same folder, whose other files the tool may name."""
    return path.parent.with_name(f"{path.parent.name}.pipe")


# How each kind is placed, and what the tool calls it; None: there is nothing, for which it has messages of its own.
KINDS = {
    "pipe": (os.mkfifo, "a pipe"),
    "socket": (lambda path: os.mknod(path, stat.S_IFSOCK | 0o600), "a socket"),
    "folder": (os.mkdir, "a folder"),
    "empty device": (lambda path: os.symlink("/dev/null", path), "a device"),
    "endless device": (lambda path: os.symlink("/dev/zero", path), "a device"),
    "link to a pipe": (lambda path: (os.mkfifo(pipe_beside(path)), os.symlink(pipe_beside(path), path)), "a pipe"),
    "dangling link": (lambda path: os.symlink("nowhere", path), None),
}
# Windows has no others but its devices, which have tests of their own.
KINDS_OF_WINDOWS = ("folder",)

TARGET = ("-t", "127.0.0.1", "--emulate", "rack")
ARCHIVE = ("-a", "archive")
UPDATE = ("update", *ARCHIVE, *TARGET)
# Everything of an update at once.
WHOLE_UPDATE = (*UPDATE, "--preflight", "--verify", "--report", "report.html")


def run(*line, **options):
    """As of tool_runs; a run that waits is a failure of its own."""
    return tool_runs.run(*line, timeout=PATIENCE, **options)


class NotRegularTest(ScratchTest):
    """The example archive and rack, in folders of these names."""

    def setUp(self):
        super().setUp()
        self.archive, self.rack = self.lay_out_examples()
        self.folder = self.archive.parent

    def tool(self, *line, **options):
        return run(*line, folder=self.folder, **options)

    @contextlib.contextmanager
    def in_place_of(self, path, kind):
        """Puts something of this kind in the place of a file for a while, as a subtest that expects it to stay; what
        was there comes back."""
        place, _ = KINDS[kind]
        aside = self.scratch / "aside"
        had = path.exists()
        if had:
            path.rename(aside)
        path.parent.mkdir(parents=True, exist_ok=True)
        place(path)
        before = os.lstat(path)
        try:
            with self.subTest(path=path.name, kind=kind):
                yield
                after = os.lstat(path)
                self.assertEqual((before.st_ino, before.st_mode), (after.st_ino, after.st_mode))
        finally:
            self.remove(path)
            if had:
                aside.rename(path)

    @staticmethod
    def remove(path):
        pipe_beside(path).unlink(missing_ok=True)
        if path.is_dir() and not path.is_symlink():
            shutil.rmtree(path)
        else:
            path.unlink(missing_ok=True)

    @staticmethod
    def kinds(*but):
        """The name of each kind, and what the tool calls it."""
        for kind, (_, called) in KINDS.items():
            if kind not in but and (not arguments.launcher or kind in KINDS_OF_WINDOWS):
                yield kind, called

    def assert_untouched(self):
        """Neither the target nor the archive has anything new."""
        self.assertFalse((self.rack / "state").exists())
        self.assertFalse((self.archive / "nowhere").exists())

    def check_last_line(self, done, expected):
        self.assertEqual(in_posix_quotes(done.errors.decode()).splitlines()[-1:], [expected])

    def forget_update(self):
        shutil.rmtree(self.rack / "state", ignore_errors=True)

    def check_works_again(self):
        """Nothing was left locked."""
        done = self.tool(*UPDATE)
        self.assertEqual((done.code, done.errors), (0, b""), done.output.decode())


class DescriptionTest(NotRegularTest):
    """In the place of the archive's description."""

    MESSAGE = "Cannot open archive description file archive\\archive.json"
    SESSIONS = (("archive-version", *ARCHIVE), ("content", *ARCHIVE), ("content", *ARCHIVE, "--json"),
                ("dump", *ARCHIVE), ("plan", *ARCHIVE, *TARGET), ("plan", *ARCHIVE, *TARGET, "--json"),
                ("explain", *ARCHIVE, *TARGET), ("verify", *ARCHIVE, *TARGET),
                ("matrix", *ARCHIVE, "--emulate", "rack"), UPDATE, WHOLE_UPDATE)

    def test_no_session_begins(self):
        for kind, called in self.kinds():
            reason = f" (it is {called}, not a regular file)" if called else ""
            with self.in_place_of(self.archive / "archive.json", kind):
                for line in self.SESSIONS if not arguments.launcher else self.SESSIONS[-1:]:
                    done = self.tool(*line)
                    self.assertEqual(done.code, 3, line)
                    self.assertIn(f"ERROR: {self.MESSAGE}\n", (done.output + done.errors).decode(), line)
                    self.check_last_line(done, f"kvreflash: {pastable(self.MESSAGE)}{reason}")
                    self.assert_untouched()

    def test_check_finds_it(self):
        for kind, called in self.kinds():
            with self.in_place_of(self.archive / "archive.json", kind):
                done = self.tool("check", *ARCHIVE)
                self.assertEqual(done.code, 3)
                self.assertIn(f"error: {pastable(self.MESSAGE)} [description-unreadable]\n".encode(), done.output)
                hint = f"It is {called}, not a regular file." if called else "Check the folder given with --archive "
                self.assertIn(hint.encode(), done.output)
                self.check_last_line(done, "kvreflash: 'archive/archive.json' has 1 error, 0 warnings")

    def test_an_archive_that_is_no_folder(self):
        for kind, _ in self.kinds("folder"):
            with self.in_place_of(self.archive, kind):
                self.assertEqual(self.tool("content", *ARCHIVE).code, 3)
                self.assertEqual(self.tool("check", *ARCHIVE).code, 3)


class UpdateFileTest(NotRegularTest):
    """In the place of update files."""

    def test_a_file_whose_checksum_is_needed_refuses_the_archive(self):
        for name in ("qb4120-ipl.kfw", "pb310-firmware.kit"):
            for kind, called in self.kinds():
                with self.in_place_of(self.archive / name, kind):
                    if called:
                        message = f"Cannot read checksum from update file {name}."
                        reason = f" (it is {called}, not a regular file)"
                    else:
                        message = f"Cannot read checksum from update file. 'archive\\{name}' not found."
                        reason = ""
                    for line in (("content", *ARCHIVE), ("dump", *ARCHIVE), WHOLE_UPDATE):
                        done = self.tool(*line)
                        self.assertEqual(done.code, 3, line)
                        self.assertIn(f"ERROR: {message}\n", done.output.decode())
                        self.check_last_line(done, f"kvreflash: {pastable(message)}{reason}")
                    self.assert_untouched()
                    done = self.tool("check", *ARCHIVE)
                    self.assertEqual(done.code, 3)
                    self.assertIn(f"error: {pastable(message)} [".encode(), done.output)
                    self.assertIn(f"It is {called}," if called else "Put the file into", done.output.decode())

    def test_a_file_that_is_transferred_fails_its_element(self):
        for kind, called in self.kinds():
            with self.in_place_of(self.archive / "qb8100-cpld.kfw", kind):
                done = self.tool(*UPDATE, "--verify", "--report", "report.json")
                self.assertEqual(done.code, 1, done.errors)
                name = "I/O router, SN 20480, CPLD"
                if called:
                    self.assertRegex(done.output.decode(), r" qb8100-cpld\.kfw +\[ERROR\]\n")
                else:
                    self.assertIn(f"{name} cannot be updated. Update file qb8100-cpld.kfw not found!\n",
                                  done.output.decode())
                self.assertEqual(self.results()[name], "failed" if called else "file-missing")
            self.check_works_again()
            self.forget_update()

    def test_a_file_that_is_written_in_the_last_phase_fails_alone(self):
        path = "/mnt/cn/cfdrive/config/net/network.ini"
        for kind, called in self.kinds():
            with self.in_place_of(self.archive / "network.ini", kind):
                done = self.tool(*UPDATE, "--report", "report.json")
                self.assertEqual(done.code, 1, done.errors)
                if called:
                    self.assertIn(f"ERROR: Writing {path} failed. Cannot transfer file to target device. Status: -1\n",
                                  done.output.decode())
                else:
                    self.assertIn(b"Update file network.ini not found!\n", done.output)
                results = self.results()
                failed = [result for result in results.values() if result not in ("updated", "not-planned")]
                self.assertEqual(failed, ["failed" if called else "file-missing"], results)
                self.assertFalse((self.rack / "state" / "cfdrive" / "config" / "net" / "network.ini").exists())
            self.check_works_again()
            self.forget_update()

    def test_the_preflight_finds_it(self):
        for kind, called in self.kinds():
            with self.in_place_of(self.archive / "network.ini", kind):
                done = self.tool(*WHOLE_UPDATE)
                self.assertEqual(done.code, 3)
                fault = f"cannot be read: it is {called}, not a regular file" if called else "not found"
                self.assertIn(f"kvreflash: preflight: network.ini: {fault}\n".encode(), done.errors)
                self.assert_untouched()

    def test_check_warns(self):
        for kind, called in self.kinds():
            with self.in_place_of(self.archive / "network.ini", kind):
                done = self.tool("check", *ARCHIVE)
                self.assertEqual(done.code, 0)
                fault = f"is {called}, not a regular file. [update-file-unreadable]"
                if not called:
                    fault = "is not in the archive folder. [update-file-missing]"
                elif (self.archive / "network.ini").is_symlink():  # nothing elsewhere is opened for a warning
                    fault = "lies outside of the archive folder. [outside-archive]"
                self.assertIn(f'warning: The update file "network.ini" {fault}\n'.encode(), done.output)

    def results(self):
        """What became of each element, by its name, as the last report says."""
        report = json.loads((self.folder / "report.json").read_text(encoding="utf-8"))
        return {element["displayName"]: element["outcome"] for element in report["elements"]}


class TargetTest(NotRegularTest):
    """In the place of the description of an emulated target, and of what is kept in its folder."""

    LINES = (("connect", *TARGET), ("elements", *TARGET), ("elements", *TARGET, "--json"), ("reboot", *TARGET),
             ("plan", *ARCHIVE, *TARGET), ("explain", *ARCHIVE, *TARGET), ("verify", *ARCHIVE, *TARGET),
             ("matrix", *ARCHIVE, "--emulate", "rack"), ("check", *ARCHIVE, "--emulate", "rack"),
             ("capture", "-t", "127.0.0.1", "copy", "--emulate", "rack"), UPDATE, WHOLE_UPDATE)

    def test_no_target_is_served(self):
        for kind, called in self.kinds():
            with self.in_place_of(self.rack / "target.json", kind):
                for line in self.LINES if not arguments.launcher else self.LINES[-1:]:
                    done = self.tool(*line)
                    self.assertEqual(done.code, 4, (line, done.errors))
                    self.assertIn(b"rack/target.json: cannot be opened: ", done.errors.splitlines()[-1])
                    if called and called != "a folder":
                        self.assertIn(f": It is {called}, not a regular file".encode(), done.errors.splitlines()[-1])
                    self.assert_untouched()

    def test_a_rack_that_is_no_folder(self):
        for kind, _ in self.kinds("folder"):
            with self.in_place_of(self.rack, kind):
                self.assertEqual(self.tool(*UPDATE).code, 4)

    def test_a_capture_into_it_is_refused(self):
        for kind, _ in self.kinds("folder", "dangling link"):
            with self.in_place_of(self.folder / "copy", kind):
                done = self.tool("capture", "-t", "127.0.0.1", "copy", "--emulate", "rack")
                self.assertEqual(done.code, 1, done.errors)
                self.check_last_line(done, "kvreflash: 'copy' exists and is no folder")

    def state_file(self):
        """The file of an element that an update has installed."""
        self.check_works_again()
        return sorted((self.rack / "state" / "elements").iterdir())[0]

    def test_a_state_file_is_ignored_when_it_is_read_and_kept_when_it_is_written(self):
        path = self.state_file()
        for name in (path, self.rack / "state" / "resets.json"):
            for kind, _ in self.kinds("dangling link"):
                with self.in_place_of(name, kind):
                    done = self.tool("plan", *ARCHIVE, *TARGET)
                    self.assertEqual(done.code, 0)
                    self.assertEqual(done.errors.count(b"The state file "), 1, done.errors)
                    self.assertIn(name.name, done.errors.decode())
                    self.assertEqual(self.tool(*UPDATE, "--force").code, 1)

    def test_a_lock_that_is_not_a_file_is_not_taken(self):
        for kind, _ in self.kinds():
            with self.in_place_of(self.rack / "state" / "lock", kind):
                done = self.tool(*UPDATE)
                self.assertEqual(done.code, 5)
                self.assertIn("Cannot lock ", done.errors.decode().splitlines()[-1])
            self.forget_update()

    def test_a_guard_that_is_not_a_file_lets_nothing_be_installed(self):
        for kind, _ in self.kinds():
            with self.in_place_of(self.rack / "state" / "guard", kind):
                self.assertEqual(self.tool(*UPDATE).code, 1)
                self.assertEqual(list((self.rack / "state").glob("elements/*")), [])
            self.forget_update()

    def test_folders_of_the_state_that_are_none(self):
        for name, code in (("", 5), ("elements", 1), ("cfdrive", 1)):
            for kind, _ in self.kinds("folder"):
                with self.in_place_of(self.rack / "state" / name, kind):
                    self.assertEqual(self.tool(*WHOLE_UPDATE).code, code)
                    self.assertEqual(self.tool("plan", *ARCHIVE, *TARGET).code, 0)
                self.forget_update()

    def test_what_a_dead_owner_of_the_lock_left_is_cleared_whatever_it_is(self):
        for kind, _ in self.kinds():
            place, _ = KINDS[kind]
            with self.subTest(kind=kind):
                (self.rack / "state").mkdir()
                path = self.rack / "state" / "transferred"
                place(path)
                self.check_works_again()
                self.assertFalse(os.path.lexists(path))
                self.remove(path)
                self.forget_update()

    def test_files_of_the_target_are_neither_read_nor_replaced(self):
        place = self.rack / "state" / "cfdrive" / "config" / "net"
        for name in ("network.ini", "network.ini.tmp"):
            for kind, _ in self.kinds():
                with self.in_place_of(place / name, kind):
                    self.assertEqual(self.tool(*UPDATE).code, 1)
                self.forget_update()

    def test_a_trace_that_nobody_reads_is_not_waited_for(self):
        if arguments.launcher:
            self.skipTest("a pipe of this system")
        os.mkfifo(self.folder / "trace")
        done = self.tool("connect", *TARGET, trace="trace")
        self.assertEqual(done.code, 0)
        self.assertEqual(done.errors.count(b"The trace trace cannot be written: "), 1, done.errors)


class DeviceNamesTest(NotRegularTest):
    """Names that Windows takes for devices, whatever the folder."""

    NAMES = ("NUL", "nul.txt", "CON", "con.ini", "PRN", "AUX", "aux.ini", "COM1", "com9.kfw", "LPT1")

    def setUp(self):
        if not arguments.launcher:
            self.skipTest("names of Windows only")
        super().setUp()

    def test_a_description(self):
        for name in self.NAMES:
            with self.subTest(name=name):
                done = self.tool("content", *ARCHIVE, "-d", name)
                message = f"Cannot open archive description file archive\\{name}"
                self.assertEqual(done.code, 3)
                self.assertIn(f"ERROR: {message}\n", done.output.decode())
                self.check_last_line(done, f"kvreflash: {pastable(message)} (it is a device, not a regular file)")

    def test_an_update_file(self):
        path = self.archive / "archive.json"
        text = path.read_text(encoding="utf-8")
        for name in self.NAMES[:3] + self.NAMES[6:8]:
            with self.subTest(name=name):
                path.write_text(text.replace('"network.ini"', json.dumps(name)), encoding="utf-8")
                done = self.tool(*UPDATE)
                self.assertEqual(done.code, 1)
                self.assertEqual(self.tool(*UPDATE, "--preflight").code, 3)


if __name__ == "__main__":
    tool_runs.main()
