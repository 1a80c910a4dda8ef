"""Generated archives and racks: the same bytes again, and what kvreflash reads in them. The environment variable
KVREFLASH names the tool (default: the one of scripts/bench.sh)."""

import collections
import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
import generate  # noqa: E402

TOOL = os.environ.get("KVREFLASH", str(Path(__file__).resolve().parents[1] / "build" / "bench" / "bin" / "kvreflash"))
ENVIRONMENT = {**os.environ, "KV_TIME_SCALE": "0"}


class ScratchTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = Path(scratch.name)

    def generate(self, kind, name, *arguments):
        generate.main([kind, str(self.folder / name), *map(str, arguments)])
        return self.folder / name

    def kvreflash(self, *arguments):
        return subprocess.run([TOOL, *map(str, arguments)], env=ENVIRONMENT, capture_output=True, encoding="utf-8",
                              check=False)

    def document(self, *arguments):
        result = self.kvreflash(*arguments, "--json")
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return json.loads(result.stdout)

    def entries(self, archive):
        return json.loads((archive / "archive.json").read_text(encoding="utf-8"))["files"]


class SeedTest(ScratchTest):
    def files(self, folder):
        return {path.name: path.read_bytes() for path in folder.iterdir() if path.name != "files.txt"}

    def test_same_arguments_same_bytes(self):
        for kind, arguments in (("archive", ("--entries", 50, "--files")),
                                ("rack", ("--entries", 50, "--elements", 70))):
            first, second = (self.generate(kind, f"{kind}{number}", *arguments) for number in (1, 2))
            self.assertEqual(self.files(first), self.files(second))

    def test_another_seed_other_bytes(self):
        for kind, arguments in (("archive", ("--entries", 50)), ("rack", ("--entries", 50, "--elements", 70))):
            first, second = (self.generate(kind, f"{kind}{seed}", *arguments, "--seed", seed) for seed in "ab")
            self.assertNotEqual(self.files(first), self.files(second))
        first, second = (self.entries(self.folder / f"archive{seed}") for seed in "ab")
        for key in ("version", "sequence", "checksumCrc32"):
            self.assertNotEqual([entry[key] for entry in first], [entry[key] for entry in second], key)

    def test_a_larger_archive_begins_with_the_smaller_one(self):
        small, large = (self.entries(self.generate("archive", str(count), "--entries", count)) for count in (20, 30))
        self.assertEqual(small, large[:20])


class ArchiveTest(ScratchTest):
    def test_entries_are_realistic(self):
        archive = self.generate("archive", "archive", "--entries", 1000)
        size = (archive / "archive.json").stat().st_size
        self.assertTrue(400 <= size / 1000 <= 500, size)
        keys = collections.Counter(key for entry in self.entries(archive) for key in entry)
        for key in ("boardType", "boardVariant", "boardId", "hwCompatibilityId", "id", "targetPath", "boards",
                    "version", "checksumCrc32", "mode", "sequence", "comment"):
            self.assertGreaterEqual(keys[key], 20, key)
        self.assertGreaterEqual(len({entry["sequence"] for entry in self.entries(archive)}), 3)

    def test_content_lists_every_entry(self):
        archive = self.generate("archive", "archive", "--entries", 300)
        document = self.document("content", "-a", archive)
        self.assertEqual([(file["name"], file["version"]) for file in document["files"]],
                         [(entry["name"], entry["version"]) for entry in self.entries(archive)])

    def test_update_files_have_the_checksums_that_are_stated(self):
        whole = self.generate("archive", "whole", "--entries", 60)
        bare = self.generate("archive", "bare", "--entries", 60, "--without-checksums", "--files")
        self.assertFalse(any("checksumCrc32" in entry for entry in self.entries(bare)))
        self.assertEqual(len((bare / "files.txt").read_text(encoding="utf-8").splitlines()), 60)
        expected = {entry["name"]: entry["checksumCrc32"] for entry in self.entries(whole)}
        dumped = json.loads(self.kvreflash("dump", "-a", bare).stdout)["files"]
        self.assertEqual({entry["name"]: entry["checksumCrc32"] for entry in dumped}, expected)

    def test_heads_are_full(self):
        archive = self.generate("archive", "archive", "--entries", 10, "--files")
        sizes = {path.stat().st_size for path in archive.glob("*.kfw")}
        self.assertEqual(len(sizes), 1)
        self.assertGreaterEqual(sizes.pop(), 1000)


