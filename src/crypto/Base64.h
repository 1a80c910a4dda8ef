#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The bytes in base64 (RFC 4648), padded, without line ends.
[[nodiscard]] std::string base64Of(const std::vector<std::uint8_t>& bytes);

/// The bytes that `text` stands for; nothing unless it is what base64Of() makes of them.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> bytesOfBase64(std::string_view text);
