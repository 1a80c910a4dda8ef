#include "TextConversion.h"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <clocale>
#include <cwctype>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace {

using boost::locale::utf::utf_traits;

template <typename Character>
bool isAscii(Character character) {
    return static_cast<std::make_unsigned_t<Character>>(character) < 0x80;
}

/// Recodes `text` character by character, but for runs of ASCII; empty at the first ill-formed one.
template <typename To, typename From>
std::basic_string<To> recode(std::basic_string_view<From> text) {
    std::basic_string<To> result;
    result.reserve(text.size());
    const From* position = text.data();
    const From* end = position + text.size();
    for (;;) {
        const From* asciiEnd = std::find_if_not(position, end, isAscii<From>);
        const std::size_t size = result.size();
        result.resize(size + static_cast<std::size_t>(asciiEnd - position));
        std::transform(position, asciiEnd, result.begin() + static_cast<std::ptrdiff_t>(size),
                       [](From character) { return static_cast<To>(character); });
        position = asciiEnd;
        if (position == end) {
            return result;
        }
        const auto codePoint = utf_traits<From>::decode(position, end);
        if (!boost::locale::utf::is_valid_codepoint(codePoint)) {
            return {};
        }
        utf_traits<To>::encode(codePoint, std::back_inserter(result));
    }
}

} // namespace

std::wstring utf8ToWide(const char* text) {
    return recode<wchar_t>(std::string_view(text));
}

std::string wideToUtf8(const wchar_t* text) {
    return recode<char>(std::wstring_view(text));
}

bool isLetter(wchar_t character) {
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t());
    return unicode != locale_t() ? iswalpha_l(static_cast<wint_t>(character), unicode) != 0
                                 : std::iswalpha(static_cast<wint_t>(character)) != 0;
}
