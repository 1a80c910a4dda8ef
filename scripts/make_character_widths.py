#!/usr/bin/env python3
"""Writes tools/kvreflash/text/CharacterWidths.cpp: which characters take no column or two on a terminal, from the
Unicode data that Python has (EastAsianWidth and General_Category).

usage: make_character_widths.py
"""

import sys
import textwrap
import unicodedata
from itertools import chain
from pathlib import Path

FILE = Path(__file__).resolve().parent.parent / "tools" / "kvreflash" / "text" / "CharacterWidths.cpp"
# Of Python 3.11, which Debian 12 has. Data of another version have other characters.
UNICODE = "14.0.0"

LAST_CHARACTER = 0x10FFFF
# Vowels and final consonants of Hangul syllables: they are shown within the column of the first consonant.
CONJOINING = set(chain(range(0x1160, 0x1200), range(0xD7B0, 0xD800)))

TEMPLATE = """\
// Written by scripts/make_character_widths.py from Unicode {unicode}.

#include "CharacterWidths.h"

#include <array>

namespace {{

// clang-format off

/// Marks that are shown above or below the character before them.
constexpr std::array<CharacterRange, {without_count}> withoutColumn = {{{{
{without}
}}}};

/// EastAsianWidth W and F.
constexpr std::array<CharacterRange, {wide_count}> wide = {{{{
{wide}
}}}};

// clang-format on

}} // namespace

std::size_t columnsOfCharacter(std::uint32_t character) {{
    if (isWithin(withoutColumn, character)) {{
        return 0;
    }}
    return isWithin(wide, character) ? 2 : 1;
}}
"""


def columns_of(number):
    """0, 1 or 2; None for a number that is no character, which may have any."""
    character = chr(number)
    category = unicodedata.category(character)
    if number in CONJOINING or category in ("Mn", "Me"):
        return 0
    if category == "Cn":
        return None
    return 2 if unicodedata.east_asian_width(character) in "WF" else 1


def ranges_of(columns):
    """[(first, last)] of the characters that take so many columns, as few as possible."""
    ranges = []
    is_open = False
    for number in range(LAST_CHARACTER + 1):
        found = columns_of(number)
        if found == columns:
            first = ranges.pop()[0] if is_open else number
            ranges.append((first, number))
        is_open = found == columns or (is_open and found is None)
    return ranges


def table_of(ranges):
    """Initialisers, several in a line."""
    cells = ", ".join(f"{{0x{first:04X},_0x{last:04X}}}" for first, last in ranges)
    return textwrap.fill(cells, 120, initial_indent="    ", subsequent_indent="    ").replace("_", " ")


def source():
    without, wide = ranges_of(0), ranges_of(2)
    return TEMPLATE.format(unicode=UNICODE, without_count=len(without), without=table_of(without),
                           wide_count=len(wide), wide=table_of(wide))


def main():
    if unicodedata.unidata_version != UNICODE:
        print(f"this Python has Unicode {unicodedata.unidata_version}, not {UNICODE}")
        return 1
    FILE.write_text(source(), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
