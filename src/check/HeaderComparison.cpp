#include "HeaderComparison.h"

#include <array>
#include <limits>
#include <optional>
#include <utility>
#include <variant>

namespace {

std::string textOf(const KvTIdRange& range) {
    if (range.highest == unknownValue) {
        return "at least " + std::to_string(range.lowest);
    }
    if (range.lowest == unknownValue) {
        return "at most " + std::to_string(range.highest);
    }
    return std::to_string(range.lowest) + (range.lowest == range.highest ? "" : " to " + std::to_string(range.highest));
}

/// The identifiers of one kind, in headers and in entries.
struct IdKind {
    KvEProperty property;
    const char* name;
    KvTIdRange (KvTUpdateFileHeader::*range)() const;
    KvCAllowedValues KvTEntrySelection::*allowed;
};

constexpr std::array idKinds = {IdKind{KvEProperty::hwCompatibilityId, "hardware",
                                       &KvTUpdateFileHeader::hwCompatibilityIds, &KvTEntrySelection::hwCompatibilityId},
                                IdKind{KvEProperty::swCompatibilityId, "software",
                                       &KvTUpdateFileHeader::swCompatibilityIds,
                                       &KvTEntrySelection::swCompatibilityId}};

/// The index of the first allowed identifier that is not in the range. What no element can have is not looked at.
std::optional<std::size_t> firstOutside(const KvTIdRange& range, const KvCAllowedValues& allowed) {
    for (std::size_t index = 0; index < allowed.size(); ++index) {
        const std::optional<KvTComparedValue> value = allowed.at(index);
        const auto* const id = value ? std::get_if<std::uint64_t>(&*value) : nullptr;
        if (id != nullptr && *id <= std::numeric_limits<std::uint32_t>::max() && !range.contains(*id)) {
            return index;
        }
    }
    return std::nullopt;
}

void addExcluded(const KvTIdRange& range, const IdKind& kind, const KvTArchiveFile& file,
                 std::vector<KvTExcludedId>& excluded) {
    bool isSharedDone = false;
    for (std::size_t index = 0; index < file.selections.size(); ++index) {
        const KvCAllowedValues& allowed = file.selections[index].*kind.allowed;
        if (allowed.isShared() && std::exchange(isSharedDone, true)) {
            continue;
        }
        if (const std::optional<std::size_t> item = firstOutside(range, allowed)) {
            excluded.push_back({.property = kind.property,
                                .kind = kind.name,
                                .range = textOf(range),
                                .id = std::get<std::uint64_t>(*allowed.at(*item)),
                                .selection = index,
                                .isShared = allowed.isShared(),
                                .item = *item});
        }
    }
}

} // namespace

std::vector<KvTExcludedId> excludedIds(const KvTUpdateFileHeader& header, const KvTArchiveFile& file) {
    std::vector<KvTExcludedId> excluded;
    for (const IdKind& kind : idKinds) {
        const KvTIdRange range = (header.*kind.range)();
        if (range.isStated()) {
            addExcluded(range, kind, file, excluded);
        }
    }
    return excluded;
}
