#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

/// Unicode characters from one to another, both included.
struct CharacterRange {
    std::uint32_t first;
    std::uint32_t last;
};

/// True if one of `ranges`, which ascend, has the character.
template <typename Ranges>
[[nodiscard]] bool isWithin(const Ranges& ranges, std::uint32_t character) {
    const auto next =
        std::upper_bound(ranges.begin(), ranges.end(), character,
                         [](std::uint32_t value, const CharacterRange& range) { return value < range.first; });
    return next != ranges.begin() && character <= std::prev(next)->last;
}

/// The number of columns that a character takes on a terminal: 0, 1 or 2.
[[nodiscard]] std::size_t columnsOfCharacter(std::uint32_t character);
