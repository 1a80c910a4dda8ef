#include "MessageText.h"

#include <boost/locale/utf.hpp>

#include <cstdio>
#include <iterator>

namespace {

using boost::locale::utf::code_point;
using boost::locale::utf::is_valid_codepoint;
using boost::locale::utf::utf_traits;

constexpr code_point replacementCharacter = 0xFFFD;
constexpr wchar_t lastByte = 0xFF;
constexpr std::size_t longestSequence = 4;

/// The bytes at `position` of a multi-byte UTF-8 character that stands in the message byte by byte; empty when there is
/// none.
std::string embeddedCharacter(const std::wstring& message, std::size_t position) {
    std::string bytes;
    for (std::size_t index = position; index < message.size() && bytes.size() < longestSequence; ++index) {
        if (message[index] > lastByte) {
            break;
        }
        bytes.push_back(static_cast<char>(message[index]));
    }
    const char* begin = bytes.data();
    const char* end = begin;
    const code_point character = utf_traits<char>::decode(end, begin + bytes.size());
    if (!is_valid_codepoint(character) || end - begin < 2) {
        return {};
    }
    bytes.resize(static_cast<std::size_t>(end - begin));
    return bytes;
}

} // namespace

std::string messageBytes(const std::wstring& message) {
    std::string result;
    result.reserve(message.size());
    const wchar_t* position = message.data();
    const wchar_t* end = position + message.size();
    while (position != end) {
        if (*position < L'\x80') {
            result.push_back(static_cast<char>(*position++));
            continue;
        }
        const std::string embedded = embeddedCharacter(message, static_cast<std::size_t>(position - message.data()));
        if (!embedded.empty()) {
            result += embedded;
            position += embedded.size();
            continue;
        }
        const code_point character = utf_traits<wchar_t>::decode(position, end);
        utf_traits<char>::encode(is_valid_codepoint(character) ? character : replacementCharacter,
                                 std::back_inserter(result));
    }
    return result;
}

std::string visibleOnTerminal(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    const char* position = text.data();
    const char* end = position + text.size();
    while (position != end) {
        const char* begin = position;
        const code_point character = utf_traits<char>::decode(position, end);
        const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
        if (control && character != '\n' && character != '\r' && character != '\t') {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned>(character));
            result += escaped;
        } else {
            result.append(begin, position);
        }
    }
    return result;
}
