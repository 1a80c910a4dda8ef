#include "Warnings.h"

#include "FileNames.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace {

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
