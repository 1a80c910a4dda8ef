"""What stands in the documents: links lead to something, and every block says what it is and can be what it says."""

import contextlib
import io
import json
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import documents  # noqa: E402
from documents import PROJECT, Block, blocks_of, commands_of  # noqa: E402

LANGUAGES = {"sh", "console", documents.SHELL, "c", "json", "cmake", "text"}
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.*)$", re.MULTILINE)
FENCED = re.compile(r"^```(?:.*\n)*?```$", re.MULTILINE)


def anchors_of(document):
    """The names under which the headings of a document can be reached."""
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
            for heading in HEADING.findall(document.read_text(encoding="utf-8"))}


def all_blocks(language):
    return [block for document in documents.documents() for block in blocks_of(document) if block.language == language]


class LinksTest(unittest.TestCase):
    def test_links_lead_to_something(self):
        count = 0
        for document in documents.documents():
            for link in LINK.findall(document.read_text(encoding="utf-8")):
                if re.match(r"\w+:", link):
                    continue
                with self.subTest(document=document.name, link=link):
                    path, _, anchor = link.partition("#")
                    target = (document.parent / path) if path else document
                    self.assertTrue(target.exists())
                    if anchor:
                        self.assertIn(anchor, anchors_of(target))
                count += 1
        self.assertGreater(count, 20)


class BlocksTest(unittest.TestCase):
    def test_every_block_says_what_it_is(self):
        for document in documents.documents():
            for block in blocks_of(document):
                self.assertIn(block.language, LANGUAGES, str(block))
            outside = FENCED.sub("", document.read_text(encoding="utf-8"))
            self.assertIsNone(re.search(r"\n\n {4,}\S", outside), f"{document.name}: a block without a fence")

    def test_commands_name_what_is_there(self):
        presets = {preset["name"] for preset in
                   json.loads((PROJECT / "CMakePresets.json").read_text(encoding="utf-8"))["configurePresets"]}
        blocks = all_blocks("sh")
        self.assertGreater(len(blocks), 15)
        for block in blocks:
            checked = subprocess.run(["bash", "-n", "-c", block.text], capture_output=True, check=False)
            self.assertEqual(checked.returncode, 0, f"{block}: {checked.stderr.decode()}")
            for command in commands_of(block):
                for path in re.findall(r"(?<![\w/])(?:scripts|tests|docs|bench)/[\w./-]+", command):
                    self.assertTrue((PROJECT / path).exists(), f"{block}: {path}")
                self.assertLessEqual(set(re.findall(r"--preset (\w+)", command)), presets, str(block))

    def test_what_is_typed_stands_behind_a_prompt(self):
        blocks = all_blocks(documents.SHELL)
        self.assertGreater(len(blocks), 5)
        for block in blocks:
            self.assertTrue(block.text.startswith("$ "), str(block))
            for command, _ in documents.examples_of(block):
                checked = subprocess.run(["bash", "-n", "-c", command], capture_output=True, check=False)
                self.assertEqual(checked.returncode, 0, f"{block}: {checked.stderr.decode()}")

    def test_what_is_not_run_stands_somewhere(self):
        commands = {command for block in all_blocks("sh") for command in commands_of(block)}
        self.assertEqual(set(documents.NOT_RUN) - commands, set())

    def test_json_is_json(self):
        for block in all_blocks("json"):
            with self.subTest(str(block)):
                json.loads(block.text)

    def test_cmake_is_that_of_the_example(self):
        example = (PROJECT / "examples/client/CMakeLists.txt").read_text(encoding="utf-8").splitlines()
        lines = [line for block in all_blocks("cmake") for line in block.text.splitlines()]
        self.assertTrue(lines)
        self.assertLessEqual(set(lines), set(example))


class RunTest(unittest.TestCase):
    """The script that runs the commands."""

    def test_a_command_that_fails_fails_its_block(self):
        def block(text):
            return Block(PROJECT / "README.md", 1, "sh", text)

        for text, expected in (("true   # well\n", True), ("true\nfalse\ntrue\n", False), ("false | true\n", False),
                               ("false && true\ntrue\n", False), ("name=value\ntest $name = value\n", True),
                               ("test -f \\\n    README.md\n", True), ("scripts/gate.sh    # all\n", None)):
            with self.subTest(text), contextlib.redirect_stdout(io.StringIO()):
                self.assertIs(documents.run(block(text)), expected)

    def test_what_is_typed_has_to_end_and_print_as_it_stands(self):
        for command, expected, works in (("true", [], True), ("false", [], False), ("false | true", [], False),
                                         ("exit 3   # exit code 3", [], True), ("true   # exit code 3", [], False),
                                         ("echo a; echo b >&2", ["a", "b"], True), ("echo a; echo b", ["a"], False),
                                         ("seq 9; echo 'a  '", ["1", "...", "a"], True), ("seq 9", ["...", "8"], False),
                                         ("echo key abc is good", ["key ... is good"], True),
                                         ("echo key abc is bad", ["key ... is good"], False)):
            with self.subTest(command), contextlib.redirect_stdout(io.StringIO()), \
                    tempfile.TemporaryDirectory() as folder:
                self.assertIs(documents.works(command, expected, folder), works)

    def test_a_command_goes_on_behind_a_backslash(self):
        block = Block(PROJECT / "README.md", 1, documents.SHELL, "$ one \\\n      two\nline\n$ three\n")
        self.assertEqual(documents.examples_of(block), [("one two", ["line"]), ("three", [])])

    def test_a_document_is_followed_in_a_copy_of_the_demo(self):
        with tempfile.TemporaryDirectory() as scratch:
            demo = Path(scratch) / "demo"
            for name in ("archive", "rack"):
                (demo / name).mkdir(parents=True)
            (demo / "rack/state").mkdir()
            document = Path(scratch) / "d.md"
            with mock.patch.object(documents, "DEMO", demo), contextlib.redirect_stdout(io.StringIO()):
                document.write_text("```sh\nfalse\n```\n", encoding="utf-8")
                self.assertIsNone(documents.follow(document))
                document.write_text("```console shell\n$ touch archive/a; ls rack\n```\n\n```console shell\n"
                                    "$ ls archive\na\n```\n", encoding="utf-8")
                self.assertIs(documents.follow(document), True)
                document.write_text("```console shell\n$ false\n$ touch archive/b\n```\n", encoding="utf-8")
                self.assertIs(documents.follow(document), False)
            self.assertEqual(list((demo / "archive").iterdir()), [])

    def test_blocks_are_found_with_their_place(self):
        readme = blocks_of(PROJECT / "README.md")
        self.assertEqual([block.language for block in readme], ["sh", "sh", "console"])
        lines = (PROJECT / "README.md").read_text(encoding="utf-8").splitlines()
        self.assertEqual([lines[block.line - 1] for block in readme], ["```sh", "```sh", "```console"])


if __name__ == "__main__":
    unittest.main()
