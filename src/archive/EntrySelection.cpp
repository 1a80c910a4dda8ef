#include "EntrySelection.h"

#include <unordered_set>

namespace {

using KvNJson::jsonView;

/// Nothing for what is neither null nor a text nor an unsigned number.
std::optional<KvTComparedValue> comparedValueOf(jsonView scalar) {
    if (scalar.is_string()) {
        return scalar.get_string();
    }
    if (scalar.is_number_unsigned()) {
        return scalar.get_unsigned();
    }
    return scalar.is_null() ? std::optional(KvTComparedValue()) : std::nullopt;
}

/// Adds the board types to the selection that are not in `seen`, which receives them.
void addNewBoardTypes(KvTEntrySelection& selection, std::unordered_set<std::string_view>& seen) {
    forEachScalar(selection.writtenBoardTypes, [&](jsonView boardType) {
        if (boardType.is_string() && seen.insert(boardType.get_string()).second) {
            selection.boardTypes.emplace_back(boardType.get_string());
        }
    });
}

/// The values of `own`, an element of "boards" or the entry itself, completed by those of the entry.
KvTEntrySelection completed(const KvCEntryProperties& own, const KvCEntryProperties& entry) {
    const bool isEntry = &own == &entry;
    const auto allowed = [&](KvEProperty property, KvEAbsentValue absentValue) {
        const bool isOwn = !isEntry && own.has(property);
        return KvCAllowedValues((isOwn ? own : entry)[property], !isOwn, absentValue);
    };
    KvTEntrySelection selection;
    selection.writtenBoardTypes = own[KvEProperty::boardType];
    selection.boardVariant = allowed(KvEProperty::boardVariant, KvEAbsentValue::none);
    selection.boardId = allowed(KvEProperty::boardId, KvEAbsentValue::zero);
    selection.hwCompatibilityId = allowed(KvEProperty::hwCompatibilityId, KvEAbsentValue::zero);
    selection.swCompatibilityId = allowed(KvEProperty::swCompatibilityId, KvEAbsentValue::zero);
    selection.address = addressOf(own);
    selection.isAddressShared = isEntry || !selection.address.isGiven();
    if (!selection.address.isGiven()) {
        selection.address = addressOf(entry);
    }
    return selection;
}

} // namespace

std::optional<KvTComparedValue> KvCAllowedValues::at(std::size_t index) const {
    if (!written_.is_valid()) {
        return absentValue_ == KvEAbsentValue::none ? KvTComparedValue() : std::uint64_t{0};
    }
    return comparedValueOf(written_.is_array() ? written_.at(index) : written_);
}

KvTEntryAddress addressOf(const KvCEntryProperties& properties) {
    KvTEntryAddress address;
    if (const jsonView id = properties[KvEProperty::id]; id.is_number_unsigned()) {
        address.id = static_cast<std::uint32_t>(id.get_unsigned());
    }
    if (const jsonView path = properties[KvEProperty::targetPath]; path.is_string()) {
        address.targetPath = path.get_string();
    }
    return address;
}

KvCEntrySelections selectionsOf(const KvCEntryProperties& entry) {
    KvCEntrySelections selections;
    const jsonView boards = entry[KvEProperty::boards];
    const jsonView boardType = entry[KvEProperty::boardType];
    if (!boards.is_valid() && boardType.is_string()) {
        // Most entries are for one board type, which nothing can repeat.
        selections.push_back(completed(entry, entry));
        selections.back().boardTypes.emplace_back(boardType.get_string());
        return selections;
    }
    std::unordered_set<std::string_view> seen;
    const auto add = [&](const KvCEntryProperties& own) {
        selections.push_back(completed(own, entry));
        addNewBoardTypes(selections.back(), seen);
    };
    if (!boards.is_valid()) {
        add(entry);
        return selections;
    }
    selections.reserve(boards.size());
    for (std::size_t index = 0; index < boards.size(); ++index) {
        add(KvCEntryProperties(boards.at(index)));
    }
    return selections;
}
