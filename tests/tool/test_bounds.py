#!/usr/bin/env python3
"""Files of gigabytes that hold nothing, and small targets that are made to fill pages: memory and output stay within
bounds."""

import json
import os
import resource

import tool_runs
from tool_runs import ScratchTest, pastable

GIBIBYTE = 1 << 30
# How large a file without content is made.
SPARSE = 4 * GIBIBYTE
# Of the address space of a run.
MEMORY = GIBIBYTE
LONGEST_TEXT = 4096
TARGET_SIZE = 1 << 20
MOST_OUTPUT = 64 << 20

TARGET = ("-t", "127.0.0.1", "--emulate", "rack")
ARCHIVE = ("-a", "archive")
UPDATE = ("update", *ARCHIVE, *TARGET)
WHOLE_UPDATE = (*UPDATE, "--preflight", "--verify", "--report", "report.html")
TOO_LARGE = "it is larger than 256 MiB, the most that is read"


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))


def make_sparse(path, begin=b""):
    path.write_bytes(begin)
    os.truncate(path, SPARSE)


class BoundsTest(ScratchTest):
    def setUp(self):
        super().setUp()
        self.archive, self.rack = self.lay_out_examples()
        self.folder = self.archive.parent

    def tool(self, *line, **options):
        return tool_runs.run(*line, folder=self.folder, **options)


class SparseTest(BoundsTest):
    """Files of 4 GiB that take no room on the disk, read with 1 GiB of memory."""

    # A sanitizer needs all addresses.
    is_limited = None

    def setUp(self):
        super().setUp()
        if SparseTest.is_limited is None:
            SparseTest.is_limited = tool_runs.run("--version", preexec_fn=limit_memory).code == 0

    def limited(self, *line):
        return self.tool(*line, timeout=60, **({"preexec_fn": limit_memory} if self.is_limited else {}))

    def test_a_description_is_a_finding(self):
        for begin in (b"", b'{"comment": "'):
            make_sparse(self.archive / "archive.json", begin)
            done = self.limited("check", *ARCHIVE)
            self.assertEqual(done.code, 3)
            self.assertIn(b"Cannot open archive description file archive/archive.json [description-unreadable]\n",
                          done.output)
            self.assertIn(f"It{TOO_LARGE[2:]}.".encode(), done.output)
            self.assertEqual(done.errors, b"kvreflash: 'archive/archive.json' has 1 error, 0 warnings\n")

    def test_a_description_lets_no_session_begin(self):
        message = "Cannot open archive description file archive\\archive.json"
        for begin in (b"", b'{"comment": "'):
            make_sparse(self.archive / "archive.json", begin)
            for line in (("content", *ARCHIVE), ("dump", *ARCHIVE), ("plan", *ARCHIVE, *TARGET), WHOLE_UPDATE):
                done = self.limited(*line)
                self.assertEqual(done.code, 3)
                self.assertIn(f"ERROR: {message}\n", done.output.decode())
                self.assertEqual(done.errors.decode(), f"kvreflash: {pastable(message)} ({TOO_LARGE})\n")
        self.assertFalse((self.rack / "state").exists())

    def test_an_update_file_is_judged_by_its_head(self):
        # What could be an inventory tree file is no exception.
        for begin in (b"", b"{", b'{"inventoryTree": {"id": "FIRMWARE", "parameters": {"NAME": "'):
            make_sparse(self.archive / "pb310-firmware.kit", begin)
            make_sparse(self.archive / "network.ini", begin)
            done = self.limited("check", *ARCHIVE)
            self.assertEqual(done.code, 3)
            self.assertIn(b"Cannot read checksum from update file pb310-firmware.kit. [checksum-unreadable]\n",
                          done.output)
            self.assertEqual(self.limited(*WHOLE_UPDATE).code, 3)
        self.assertFalse((self.rack / "state").exists())

    def test_a_target_is_refused(self):
        for begin in (b"", b'{"comment": "'):
            make_sparse(self.rack / "target.json", begin)
            for line in (("elements", *TARGET), ("plan", *ARCHIVE, *TARGET), WHOLE_UPDATE):
                done = self.limited(*line)
                self.assertEqual(done.code, 4)
                self.assertEqual(done.errors, b"kvreflash: rack/target.json: is larger than 256 MiB\n")

    def test_a_state_file_is_ignored(self):
        self.assertEqual(self.tool(*UPDATE).code, 0)
        for path in (self.rack / "state" / "resets.json", next((self.rack / "state" / "elements").iterdir())):
            make_sparse(path)
            done = self.limited("plan", *ARCHIVE, *TARGET)
            self.assertEqual(done.code, 0)
            self.assertIn(path.name.encode(), done.errors)
            path.unlink()


