#!/usr/bin/env python3
"""Every example of the documents, run as it stands: `$ kvreflash ...` in blocks of the language console, with the lines
of output that follow ("..." for any), an exit code told in a comment, and without one 0. And every command and option has
an example."""

import re
import shlex
import sys
import unittest

import tool_runs
from tool_runs import PROJECT, ScratchTest, in_posix_quotes, run

sys.path.insert(0, str(PROJECT / "scripts"))
import documents  # noqa: E402
from documents import EXIT_CODE, examples_of, pattern_of  # noqa: E402

OPTION = re.compile(r"^ +(?:(-\w),)?(--[\w-]+)", re.MULTILINE)
COMMANDS = PROJECT / "docs/commands.md"


def blocks_of(document):
    return [block for block in documents.blocks_of(document) if block.language == "console"]


def shown(output):
    """What a terminal shows in the end, without blanks at the ends of lines. In the tool's own lines the paths of Windows
    have the separator of the documents."""
    text = output.decode("utf-8").replace("\r\n", "\n")
    lines = [line.rpartition("\r")[2].rstrip() for line in text.split("\n")]
    is_windows = getattr(tool_runs.arguments, "launcher", "")
    return [line.replace("\\", "/") if is_windows and line.startswith("kvreflash: ") else line for line in lines]


class ExamplesTest(ScratchTest):
    """The documents beside the tool."""

    def test_every_example_works(self):
        counts = {}
        for document in documents.documents():
            if blocks_of(document):
                counts[document.relative_to(PROJECT).as_posix()] = self.run_document(document)
        self.assertGreaterEqual(counts["README.md"], 2)
        self.assertGreaterEqual(counts["docs/commands.md"], 25)
        self.assertGreaterEqual(counts["docs/rehearsing.md"], 3)
        self.assertGreaterEqual(counts["docs/runs.md"], 9)

    def run_document(self, document):
        """Each document has the examples for itself."""
        archive, _ = self.lay_out_examples(document.stem)
        examples = [example for block in blocks_of(document) for example in examples_of(block)]
        for line, expected in examples:
            self.run_example(archive.parent, line, expected)
        return len(examples)

    def run_example(self, folder, line, expected):
        words = shlex.split(line, comments=True)
        self.assertEqual(words[0], "kvreflash", line)
        done = run(*words[1:], folder=folder)
        code = EXIT_CODE.search(line)
        with self.subTest(line):
            self.assertEqual(done.code, int(code.group(1)) if code else 0, done.errors)
            text = in_posix_quotes("\n".join(shown(done.output + done.errors)) + "\n")
            # Values of a plan have the same quotes on every system.
            self.assertTrue(pattern_of([in_posix_quotes(line) for line in expected]).fullmatch(text), text)

    def test_the_exit_codes_are_those_of_the_help(self):
        help_codes = re.findall(r"^  (\d+) +(\S.*)$", run("--help").output.decode().partition("Exit codes:")[2], re.MULTILINE)
        self.assertEqual([code for code, _ in help_codes], ["0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "64", "130"])
        rows = re.findall(r"^\| (\d+) \| (.*) \|$", COMMANDS.read_text(encoding="utf-8"), re.MULTILINE)
        self.assertEqual([code for code, _ in rows], [code for code, _ in help_codes])
        for (_, meaning), (_, told) in zip(rows, help_codes):
            self.assertTrue(meaning.startswith(told), meaning)

    def test_every_command_and_option_has_an_example(self):
        lines = [shlex.split(line, comments=True)[1:] for block in blocks_of(COMMANDS)
                 for line, _ in examples_of(block) if line.startswith("kvreflash ")]
        command_list = run("--help").output.decode().partition("Commands:")[2].partition("\n\n")[0]
        commands = re.findall(r"^  ([\w-]+) {2,}", command_list, re.MULTILINE)
        self.assertGreater(len(commands), 10)
        for command in commands:
            used = {word.partition("=")[0] for line in lines if line[0] == command for word in line[1:]}
            self.assertIn(command, {line[0] for line in lines})
            everywhere = {word.partition("=")[0] for line in lines for word in line[1:]}
            for letter, name in OPTION.findall(run(command, "--help").output.decode()):
                # Options that all or most commands share need no example with each of them.
                wanted = everywhere if name in SHARED else used
                self.assertTrue({letter, name} & wanted, f"{command} {name}")


SHARED = {"--help", "--verbose", "--quiet", "--description", "--emulate", "--board-type", "--serial-number", "--element",
          "--configuration", "--skip-custom", "--force", "--no-downgrade", "--trust", "--unsealed", "--no-settings"}


class PatternTest(unittest.TestCase):
    def test_dots_stand_for_any_lines(self):
        self.assertTrue(pattern_of(["a", "...", "c"]).fullmatch("a\nc\n"))
        self.assertTrue(pattern_of(["a", "...", "c"]).fullmatch("a\nb\nb\nc\n\n"))
        self.assertFalse(pattern_of(["a", "...", "c"]).fullmatch("a\nb\n"))
        self.assertFalse(pattern_of(["a"]).fullmatch("a\nb\n"))

    def test_what_was_overwritten_is_not_shown(self):
        self.assertEqual(shown(b" 10% \r100% [OK]\nx \n"), ["100% [OK]", "x", ""])


if __name__ == "__main__":
    tool_runs.main()
