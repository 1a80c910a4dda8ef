#pragma once

#include "KvCString.h"

#include <cstdint>

/// The board id of a board that states a hardware type instead; false, and `boardId` left alone, when none is known.
[[nodiscard]] bool boardIdOfHardwareType(const KvCString& boardType, std::uint32_t hardwareType,
                                         std::uint32_t& boardId);
