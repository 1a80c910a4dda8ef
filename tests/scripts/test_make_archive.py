"""Tests of the maker of update files, and of the agreement between the example archive and the example rack."""

import json
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
EXAMPLES = PROJECT / "examples"
sys.path.insert(0, str(EXAMPLES))
import make_archive  # noqa: E402
from make_archive import RecipeError, check, installed, make_file, parse_version  # noqa: E402


class VersionTest(unittest.TestCase):
    def test_components(self):
        for text, expected in (("5", (5, 0, 0, 0, 0, 0)), ("23.2a12", (23, 2, 0, 1, 12, 0)), ("5.0.1", (5, 0, 1, 0, 0, 0)),
                               ("3.5.0.4", (3, 5, 0, 0, 4, 0)), ("23.2.1b3.1", (23, 2, 1, 2, 3, 1)),
                               ("1.2.3.4.5", (1, 2, 3, 0, 4, 5))):
            with self.subTest(text):
                self.assertEqual(parse_version(text), expected)

    def test_other_texts_are_refused(self):
        for text in ("", "1.", "a1", "1.2c3", "1.2.3.4.5.6", "1.2a3.4.5"):
            with self.subTest(text), self.assertRaises(RecipeError):
                parse_version(text)


class FileTest(unittest.TestCase):
    def test_image_header(self):
        data = make_file({"name": "a", "kind": "image", "version": "23.2.1b3.4", "size": 10, "hw": [1, 2], "sw": [3, 4],
                          "typeId": 5})
        self.assertEqual(struct.unpack_from(">II", data, 40), (0x1255AA34, 0xAA184755))
        self.assertEqual(struct.unpack_from(">I", data, 60)[0], zlib.crc32(data[364:]))
        self.assertEqual(struct.unpack_from(">BBBBHH", data, 76), (23, 2, 1, 11, 3, 4))
        self.assertEqual(struct.unpack_from(">IIIII", data, 344), (1, 2, 3, 4, 5))
        self.assertEqual(len(data), 374)

    def test_bitstream_header(self):
        data = make_file({"name": "a", "kind": "bitstream", "size": 10})
        self.assertEqual((data[:8], struct.unpack_from(">II", data, 8)), (b"kvFPGABS", (92, 1)))
        self.assertEqual(struct.unpack_from(">I", data, 88)[0], zlib.crc32(data[92:]))

    def test_tree_file(self):
        document = json.loads(make_file({"name": "a", "kind": "tree", "version": "1.2", "stated": True}))
        parameters = document["inventoryTree"]["items"][0]["parameters"]
        self.assertEqual((parameters["VERSION"], parameters["CHECKSUM_CRC32"]), ("1.2", document["checksumCrc32"]))

    def test_text_and_bytes(self):
        self.assertEqual(make_file({"name": "a", "kind": "text", "lines": ["x", "y"]}), b"x\ny\n")
        self.assertEqual(make_file({"name": "a", "kind": "bytes", "hex": "00ff"}), b"\x00\xff")

    def test_stated_checksum_and_cut(self):
        data = make_file({"name": "a", "kind": "image", "version": "1.0", "checksum": 7, "cut": 64})
        self.assertEqual((len(data), data[60:]), (64, b"\0\0\0\7"))

    def test_payload_depends_on_the_name_alone(self):
        recipe = {"name": "a", "kind": "bytes", "size": 100}
        self.assertEqual(make_file(recipe), make_file(recipe))
        self.assertNotEqual(make_file(recipe), make_file({**recipe, "name": "b"}))

    def test_what_an_installation_leaves(self):
        for kind, version in (("image", (1, 2, 0, 0, 0, 0)), ("tree", (1, 2, 0, 0, 0, 0)), ("bitstream", None)):
            with self.subTest(kind):
                data = make_file({"name": "a", "kind": kind, "version": "1.2", "checksum": 77})
                self.assertEqual(installed(data), (77, version))
        self.assertEqual(installed(b"text"), (zlib.crc32(b"text"), None))

    def test_faulty_recipe_is_named(self):
        for recipe in ({"name": "a", "kind": "pie"}, {"name": "a", "kind": "image"}, {"name": "a", "kind": "text"},
                       {"name": "a", "kind": "image", "version": "x"}):
            with self.subTest(recipe), self.assertRaisesRegex(RecipeError, 'recipe of "a"'):
                make_file(recipe)


