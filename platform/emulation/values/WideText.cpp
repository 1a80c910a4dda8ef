#include "WideText.h"

#include <boost/locale/utf.hpp>

#include <cstddef>
#include <iterator>

namespace {

using Utf8 = boost::locale::utf::utf_traits<char>;

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
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
        Utf8::encode(characterAt(text, index), std::back_inserter(result));
    }
    return result;
}