class ReleaseTest(ScratchTest):
    def setUp(self):
        super().setUp()
        self.release = self.generate("release", "release", "--entries", 5, "--file-size", 5000, "--tool", TOOL)

    def status(self, package):
        return self.kvreflash("archive-version", "-a", package, "--trust", self.release / "trust").returncode

    def test_its_trust_folder_accepts_it(self):
        self.assertEqual(self.status(self.release / "release.kva"), 0)
        self.assertEqual(self.status(self.release / "archive"), 0)

    def test_nothing_else_is_accepted(self):
        package = bytearray((self.release / "release.kva").read_bytes())
        package[-2000] ^= 1
        (self.folder / "changed.kva").write_bytes(package)
        self.assertEqual(self.status(self.folder / "changed.kva"), 3)

    def test_update_files_have_the_size_that_is_asked_for(self):
        sizes = [path.stat().st_size for path in (self.release / "archive").glob("*.kfw")]
        self.assertEqual(sizes, [5000] * 5)


class RackTest(ScratchTest):
    def plan(self, elements, entries, *more):
        archive = self.generate("archive", "archive", "--entries", entries, "--files")
        rack = self.generate("rack", "rack", "--elements", elements, "--entries", entries, *more)
        return self.document("plan", "-a", archive, "-t", "127.0.0.1", "--emulate", rack)

    def shares(self, document):
        """How many elements are (up to date, out of date, of no entry)."""
        elements = document["elements"]
        current = sum(1 for one in elements if one["hasArchiveFile"] and one["disabled"])
        old = sum(1 for one in elements if one["hasArchiveFile"] and not one["disabled"])
        return current, old, sum(1 for one in elements if not one["hasArchiveFile"])

    def test_shares_are_exact(self):
        self.assertEqual(self.shares(self.plan(200, 200)), (80, 100, 20))
        self.assertEqual(self.shares(self.plan(200, 200, "--current", 0, "--unknown", 0)), (0, 200, 0))
        self.assertEqual(self.shares(self.plan(200, 200, "--current", 1, "--unknown", 0)), (200, 0, 0))

    def test_fewer_elements_than_entries_are_spread_over_them(self):
        document = self.plan(50, 500, "--unknown", 0)
        self.assertEqual([one["archiveFileIndex"] for one in document["elements"]], list(range(0, 500, 10)))

    def test_more_elements_than_entries(self):
        document = self.plan(90, 20, "--unknown", 0)
        counts = collections.Counter(one["archiveFileIndex"] for one in document["elements"])
        self.assertEqual(len(counts), 20)
        self.assertEqual(set(counts.values()), {4, 5})

    def test_a_board_has_an_element_once(self):
        names = [one["displayName"] for one in self.plan(12, 5, "--unknown", 0)["elements"]]
        self.assertEqual(len(set(names)), 12, names)

    def test_elements_of_files_and_of_the_target_itself(self):
        kinds = collections.Counter(one["isFileSystemElement"] for one in self.plan(200, 200)["elements"])
        self.assertGreaterEqual(min(kinds.values()), 5)
        self.assertEqual(len(kinds), 2)

    def test_an_update_brings_everything_up_to_date(self):
        archive = self.generate("archive", "archive", "--entries", 100, "--files")
        rack = self.generate("rack", "rack", "--elements", 100, "--entries", 100, "--unknown", 0)
        where = ("-a", archive, "-t", "127.0.0.1", "--emulate", rack)
        result = self.kvreflash("update", *where)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        self.assertIn("Update completed successfully!", result.stdout)
        document = self.document("plan", *where)
        self.assertEqual(self.shares(document), (100, 0, 0))


if __name__ == "__main__":
    unittest.main()
