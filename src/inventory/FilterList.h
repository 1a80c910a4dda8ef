#pragma once

#include <string_view>

/// True when `word` occurs in `list`, words separated by commas or blanks, as a whole word. Case-sensitive, nothing is
/// trimmed. An empty word always matches, an empty list nothing else.
[[nodiscard]] bool matchesFilterList(std::string_view list, std::string_view word);
