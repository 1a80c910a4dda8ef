#pragma once

#include <span>
#include <string_view>

/// The one of `words` that `word` was most likely meant to be: the first one of those that take the fewest changed,
/// added and removed bytes, upper and lower case (of ASCII) being the same. Empty when none is near.
[[nodiscard]] std::string_view nearestWord(std::string_view word, std::span<const std::string_view> words);
