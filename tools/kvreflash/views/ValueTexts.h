#pragma once

#include "KvTPlan.h"
#include "TextTable.h"

#include <cstdint>
#include <optional>
#include <string>

// Values as the tool's tables show them; unknownText for nothing.

[[nodiscard]] inline std::string versionCell(const std::optional<KvNReflasher::KvTVersion>& version) {
    return version ? version->text : unknownText;
}

[[nodiscard]] inline std::string checksumCell(const std::optional<std::uint32_t>& checksum) {
    return checksum ? std::to_string(*checksum) : unknownText;
}
