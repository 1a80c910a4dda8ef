"""Tests of the generator of schemas."""

import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import make_schemas  # noqa: E402


class MakeSchemasTest(unittest.TestCase):
    def test_the_files_are_what_it_writes(self):
        texts = make_schemas.schema_texts()
        self.assertEqual(len(texts), 16)
        for name, contents in texts.items():
            self.assertEqual((make_schemas.SCHEMAS / name).read_text(encoding="utf-8"), contents,
                             f"{name}: run scripts/make_schemas.py")

    def test_words_are_those_of_the_sources(self):
        self.assertEqual(make_schemas.words("outlookWords"), ["would-update", "up-to-date", "no-entry", "disabled"])

    def test_none_is_null_and_no_word(self):
        self.assertNotIn("none", make_schemas.words("failedCallWords"))
        self.assertEqual(make_schemas.word("Call.", "entryModeWords", "none")["enum"], ["standard", "upgrade", None])

    def test_what_can_be_null_says_when(self):
        self.assertEqual(make_schemas.text("Version.", "not known"),
                         {"description": "Version. Null: not known.", "type": ["string", "null"]})
        self.assertEqual(make_schemas.part("entry", "Entry.", "none")["anyOf"],
                         [{"$ref": "#/$defs/entry"}, {"type": "null"}])

    def test_members_that_come_together_need_each_other(self):
        self.assertEqual(make_schemas.together("a", "b", "c"), {"a": ["b", "c"], "b": ["a"], "c": ["a"]})


if __name__ == "__main__":
    unittest.main()
