#include "IpV4Text.h"

#include <array>
#include <bit>
#include <cstddef>

namespace {

/// The bytes of an address in order.
using IpV4Bytes = std::array<std::uint8_t, 4>;

/// A decimal number of 0 to 255 that fills `text`.
std::optional<std::uint8_t> parseByte(std::string_view text) {
    if (text.empty()) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    for (const char character : text) {
        if (character < '0' || character > '9') {
            return std::nullopt;
        }
        number = number * 10 + static_cast<std::uint32_t>(character - '0');
        if (number > 255) {
            return std::nullopt;
        }
    }
    return static_cast<std::uint8_t>(number);
}

} // namespace

std::string ipV4Text(std::uint32_t address) {
    std::string text;
    for (const std::uint8_t byte : std::bit_cast<IpV4Bytes>(address)) {
        if (!text.empty()) {
            text += '.';
        }
        text += std::to_string(byte);
    }
    return text;
}

std::optional<std::uint32_t> parseIpV4(std::string_view text) {
    IpV4Bytes bytes{};
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const bool isLast = index + 1 == bytes.size();
        const std::size_t end = isLast ? text.size() : text.find('.');
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        const auto byte = parseByte(text.substr(0, end));
        if (!byte) {
            return std::nullopt;
        }
        bytes[index] = *byte;
        text.remove_prefix(isLast ? end : end + 1);
    }
    return std::bit_cast<std::uint32_t>(bytes);
}
