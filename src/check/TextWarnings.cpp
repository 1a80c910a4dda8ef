#include "Warnings.h"

#include "Words.h"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace {

using boost::locale::utf::code_point;
using boost::locale::utf::utf_traits;

struct CharacterRange {
    code_point first;
    code_point last;
};

/// Control characters, and those that end a line, turn its direction or take no place.
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

/// The name of the first character that does not show; empty if there is none. `text` is UTF-8.
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

/// Names of devices, whatever is appended behind a dot or colon.
constexpr std::array<std::string_view, 6> devices = {"con", "prn", "aux", "nul", "conin$", "conout$"};
/// Names of devices that a digit follows.
constexpr std::array<std::string_view, 2> numberedDevices = {"com", "lpt"};

bool isDeviceName(std::string_view name) {
    name = name.substr(0, name.find_first_of(".:"));
    name = name.substr(0, name.find_last_not_of(' ') + 1);
    const std::string word = lowerCaseOf(name);
    const bool isNumbered = !word.empty() && word.back() >= '0' && word.back() <= '9' &&
                            std::find(numberedDevices.begin(), numberedDevices.end(),
                                      std::string_view(word).substr(0, word.size() - 1)) != numberedDevices.end();
    return isNumbered || std::find(devices.begin(), devices.end(), word) != devices.end();
}

/// Separators and control characters are judged elsewhere.
bool isUnportableName(std::string_view name) {
    if (name.empty() || name == "." || name == "..") {
        return false;
    }
    return name.ends_with('.') || name.ends_with(' ') || name.find_first_of("<>:\"|?*") != std::string_view::npos;
}

/// The first part of `path` that `test` holds for; empty if there is none.
std::string_view partWith(std::string_view path, bool (&test)(std::string_view)) {
    while (!path.empty()) {
        const std::string_view part = path.substr(0, path.find_first_of("/\\"));
        if (test(part)) {
            return part;
        }
        path.remove_prefix(std::min(path.size(), part.size() + 1));
    }
    return {};
}

void warnOfPath(KvCOutlineValue path, KvCFindingList& findings) {
    if (path.kind() != KvEJsonKind::text) {
        return;
    }
    if (const std::string_view part = partWith(path.text(), isDeviceName); !part.empty()) {
        findings.warn(KvECheckRule::reservedName, path, "Windows takes " + inQuotes(part) + " for a device.");
    }
    if (const std::string_view part = partWith(path.text(), isUnportableName); !part.empty()) {
        findings.warn(KvECheckRule::unportableName, path, "Windows cannot have a file called " + inQuotes(part) + ".");
    }
}

/// Of a text, or of each text of an array. `key` is that of the member.
void warnOfHiddenCharacters(KvCOutlineValue value, std::string_view key, KvCFindingList& findings) {
    if (value.kind() == KvEJsonKind::text) {
        if (const std::string character = hiddenCharacterOf(value.text()); !character.empty()) {
            findings.warn(KvECheckRule::hiddenCharacter, value,
                          "The text of " + inQuotes(key) + " has the character " + character +
                              ", which does not show as what it is.");
        }
    }
    for (std::size_t index = 0; value.kind() == KvEJsonKind::array && index < value.size(); ++index) {
        warnOfHiddenCharacters(value.at(index), key, findings);
    }
}

constexpr std::array<std::string_view, 3> infoTexts = {"productName", "archiveVariant", "archiveName"};
constexpr std::array<std::string_view, 3> entryTexts = {"targetPath", "boardType", "boardVariant"};

} // namespace

void warnOfTexts(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    const KvCOutlineValue info = checked.outline.root().find("info");
    for (const std::string_view key : infoTexts) {
        warnOfHiddenCharacters(info.find(key), key, findings);
    }
    for (const KvTOutlinedEntry& entry : checked.entries) {
        if (!entry.isSkipped) {
            warnOfHiddenCharacters(entry.value.find("name"), "name", findings);
            warnOfPath(entry.value.find("name"), findings);
        }
    }
    forEachEntryObject(checked, [&findings](KvCOutlineValue object) {
        for (const std::string_view key : entryTexts) {
            warnOfHiddenCharacters(object.find(key), key, findings);
        }
        warnOfPath(object.find("targetPath"), findings);
    });
}
