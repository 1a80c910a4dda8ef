#include "MessageEncoding.h"

#include "WideFormat.h"

#include <boost/locale/utf.hpp>

#include <iterator>
#include <string_view>
#include <type_traits>

namespace {

using boost::locale::utf::code_point;
using boost::locale::utf::is_valid_codepoint;
using boost::locale::utf::utf_traits;

constexpr code_point replacementCharacter = 0xFFFD;
constexpr code_point lastByte = 0xFF;
constexpr std::size_t longestSequence = 4;

/// Length of the well-formed UTF-8 character at the beginning of `bytes`; 0 when there is none.
std::size_t lengthOfCharacter(std::string_view bytes) {
    const char* const begin = bytes.data();
    const char* end = begin;
    const code_point character = utf_traits<char>::decode(end, begin + bytes.size());
    return is_valid_codepoint(character) ? static_cast<std::size_t>(end - begin) : 0;
}

code_point codeUnit(wchar_t character) {
    return std::make_unsigned_t<wchar_t>(character);
}

/// The characters at the beginning of `message` that may be bytes of one UTF-8 character.
std::string leadingBytes(std::wstring_view message) {
    std::string bytes;
    for (const wchar_t character : message.substr(0, longestSequence)) {
        if (codeUnit(character) > lastByte) {
            break;
        }
        bytes.push_back(static_cast<char>(character));
    }
    return bytes;
}

/// Takes one character off the beginning of `message`, a surrogate pair as one.
code_point takeCharacter(std::wstring_view& message) {
    const code_point first = codeUnit(message.front());
    message.remove_prefix(1);
    const code_point second = message.empty() ? 0 : codeUnit(message.front());
    if ((first & ~code_point(0x3FF)) != 0xD800 || (second & ~code_point(0x3FF)) != 0xDC00) {
        return is_valid_codepoint(first) ? first : replacementCharacter;
    }
    message.remove_prefix(1);
    return 0x10000 + ((first & 0x3FF) << 10) + (second & 0x3FF);
}

} // namespace

std::string messageBytes(const std::wstring& message) {
    return messageBytes(message, decodesNarrowText());
}

std::string messageBytes(const std::wstring& message, bool narrowTextIsDecoded) {
    std::string result;
    result.reserve(message.size());
    std::wstring_view rest = message;
    while (!rest.empty()) {
        const std::string bytes = narrowTextIsDecoded ? std::string() : leadingBytes(rest);
        if (const std::size_t length = lengthOfCharacter(bytes); length != 0) {
            result.append(bytes, 0, length);
            rest.remove_prefix(length);
        } else {
            utf_traits<char>::encode(takeCharacter(rest), std::back_inserter(result));
        }
    }
    return result;
}
