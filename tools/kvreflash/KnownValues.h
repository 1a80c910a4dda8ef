#pragma once

#include "KvCVersion.h"
#include "TableLayout.h"

#include <cstdint>
#include <optional>
#include <string>

/// False for the zero version, which stands for one that nobody tells.
[[nodiscard]] inline bool isKnown(const KvCVersion& version) {
    return version != KvCVersion();
}

/// The checksum as text; unknownCell for nothing.
[[nodiscard]] inline std::string checksumCell(const std::optional<std::uint32_t>& checksum) {
    return checksum ? std::to_string(*checksum) : unknownCell;
}
