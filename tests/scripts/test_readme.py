"""The transcripts of README.md are what the tool prints: the sessions of the example rack say what that is."""

import re
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
README = (PROJECT / "README.md").read_text(encoding="utf-8")
CASE = PROJECT / "tests" / "sessions" / "cases" / "example-rack"


def at_rest(path):
    """The lines of an expected output as a terminal shows them in the end, without blanks at line ends."""
    text = path.read_text(encoding="utf-8").replace("\u240d\n", "\r")
    return [line.rsplit("\r", 1)[-1].rstrip() for line in text.split("\n")]


def transcripts():
    """The parts of each transcript between the lines "..."."""
    for block in re.findall(r"^```\n\$ kvreflash [^\n]*\n(.*?)^```$", README, re.MULTILINE | re.DOTALL):
        yield re.split(r"^\.\.\.\n", block, flags=re.MULTILINE)


class ReadmeTest(unittest.TestCase):
    def test_transcripts_are_what_is_printed(self):
        found = list(transcripts())
        self.assertEqual(len(found), 2)
        for parts, output in zip(found, ("1.out", "5.out")):
            printed = "\n".join(at_rest(CASE / output))
            place = 0
            for part in parts:
                with self.subTest(output, part=part):
                    self.assertIn(part, printed[place:])
                    place = printed.index(part, place) + len(part)

    def test_linked_files_exist(self):
        links = re.findall(r"\]\(([^)]+)\)", README)
        self.assertGreater(len(links), 3)
        for link in links:
            with self.subTest(link):
                self.assertTrue((PROJECT / link).exists())


if __name__ == "__main__":
    unittest.main()
