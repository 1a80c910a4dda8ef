#include "Warnings.h"

#include "KvCVersion.h"

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 5> matchedKeys = {"boardType", "boardVariant", "boardId", "hwCompatibilityId",
                                                         "swCompatibilityId"};
constexpr std::array<std::string_view, 3> storedKeys = {"id", "checksumCrc32", "sequence"};
constexpr std::array<std::string_view, 3> comparedKeys = {"boardId", "hwCompatibilityId", "swCompatibilityId"};

void warnOfEmptyArray(KvCOutlineValue value, const char* consequence, KvCFindingList& findings) {
    if (value.kind() == KvEJsonKind::array && value.size() == 0) {
        const bool isRequired = value.key() == "files" || value.key() == "boardType";
        findings.warn(KvECheckRule::emptyArray, value,
                      "The array " + inQuotes(value.key()) + " is empty: " + consequence + ".",
                      isRequired ? "Give it an element." : "Give it an element, or leave it out.");
    }
}

/// True for a number that the reader takes, but of which only 32 bits can be used.
bool isTooLarge(KvCOutlineValue value) {
    return value.unsignedNumber().value_or(0) > std::numeric_limits<std::uint32_t>::max();
}

void warnOfLargeNumber(KvCOutlineValue value, const char* consequence, KvCFindingList& findings) {
    if (isTooLarge(value)) {
        findings.warn(KvECheckRule::numberTooLarge, value,
                      "The number " + std::string(value.text()) + " has more than 32 bits: " + consequence + ".");
    }
}

void warnOfLargeNumbers(KvCOutlineValue object, KvCFindingList& findings) {
    for (const std::string_view key : storedKeys) {
        warnOfLargeNumber(object.find(key), "only its lowest 32 count", findings);
    }
    for (const std::string_view key : comparedKeys) {
        const KvCOutlineValue value = object.find(key);
        warnOfLargeNumber(value, "it matches nothing", findings);
        for (std::size_t index = 0; value.kind() == KvEJsonKind::array && index < value.size(); ++index) {
            warnOfLargeNumber(value.at(index), "it matches nothing", findings);
        }
    }
}

void warnOfVersion(KvCOutlineValue value, KvCFindingList& findings) {
    if (value.kind() != KvEJsonKind::text) {
        return;
    }
    const std::string written(value.text());
    const KvCVersion version(written.c_str());
    const std::string printed(version.getAsString().view());
    if (version != KvCVersion() && written.find('\0') == std::string::npos && printed != written) {
        findings.warn(KvECheckRule::versionSpelling, value,
                      "The version " + inQuotes(written) + " prints as " + printed + ".", inQuotes(printed));
    }
}

void warnOfEmptyVariant(KvCOutlineValue value, KvCFindingList& findings) {
    if (value.kind() == KvEJsonKind::text && value.text().empty()) {
        findings.warn(KvECheckRule::emptyVariant, value, R"(The board variant "" matches no board.)");
    }
    for (std::size_t index = 0; value.kind() == KvEJsonKind::array && index < value.size(); ++index) {
        warnOfEmptyVariant(value.at(index), findings);
    }
}

void warnOfUpgradeToNothing(KvCOutlineValue entry, KvCFindingList& findings) {
    const KvCOutlineValue version = entry.find("version");
    if (entry.find("mode").text() == "upgrade" && version.kind() == KvEJsonKind::null) {
        findings.warn(KvECheckRule::upgradeWithoutVersion, version,
                      R"(An entry of the mode "upgrade" that has no version is never greater than what is installed.)");
    }
}

} // namespace

void warnOfValues(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    const KvCOutlineValue root = checked.outline.root();
    warnOfVersion(root.find("info").find("formatVersion"), findings);
    warnOfVersion(root.find("info").find("archiveVersion"), findings);
    warnOfEmptyArray(root.find("files"), "the archive updates nothing", findings);
    forEachEntryObject(checked, [&findings](KvCOutlineValue object) {
        for (const std::string_view key : matchedKeys) {
            warnOfEmptyArray(object.find(key), "nothing can match", findings);
        }
        warnOfLargeNumbers(object, findings);
        warnOfEmptyVariant(object.find("boardVariant"), findings);
        warnOfUpgradeToNothing(object, findings);
        warnOfVersion(object.find("version"), findings);
    });
}
