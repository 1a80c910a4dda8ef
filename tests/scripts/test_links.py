"""Every link of the documents to something inside the project leads there."""

import re
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
FOLDERS = ("docs", "tests", "bench", "fuzz", "examples")
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ (.*)$", re.MULTILINE)


def documents():
    return [PROJECT / "README.md", *(path for folder in FOLDERS for path in sorted((PROJECT / folder).rglob("*.md")))]


def anchors_of(document):
    """The names under which the headings of a document can be reached."""
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")
            for heading in HEADING.findall(document.read_text(encoding="utf-8"))}


class LinksTest(unittest.TestCase):
    def test_links_lead_to_something(self):
        count = 0
        for document in documents():
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


if __name__ == "__main__":
    unittest.main()
