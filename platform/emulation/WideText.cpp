#include "WideText.h"

#include <cstddef>
#include <cstdint>

namespace {

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

char continuation(char32_t character, unsigned shift) {
    return static_cast<char>(0x80U | ((character >> shift) & 0x3FU));
}

void append(std::string& text, char32_t character) {
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0U | (character >> 6U));
        text += continuation(character, 0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0U | (character >> 12U));
        text += continuation(character, 6);
        text += continuation(character, 0);
    } else {
        text += static_cast<char>(0xF0U | (character >> 18U));
        text += continuation(character, 12);
        text += continuation(character, 6);
        text += continuation(character, 0);
    }
}

/// The character that begins at `index`, which moves to its last unit.
char32_t characterAt(std::wstring_view text, std::size_t& index) {
    const auto unit = static_cast<char32_t>(text[index]);
    if (isHighSurrogate(unit) && index + 1 < text.size()) {
        const auto low = static_cast<char32_t>(text[index + 1]);
        if (isLowSurrogate(low)) {
            ++index;
            return 0x10000 + ((unit - 0xD800) << 10U) + (low - 0xDC00);
        }
    }
    const bool isCharacter = unit <= 0x10FFFF && !isHighSurrogate(unit) && !isLowSurrogate(unit);
    return isCharacter ? unit : replacement;
}

} // namespace

std::string utf8OfWide(std::wstring_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        append(result, characterAt(text, index));
    }
    return result;
}
