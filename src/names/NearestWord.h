#pragma once

#include <cstddef>
#include <span>
#include <string_view>

/// The one of `words` that `word` was most likely meant to be: the first one of those that take the fewest changed,
/// added and removed bytes, upper and lower case (of ASCII) being the same. Empty when none is near: at most a third of
/// `size` bytes may be wrong.
/// @{
[[nodiscard]] std::string_view nearestWord(std::string_view word, std::span<const std::string_view> words,
                                           std::size_t size);
[[nodiscard]] inline std::string_view nearestWord(std::string_view word, std::span<const std::string_view> words) {
    return nearestWord(word, words, word.size());
}
/// @}
