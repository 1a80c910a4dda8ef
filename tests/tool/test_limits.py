#!/usr/bin/env python3
"""Descriptions of extreme size and shape: read, or refused with the reader's own message, within memory that grows with
the file alone and on a small stack. Those that are larger than what is read at all are refused unread."""

import json
import os
import resource
import subprocess

import tool_runs
from tool_runs import ScratchTest

# Ten and more times as much is asked for by the long gate.
ENTRIES = int(os.environ.get("KV_LIMIT_ENTRIES", "50000"))
TEXT_SIZE = int(os.environ.get("KV_LIMIT_MEGABYTES", "48")) << 20
STACK = 512 << 10
# Larger ones are not read.
LARGEST = 256 << 20
# Bytes of peak memory for each byte of the file, and for none. Sanitizers need the most of it.
MEMORY_FACTOR = 12
MEMORY_BASE = 300 << 20

INFO = {"formatVersion": "1.0", "archiveVersion": "3.5.0", "productName": "P", "archiveName": "N"}
CORRUPT = "is corrupt. Invalid JSON data."


class LimitsTest(ScratchTest):
    """Each test writes archive.json or target.json."""

    def path(self, name):
        return self.scratch / name

    def write_parts(self, name, *parts):
        """Texts, each of which may be given as a pair: a text and how often it is repeated."""
        with open(self.path(name), "w", encoding="utf-8") as file:
            for part in parts:
                text, count = part if isinstance(part, tuple) else (part, 1)
                block = max(1, (1 << 20) // len(text))
                for _ in range(count // block):
                    file.write(text * block)
                file.write(text * (count % block))

    def run_limited(self, *line):
        """The exit code and the texts; checks the peak of memory."""
        size = sum(path.stat().st_size for path in self.scratch.glob("*.json"))
        output, errors = self.path("out"), self.path("err")
        with open(output, "wb") as out, open(errors, "wb") as err:
            process = subprocess.Popen(tool_runs.command_of(*line), stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                                       preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_STACK, (STACK, STACK)))
            status, used = os.wait4(process.pid, 0)[1:]
        process.returncode = os.waitstatus_to_exitcode(status)
        peak = used.ru_maxrss << 10
        print(f"{self._testMethodName}: {size >> 20} MiB, peak {peak >> 20} MiB, {used.ru_utime:.2f} s")
        self.assertLess(peak, MEMORY_BASE + (MEMORY_FACTOR * size if size <= LARGEST else 0))
        return process.returncode, output.read_text("utf-8", "replace"), errors.read_text("utf-8", "replace")

    def check_archive(self, code, expected, command="archive-version"):
        result, output, errors = self.run_limited(command, "-a", self.scratch)
        if self.path("archive.json").stat().st_size > LARGEST:
            code, expected = 3, "ERROR: Cannot open archive description file "
        self.assertEqual((result, errors.count("\n")), (code, 1 if code else 0), errors)
        self.assertIn(expected, output)

    def check_refused_target(self, reason):
        result, _, errors = self.run_limited("elements", "-t", "127.0.0.1", "--emulate", self.scratch)
        self.assertEqual(result, 4)
        is_read = self.path("target.json").stat().st_size <= LARGEST
        self.assertIn(str(self.path("target.json")), errors)
        self.assertIn(reason if is_read else "is larger than 256 MiB", errors)

    def write_archive_with(self, *value):
        """An archive without entries, but with a key that nobody asks for."""
        self.write_parts("archive.json", '{"comment": ', *value, ', "info": ', json.dumps(INFO), ', "files": []}')

    def test_deeply_nested_lists(self):
        self.write_archive_with(("[", TEXT_SIZE), ("]", TEXT_SIZE))
        self.check_archive(3, CORRUPT)

    def test_deeply_nested_objects_that_never_end(self):
        self.write_archive_with(('{"a":', TEXT_SIZE // 5))
        self.check_archive(3, CORRUPT)

    def test_nesting_that_is_still_read(self):
        self.write_archive_with(("[", 250), ("]", 250))
        self.check_archive(0, "3.5.0\n")

    def test_a_huge_exponent(self):
        self.write_archive_with("1e", ("9", TEXT_SIZE))
        self.check_archive(3, CORRUPT)

    def test_a_huge_integer(self):
        self.write_archive_with(("9", TEXT_SIZE))
        self.check_archive(3, CORRUPT)

    def test_a_long_fraction(self):
        self.write_archive_with("0.", ("1", 1 << 20))
        self.check_archive(0, "3.5.0\n")

    def test_a_long_text(self):
        self.write_archive_with('"', ("a", TEXT_SIZE), '"')
        self.check_archive(0, "3.5.0\n")

    def test_a_long_text_of_escapes(self):
        self.write_archive_with('"', ("\\u00e4", TEXT_SIZE // 6), '"')
        self.check_archive(0, "3.5.0\n")

    def test_a_text_that_never_ends(self):
        self.write_archive_with('"', ("a", TEXT_SIZE))
        self.path("archive.json").write_bytes(self.path("archive.json").read_bytes()[:-20])
        self.check_archive(3, CORRUPT)

    def test_a_long_version(self):
        self.write_parts("archive.json", '{"info": {"formatVersion": "', ("1", TEXT_SIZE), '"}}')
        self.check_archive(3, "ERROR: ")

    def test_a_file_of_blanks(self):
        self.write_parts("archive.json", (" ", TEXT_SIZE))
        self.check_archive(3, CORRUPT)

    def test_a_file_of_zeros(self):
        with open(self.path("archive.json"), "wb") as file:
            file.truncate(TEXT_SIZE)
        self.check_archive(3, CORRUPT)

    def write_many_entries(self, entry):
        self.write_parts("archive.json", '{"info": ', json.dumps(INFO), ', "files": [', (entry + ",", ENTRIES - 1),
                         entry, "]}")

    def test_many_entries(self):
        self.write_many_entries('{"name": "a.bin", "sequence": 1, "boardType": "B", "id": 1, "version": "1.0", '
                                '"checksumCrc32": 1}')
        self.check_archive(0, "3.5.0\n")
        result, output, _ = self.run_limited("content", "-a", self.scratch)
        self.assertEqual(result, 0)
        self.assertGreater(output.count("a.bin"), ENTRIES - 1)

    def test_many_faulty_entries(self):
        self.write_many_entries("0")
        self.check_archive(3, "ERROR: File entry 0 is ")

    def test_a_target_with_deeply_nested_items(self):
        self.write_parts("target.json", '{"inventory": ', ('{"id": "HCN", "items": [', TEXT_SIZE // 24))
        self.check_refused_target("")

    def test_a_target_with_a_long_address(self):
        self.write_parts("target.json", '{"addresses": ["', ("1", TEXT_SIZE), '"]}')
        self.check_refused_target("addresses")

    def test_a_target_with_a_huge_number(self):
        self.write_parts("target.json", '{"rebootLookups": ', ("1", 1 << 20), "}")
        self.check_refused_target("The number is out of range.")

    def test_a_target_with_many_addresses(self):
        self.write_parts("target.json", '{"addresses": [', ('"10.0.0.1",', ENTRIES), '"10.0.0.2"]}')
        result, _, errors = self.run_limited("connect", "-t", "10.0.0.2", "--emulate", self.scratch)
        self.assertEqual((result, errors), (0, ""))


if __name__ == "__main__":
    tool_runs.main()
