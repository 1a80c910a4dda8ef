#include "VisibleText.h"

#include <boost/locale/utf.hpp>

#include <string_view>

namespace {

using boost::locale::utf::code_point;
using boost::locale::utf::is_valid_codepoint;
using boost::locale::utf::utf_traits;

constexpr std::string_view hexadecimal = "0123456789ABCDEF";

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

/// `text` with `isReplaced` characters, all below U+0100, as \xHH.
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
        if (isReplaced(character)) {
            result += {'\\', 'x', hexadecimal[character >> 4], hexadecimal[character & 0xF]};
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
