#pragma once

#include "KvTPlan.h"

#include <cstdint>
#include <optional>
#include <string>

// Values as the tool's tables show them; unknownText for nothing.

[[nodiscard]] std::string versionCell(const std::optional<KvNReflasher::KvTVersion>& version);
[[nodiscard]] std::string checksumCell(const std::optional<std::uint32_t>& checksum);
