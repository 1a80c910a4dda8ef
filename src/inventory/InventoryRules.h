#pragma once

#include "KvCString.h"

#include <cstdint>
#include <string_view>

/// The board id of a board that states a hardware type instead; false, and `boardId` left alone, when none is known.
[[nodiscard]] bool boardIdOfHardwareType(const KvCString& boardType, std::uint32_t hardwareType,
                                         std::uint32_t& boardId);

/// True when `word` occurs in `list`, words separated by commas or blanks, as a whole word. Case-sensitive, nothing is
/// trimmed. An empty word always matches, an empty list nothing else.
[[nodiscard]] bool matchesFilterList(std::string_view list, std::string_view word);
