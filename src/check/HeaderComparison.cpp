#include "HeaderComparison.h"

#include <array>
#include <limits>
#include <optional>
#include <utility>
#include <variant>

namespace {

/// Identifiers from `lowest` to `highest`; unknownValue for an end that is not stated.
struct IdRange {
    std::uint32_t lowest = unknownValue;
    std::uint32_t highest = unknownValue;

    /// What leaves its identifiers out has zeros in their place.
    [[nodiscard]] bool isStated() const {
        const bool isUnknown = lowest == unknownValue && highest == unknownValue;
        return !isUnknown && (lowest != 0 || highest != 0);
    }

    [[nodiscard]] bool contains(std::uint64_t id) const {
        return (lowest == unknownValue || id >= lowest) && (highest == unknownValue || id <= highest);
    }

    [[nodiscard]] std::string text() const {
        if (highest == unknownValue) {
            return "at least " + std::to_string(lowest);
        }
        if (lowest == unknownValue) {
            return "at most " + std::to_string(highest);
        }
        return std::to_string(lowest) + (lowest == highest ? "" : " to " + std::to_string(highest));
    }
};

/// The identifiers of one kind, in headers and in entries.
struct IdKind {
    KvEProperty property;
    const char* name;
    std::uint32_t KvTUpdateFileHeader::*lowest;
    std::uint32_t KvTUpdateFileHeader::*highest;
    KvCAllowedValues KvTEntrySelection::*allowed;
};

constexpr std::array idKinds = {
    IdKind{KvEProperty::hwCompatibilityId, "hardware", &KvTUpdateFileHeader::minHwCompatibilityId,
           &KvTUpdateFileHeader::maxHwCompatibilityId, &KvTEntrySelection::hwCompatibilityId},
    IdKind{KvEProperty::swCompatibilityId, "software", &KvTUpdateFileHeader::minSwCompatibilityId,
           &KvTUpdateFileHeader::maxSwCompatibilityId, &KvTEntrySelection::swCompatibilityId}};

/// The index of the first allowed identifier that is not in the range. What no element can have is not looked at.
std::optional<std::size_t> firstOutside(const IdRange& range, const KvCAllowedValues& allowed) {
    for (std::size_t index = 0; index < allowed.size(); ++index) {
        const std::optional<KvTComparedValue> value = allowed.at(index);
        const auto* const id = value ? std::get_if<std::uint64_t>(&*value) : nullptr;
        if (id != nullptr && *id <= std::numeric_limits<std::uint32_t>::max() && !range.contains(*id)) {
            return index;
        }
    }
    return std::nullopt;
}

void addExcluded(const IdRange& range, const IdKind& kind, const KvTArchiveFile& file,
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
                                .range = range.text(),
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
        const IdRange range{header.*kind.lowest, header.*kind.highest};
        if (range.isStated()) {
            addExcluded(range, kind, file, excluded);
        }
    }
    return excluded;
}
