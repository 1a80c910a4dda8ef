#include "Warnings.h"

#include "EntryProperties.h"
#include "NearestWord.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace {

using Keys = std::span<const std::string_view>;

constexpr std::string_view commentKey = "comment";
constexpr std::array<std::string_view, 3> rootKeys = {"info", "files", "$schema"};
constexpr std::array<std::string_view, 5> infoKeys = {"formatVersion", "archiveVersion", "productName",
                                                      "archiveVariant", "archiveName"};
/// Properties that only the entry itself has. Those that the reader refuses in an element of "boards" are not among
/// them.
constexpr std::array entryOnly = {KvEProperty::name, KvEProperty::sequence, KvEProperty::featureLevel,
                                  KvEProperty::boards};

/// The keys of entries, or of elements of "boards".
struct EntryKeys {
    std::vector<std::string_view> ofEntry;
    std::vector<std::string_view> ofBoard;

    EntryKeys() {
        for (std::size_t index = 0; index < propertyCount; ++index) {
            const auto property = static_cast<KvEProperty>(index);
            ofEntry.emplace_back(propertyKey(property));
            if (std::find(entryOnly.begin(), entryOnly.end(), property) == entryOnly.end()) {
                ofBoard.emplace_back(propertyKey(property));
            }
        }
    }
};

bool contains(Keys keys, std::string_view key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

void warnOfUnknownKey(KvCOutlineValue member, Keys known, KvCFindingList& findings) {
    const std::string_view nearest = nearestWord(member.key(), known);
    findings.warnAtKey(KvECheckRule::unknownKey, member,
                       "The key " + inQuotes(member.key()) + " is not known and has no effect.",
                       nearest.empty() ? std::string("Remove it; remarks go into \"comment\".")
                                       : "Did you mean " + inQuotes(nearest) + "?");
}

/// `elsewhere` are keys that have an effect in the entry around the object.
void warnOfUnknownKeys(KvCOutlineValue object, Keys known, Keys elsewhere, KvCFindingList& findings) {
    if (object.kind() != KvEJsonKind::object) {
        return;
    }
    for (std::size_t index = 0; index < object.size(); ++index) {
        const KvCOutlineValue member = object.at(index);
        if (member.key() == commentKey || contains(known, member.key())) {
            continue;
        }
        if (contains(elsewhere, member.key())) {
            findings.warnAtKey(KvECheckRule::misplacedKey, member,
                               "The key " + inQuotes(member.key()) + " has no effect in an element of \"boards\".");
        } else {
            warnOfUnknownKey(member, known, findings);
        }
    }
}

void warnOfUnknownEntryKeys(KvCOutlineValue entry, const EntryKeys& keys, KvCFindingList& findings) {
    warnOfUnknownKeys(entry, keys.ofEntry, {}, findings);
    const KvCOutlineValue boards = entry.find("boards");
    for (std::size_t board = 0; boards.kind() == KvEJsonKind::array && board < boards.size(); ++board) {
        warnOfUnknownKeys(boards.at(board), keys.ofBoard, keys.ofEntry, findings);
    }
}

void warnOfRepeatedKeys(KvCOutlineValue object, KvCFindingList& findings) {
    std::unordered_set<std::string_view> seen;
    for (std::size_t index = 0; index < object.size(); ++index) {
        const KvCOutlineValue member = object.at(index);
        if (!seen.insert(member.key()).second) {
            findings.warnAtKey(KvECheckRule::duplicateKey, member,
                               "The key " + inQuotes(member.key()) +
                                   " is given once more; only its last value counts.");
        }
    }
}

} // namespace

void warnOfKeys(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    const KvCOutlineValue root = checked.outline.root();
    warnOfUnknownKeys(root, rootKeys, {}, findings);
    warnOfUnknownKeys(root.find("info"), infoKeys, {}, findings);
    const EntryKeys keys;
    for (const KvTOutlinedEntry& entry : checked.entries) {
        // Entries for newer tools have keys that this one does not know.
        if (!entry.isSkipped) {
            warnOfUnknownEntryKeys(entry.value, keys, findings);
        }
    }
    checked.outline.forEachValue([&findings](KvCOutlineValue value) {
        if (value.kind() == KvEJsonKind::object && value.size() > 1) {
            warnOfRepeatedKeys(value, findings);
        }
    });
}