class CheckTest(unittest.TestCase):
    FILES = {"a": make_file({"name": "a", "kind": "image", "version": "1.2", "checksum": 77}), "b": b"text"}
    A = {"name": "a", "version": "1.2", "checksumCrc32": 77}
    B = {"name": "b", "version": None, "checksumCrc32": zlib.crc32(b"text")}

    def complaint(self, *entries):
        complaints = check({"files": list(entries)}, self.FILES)
        self.assertEqual(len(complaints), 1)
        return complaints[0]

    def test_agreement(self):
        self.assertEqual(check({"files": [self.A, self.B]}, self.FILES), [])

    def test_checksum_left_to_the_file(self):
        self.assertEqual(check({"files": [{"name": "a", "version": "1.2.0"}, self.B]}, self.FILES), [])

    def test_wrong_checksum(self):
        self.assertIn("checksumCrc32 is 78, that of the file is 77", self.complaint({**self.A, "checksumCrc32": 78}, self.B))

    def test_wrong_or_absent_version(self):
        self.assertIn("version is 1.3", self.complaint({**self.A, "version": "1.3"}, self.B))
        self.assertIn("version is absent", self.complaint({"name": "a"}, self.B))

    def test_version_for_a_file_that_has_none(self):
        self.assertIn("has to be null", self.complaint(self.A, {"name": "b"}))

    def test_missing_and_surplus_recipe(self):
        self.assertIn("no recipe", self.complaint(self.A, self.B, {"name": "c"}))
        self.assertIn("no file entry", self.complaint(self.A))


class CommandTest(unittest.TestCase):
    def run_command(self, *arguments):
        return subprocess.run([sys.executable, "-B", EXAMPLES / "make_archive.py", *arguments], capture_output=True,
                              text=True, check=False)

    def test_examples_agree(self):
        result = self.run_command("--check", EXAMPLES / "archive")
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_archive_is_made_the_same_each_time(self):
        with tempfile.TemporaryDirectory() as folder:
            outs = [Path(folder) / "a", Path(folder) / "b"]
            for out in outs:
                self.assertEqual(self.run_command(EXAMPLES / "archive", out).returncode, 0)
            made = [{path.name: path.read_bytes() for path in out.iterdir()} for out in outs]
        self.assertEqual(made[0], made[1])
        self.assertEqual(made[0]["archive.json"], (EXAMPLES / "archive" / "archive.json").read_bytes())

    def test_disagreement_makes_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            source, out = Path(folder) / "source", Path(folder) / "out"
            source.mkdir()
            (source / "archive.json").write_text('{"files": [{"name": "a", "version": null, "checksumCrc32": 1}]}')
            (source / "recipes.json").write_text('{"updateFiles": [{"name": "a", "kind": "text", "lines": []}]}')
            result = self.run_command(source, out)
            self.assertEqual(result.returncode, 1)
            self.assertIn('file entry 0 ("a"): checksumCrc32 is 1, that of the file is 0', result.stderr)
            self.assertFalse(out.exists())


class ExamplesTest(unittest.TestCase):
    def test_archive_shows_what_archives_can_hold(self):
        entries = make_archive.read_json(EXAMPLES / "archive" / "archive.json")["files"]
        self.assertGreaterEqual(len(entries), 12)
        self.assertGreaterEqual(len({entry["sequence"] for entry in entries}), 3)
        for key in ("boards", "targetPath", "boardVariant", "swCompatibilityId", "mode"):
            self.assertTrue(any(key in entry for entry in entries), key)
        self.assertTrue(any("checksumCrc32" not in entry for entry in entries))

    def test_rack_gives_every_parameter_that_is_read_untested(self):
        def visit(item, board):
            parameters = item.get("parameters", {})
            if item["id"] in ("UPDATE_ELEMENT", "FILESYSTEM_ELEMENT"):
                for name in ("VERSION", "NAME", "VERSION_HISTORY", "CONFIGURATION"):
                    self.assertIn(name, parameters)
                for name in ("PRODUCT/BOARD_TYPE", "PRODUCT/SERIAL_NUMBER", "PRODUCT/SLOT_COUNT"):
                    self.assertIn(name, board)
            for child in item.get("items", []):
                visit(child, board if item["id"] == "UPDATE_INFO" else parameters)
        visit(make_archive.read_json(EXAMPLES / "rack" / "target.json")["inventory"], {})


if __name__ == "__main__":
    unittest.main()
