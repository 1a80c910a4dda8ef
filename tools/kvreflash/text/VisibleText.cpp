#include "Texts.h"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace {

using boost::locale::utf::code_point;
using boost::locale::utf::is_valid_codepoint;
using boost::locale::utf::utf_traits;

/// Length of the well-formed UTF-8 character at the beginning of `bytes`; 0 when there is none.
std::size_t lengthOfCharacter(std::string_view bytes) {
    const char* const begin = bytes.data();
    const char* end = begin;
    const code_point character = utf_traits<char>::decode(end, begin + bytes.size());
    return is_valid_codepoint(character) ? static_cast<std::size_t>(end - begin) : 0;
}

bool isControl(code_point character) {
    return character < 0x20 || (character > 0x7E && character < 0xA0);
}

bool isHiddenControl(code_point character) {
    return isControl(character) && character != '\n' && character != '\r' && character != '\t';
}

struct Range {
    code_point first;
    code_point last;
};

/// Characters that end a line, turn its direction or take no place: what a terminal shows is not what is there.
constexpr std::array misleading = {Range{0x061C, 0x061C}, Range{0x180E, 0x180E}, Range{0x200B, 0x200F},
                                   Range{0x2028, 0x202E}, Range{0x2060, 0x206F}, Range{0xFEFF, 0xFEFF}};

bool isMisleading(code_point character) {
    return std::any_of(misleading.begin(), misleading.end(),
                       [character](const Range& range) { return character >= range.first && character <= range.last; });
}

std::string escaped(code_point character) {
    std::array<char, 16> text{};
    const auto number = static_cast<unsigned>(character);
    if (number < 0x100) {
        std::snprintf(text.data(), text.size(), "\\x%02X", number);
    } else {
        std::snprintf(text.data(), text.size(), "\\u{%04X}", number);
    }
    return text.data();
}

/// `text` with the controls that `isReplaced` names, and with misleading characters, escaped.
std::string visible(const std::string& text, bool (&isReplaced)(code_point)) {
    std::string result;
    result.reserve(text.size());
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t length = lengthOfCharacter(rest);
        const char* position = rest.data();
        // A byte that belongs to no character is taken for the character of its number.
        const code_point character = length != 0 ? utf_traits<char>::decode(position, position + length)
                                                 : static_cast<unsigned char>(rest.front());
        const std::string_view piece = rest.substr(0, length != 0 ? length : 1);
        if (isReplaced(character) || isMisleading(character)) {
            result += escaped(character);
        } else {
            result += piece;
        }
        rest.remove_prefix(piece.size());
    }
    return result;
}

} // namespace

std::string visibleOnTerminal(const std::string& text) {
    return visible(text, isHiddenControl);
}

std::string visibleInLine(const std::string& text) {
    return visible(text, isControl);
}