def element(number, **parameters):
    return {"id": "UPDATE_ELEMENT", "parameters": {"ID": number, "NAME": "", "VERSION": "1.0", "VERSION_HISTORY": "",
                                                   "CONFIGURATION": 0, "VALID": 1, "ACTIVE": 1, **parameters}}


def board(elements, **names):
    product = {f"PRODUCT/{key}": value for key, value in names.items()}
    return {"id": "HCN", "parameters": {"PRODUCT/BOARD_TYPE": "B", "PRODUCT/SERIAL_NUMBER": 1, "PRODUCT/SLOT_COUNT": 0,
                                        **product},
            "items": [{"id": "UPDATE_INFO", "items": elements}]}


class OutputTest(BoundsTest):
    """Targets of 1 MiB that are made to fill pages."""

    LONG = "n" * LONGEST_TEXT
    COMMANDS = (("elements", *TARGET), ("elements", *TARGET, "--json"), ("plan", *ARCHIVE, *TARGET),
                ("plan", *ARCHIVE, *TARGET, "--json"), (*UPDATE, "--verify", "--report", "report.html"),
                ("plan", *ARCHIVE, *TARGET, "--report", "report.json"))

    def write_target(self, count, **names):
        """A board with these names and so many elements; more of a comment than that until it has its size."""
        target = {"addresses": ["127.0.0.1"], "comment": "",
                  "inventory": {"id": "ROOT", "items": [board([element(1)] * count, **names)]}}
        target["comment"] = "c" * (TARGET_SIZE - len(json.dumps(target)))
        (self.rack / "target.json").write_text(json.dumps(target), encoding="utf-8")
        self.assertEqual((self.rack / "target.json").stat().st_size, TARGET_SIZE)
        description = {"info": {"formatVersion": "1.0", "archiveVersion": "1.0", "productName": "", "archiveName": ""},
                       "files": []}
        (self.archive / "archive.json").write_text(json.dumps(description), encoding="utf-8")

    def outputs(self):
        """The largest stream or file that each command writes, and its exit code."""
        for line in self.COMMANDS:
            done = self.tool(*line)
            reports = list(self.folder.glob("report.*"))
            sizes = [len(done.output), len(done.errors), *(path.stat().st_size for path in reports)]
            print(f"{self._testMethodName}: {line[0]} {line[-1]}: {[size >> 20 for size in sizes]} MiB, {done.code}")
            for path in reports:
                path.unlink()
            yield max(sizes), done.code

    def check_refused(self):
        self.assertEqual([code for size, code in self.outputs() if size > 1 << 16 or code != 4], [])
        done = self.tool("elements", *TARGET)
        self.assertEqual(done.errors.count(b"\n"), 1)
        self.assertIn(b"kvreflash: rack/target.json: $.inventory", done.errors)

    def test_a_text_without_end_is_refused(self):
        self.write_target(1000, NAME="n" * (TARGET_SIZE // 2))
        self.check_refused()

    def test_names_that_are_shown_with_thousands_of_elements_are_refused(self):
        self.write_target(5000, BOARD_TYPE=self.LONG, NAME=self.LONG, VARIANT=self.LONG, UNITNAME=self.LONG)
        self.check_refused()

    def test_the_most_text_that_is_accepted(self):
        """The longest names with as many elements as are served with them, and characters that are escaped."""
        for text in ("n", "\x01"):
            names = {key: text * (LONGEST_TEXT // (1 if text == "n" else 6))
                     for key in ("BOARD_TYPE", "NAME", "VARIANT", "UNITNAME")}
            self.write_target(1000, **names)
            results = list(self.outputs())
            self.assertEqual([result for result in results if result[0] > MOST_OUTPUT or result[1] == 4], [])
            self.write_target(1100, **names)
            self.check_refused()


if __name__ == "__main__":
    tool_runs.main()
