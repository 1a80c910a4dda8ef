#include "FileNames.h"

#include <boost/locale/utf.hpp>
#include <boost/spirit/home/support/char_encoding/unicode/query.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

namespace {

using boost::locale::utf::code_point;
using boost::locale::utf::utf_traits;

struct CharacterRange {
    code_point first;
    code_point last;
};

constexpr std::array hiddenCharacters = {CharacterRange{0x0000, 0x001F}, CharacterRange{0x007F, 0x009F},
                                         CharacterRange{0x061C, 0x061C}, CharacterRange{0x180E, 0x180E},
                                         CharacterRange{0x200B, 0x200F}, CharacterRange{0x2028, 0x202E},
                                         CharacterRange{0x2060, 0x206F}, CharacterRange{0xFEFF, 0xFEFF}};

bool isHidden(code_point character) {
    return std::any_of(hiddenCharacters.begin(), hiddenCharacters.end(), [character](const CharacterRange& range) {
        return character >= range.first && character <= range.last;
    });
}

std::string nameOf(code_point character) {
    std::array<char, 16> name{};
    std::snprintf(name.data(), name.size(), "U+%04X", static_cast<unsigned>(character));
    return name.data();
}

/// Names of devices, whatever is appended behind a dot or colon.
constexpr std::array<std::string_view, 7> devices = {"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"};
/// Names of devices that a digit follows, a superscript one, too.
constexpr std::array<std::string_view, 2> numberedDevices = {"com", "lpt"};

/// Windows takes the superscript digits of its old code pages, too.
bool isDigit(std::string_view text) {
    return (text.size() == 1 && text.front() >= '0' && text.front() <= '9') || text == "\u00B9" || text == "\u00B2" ||
           text == "\u00B3";
}

/// Of a folder of a name, or of the file that it ends with.
std::string whyPartIsUnsafe(std::string_view part) {
    constexpr std::size_t longestPart = 255;
    if (part.empty()) {
        return "it has a folder without a name";
    }
    if (part == "." || part == "..") {
        return "it has the folder '" + std::string(part) + "'";
    }
    if (part.size() > longestPart) {
        return "a part of it is longer than 255 bytes";
    }
    if (isDeviceName(part)) {
        return "Windows takes '" + std::string(part) + "' for a device";
    }
    return isUnportableName(part) ? "Windows cannot have a file called '" + std::string(part) + "'" : std::string();
}

} // namespace

std::string lowerCaseOf(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), lowerCase);
    return lower;
}

std::string foldedCaseOf(std::string_view text) {
    std::string folded;
    const char* position = text.data();
    const char* const end = position + text.size();
    while (position != end) {
        const char* const begin = position;
        const code_point character = utf_traits<char>::decode(position, end);
        if (character == boost::locale::utf::illegal || character == boost::locale::utf::incomplete) {
            folded.append(begin, position);
            continue;
        }
        // Some letters have two lower cases, such as the sigma: the upper case comes first.
        const code_point upper = boost::spirit::ucd::to_uppercase(character);
        utf_traits<char>::encode(boost::spirit::ucd::to_lowercase(upper), std::back_inserter(folded));
    }
    return folded;
}

bool isUtf8(std::string_view text) {
    const char* position = text.data();
    const char* const end = position + text.size();
    while (position != end) {
        const code_point character = utf_traits<char>::decode(position, end);
        if (character == boost::locale::utf::illegal || character == boost::locale::utf::incomplete) {
            return false;
        }
    }
    return true;
}

std::string hiddenCharacterOf(std::string_view text) {
    const char* position = text.data();
    const char* const end = position + text.size();
    while (position != end) {
        const code_point character = utf_traits<char>::decode(position, end);
        if (isHidden(character)) {
            return nameOf(character);
        }
    }
    return {};
}

bool isDeviceName(std::string_view name) {
    name = name.substr(0, name.find_first_of(".:"));
    name = name.substr(0, name.find_last_not_of(' ') + 1);
    const std::string word = lowerCaseOf(name);
    const bool isNumbered =
        std::any_of(numberedDevices.begin(), numberedDevices.end(), [&word](std::string_view device) {
            return word.starts_with(device) && isDigit(std::string_view(word).substr(device.size()));
        });
    return isNumbered || std::find(devices.begin(), devices.end(), word) != devices.end();
}

bool isUnportableName(std::string_view name) {
    if (name.empty() || name == "." || name == "..") {
        return false;
    }
    return name.ends_with('.') || name.ends_with(' ') || name.find_first_of("<>:\"|?*") != std::string_view::npos;
}

std::string whyUnsafe(std::string_view name) {
    if (!isUtf8(name)) {
        return "it is not UTF-8";
    }
    if (const std::string character = hiddenCharacterOf(name); !character.empty()) {
        return "it has the character " + character + ", which does not show as what it is";
    }
    if (name.find('\\') != std::string_view::npos) {
        return R"(it has a "\")";
    }
    for (;;) {
        const std::string_view part = name.substr(0, name.find('/'));
        if (std::string why = whyPartIsUnsafe(part); !why.empty() || part.size() == name.size()) {
            return why;
        }
        name.remove_prefix(part.size() + 1);
    }
}
