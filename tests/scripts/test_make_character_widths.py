"""Tests of the table of the columns that characters take."""

import sys
import unicodedata
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
import make_character_widths  # noqa: E402


@unittest.skipIf(unicodedata.unidata_version != make_character_widths.UNICODE, "characters of another Unicode version")
class MakeCharacterWidthsTest(unittest.TestCase):
    def test_the_file_is_what_it_writes(self):
        self.assertEqual(make_character_widths.FILE.read_text(encoding="utf-8"), make_character_widths.source(),
                         "run scripts/make_character_widths.py")

    def test_each_character_is_of_its_range(self):
        for columns in (0, 2):
            for first, last in make_character_widths.ranges_of(columns):
                self.assertEqual(make_character_widths.columns_of(first), columns)
                self.assertEqual(make_character_widths.columns_of(last), columns)
                self.assertNotEqual(make_character_widths.columns_of(first - 1), columns)
        self.assertEqual([make_character_widths.columns_of(ord(character)) for character in "a\u0301\u4e2d\uff21\uff71"],
                         [1, 0, 2, 2, 1])


if __name__ == "__main__":
    unittest.main()
