#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// An IPv4 address is a number whose bytes in memory are those of the address in order ("network byte order").
/// @{

/// Returns the dotted text of `address`.
[[nodiscard]] std::string ipV4Text(std::uint32_t address);
/// Returns the address that `text` is: four decimal numbers of 0 to 255 with dots between. Nothing for any other text.
[[nodiscard]] std::optional<std::uint32_t> parseIpV4(std::string_view text);
/// @}
