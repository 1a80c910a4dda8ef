#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// The bytes of an IPv4 address in order, which are also the bytes of its number in memory.
using IpV4Bytes = std::array<std::uint8_t, 4>;

/// The address that `text` is, its bytes in network order; nothing for any other text.
[[nodiscard]] std::optional<std::uint32_t> parseIpV4(std::string_view text);
