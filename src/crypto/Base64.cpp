#include "Base64.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t bytesOfGroup = 3;
constexpr std::size_t digitsOfGroup = 4;
constexpr unsigned bitsOfDigit = 6;
constexpr unsigned bitsOfByte = 8;
constexpr std::uint32_t digitMask = 0x3F;

/// The four digits of up to three bytes, with padding.
void appendGroup(std::string& text, const std::uint8_t* bytes, std::size_t size) {
    std::uint32_t group = 0;
    for (std::size_t index = 0; index < bytesOfGroup; ++index) {
        group = (group << bitsOfByte) | (index < size ? bytes[index] : 0U);
    }
    for (std::size_t index = 0; index < digitsOfGroup; ++index) {
        const auto shift = static_cast<unsigned>(digitsOfGroup - 1 - index) * bitsOfDigit;
        text += index <= size ? digits[(group >> shift) & digitMask] : '=';
    }
}

} // namespace

std::string base64Of(const std::vector<std::uint8_t>& bytes) {
    std::string text;
    text.reserve((bytes.size() + bytesOfGroup - 1) / bytesOfGroup * digitsOfGroup);
    for (std::size_t begin = 0; begin < bytes.size(); begin += bytesOfGroup) {
        appendGroup(text, bytes.data() + begin, std::min(bytesOfGroup, bytes.size() - begin));
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> bytesOfBase64(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / digitsOfGroup * bytesOfGroup);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : text.substr(0, text.find('='))) {
        const std::size_t digit = digits.find(character);
        if (digit == std::string_view::npos) {
            return std::nullopt;
        }
        bits = (bits << bitsOfDigit) | static_cast<std::uint32_t>(digit);
        count += bitsOfDigit;
        if (count >= bitsOfByte) {
            count -= bitsOfByte;
            bytes.push_back(static_cast<std::uint8_t>(bits >> count));
        }
    }
    // Padding, and bits of the last digit that no byte has, can be written in one way only.
    return base64Of(bytes) == text ? std::optional(std::move(bytes)) : std::nullopt;
}
