#include "Warnings.h"

#include "EntryMatching.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace {

/// How many earlier entries of one board type and address an entry is held against, to keep the work linear.
constexpr std::size_t mostCandidates = 128;

/// The sets of values that entries allow, each known by a number.
class ValueSets {
public:
    /// The number of the set of the allowed values.
    [[nodiscard]] std::uint32_t numberOf(const KvCAllowedValues& allowed);
    /// True when set `part` is empty or every value of it is in set `whole`.
    [[nodiscard]] bool isWithin(std::uint32_t part, std::uint32_t whole) const;
    [[nodiscard]] bool isEmpty(std::uint32_t set) const { return sets_[set]->empty(); }

private:
    /// Sorted, without repeated values.
    using Values = std::vector<KvTComparedValue>;

    std::map<Values, std::uint32_t> numbers_;
    std::vector<const Values*> sets_;
};

/// The values that a selection allows for a board of its types, as the numbers of sets in the order of
/// comparedProperties.
using Conditions = std::array<std::uint32_t, comparedProperties.size()>;

/// Tells the conditions of selections; those that the selections of an entry share are worked out once.
class EntryConditions {
public:
    /// Begins with another entry.
    void beginEntry() { shared_ = {}; }
    [[nodiscard]] Conditions of(const KvTEntrySelection& selection);
    [[nodiscard]] const ValueSets& sets() const { return sets_; }

private:
    ValueSets sets_;
    /// Numbers of the entry's own sets; nothing as long as they are not worked out.
    std::array<std::optional<std::uint32_t>, std::tuple_size_v<Conditions>> shared_;
};

std::uint32_t ValueSets::numberOf(const KvCAllowedValues& allowed) {
    Values values;
    for (std::size_t index = 0; index < allowed.size(); ++index) {
        if (const std::optional<KvTComparedValue> value = allowed.at(index)) {
            values.push_back(*value);
        }
    }
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    const auto [found, isNew] = numbers_.try_emplace(std::move(values), static_cast<std::uint32_t>(sets_.size()));
    if (isNew) {
        sets_.push_back(&found->first);
    }
    return found->second;
}

bool ValueSets::isWithin(std::uint32_t part, std::uint32_t whole) const {
    if (part == whole || isEmpty(part)) {
        return true;
    }
    const Values& inner = *sets_[part];
    const Values& outer = *sets_[whole];
    // The least and the greatest value mostly decide already.
    return !outer.empty() && inner.front() >= outer.front() && inner.back() <= outer.back() &&
           std::includes(outer.begin(), outer.end(), inner.begin(), inner.end());
}

Conditions EntryConditions::of(const KvTEntrySelection& selection) {
    Conditions conditions{};
    for (std::size_t index = 0; index < conditions.size(); ++index) {
        const KvCAllowedValues& allowed = selection.*comparedProperties[index].allowed;
        if (!allowed.isShared()) {
            conditions[index] = sets_.numberOf(allowed);
            continue;
        }
        if (!shared_[index]) {
            shared_[index] = sets_.numberOf(allowed);
        }
        conditions[index] = *shared_[index];
    }
    return conditions;
}

/// An element of "boards", or the entry itself, for one board type.
struct Choice {
    /// Board type and address.
    std::string place;
    Conditions conditions{};
};

/// The same for an earlier entry.
struct Candidate {
    std::uint32_t entry = 0;
    Conditions conditions{};
};

/// Tells places of different board types or addresses apart.
std::string placeOf(std::string_view boardType, const KvTEntrySelection& selection) {
    std::string place = std::to_string(boardType.size()).append(":").append(boardType);
    const KvTEntryAddress& address = selection.address;
    return address.targetPath ? place.append("/").append(*address.targetPath)
                              : place.append("#").append(std::to_string(address.id.value_or(0)));
}

bool isEmptyArray(KvNJson::jsonView value) {
    return value.is_array() && value.size() == 0;
}

/// Goes through the entries in their order and holds each against those before it.
class ShadowRules {
public:
    ShadowRules(const KvTCheckedArchive& checked, KvCFindingList& findings) : checked_(checked), findings_(findings) {}

    void check(const KvTArchiveFile& file) {
        const std::vector<Choice> choices = choicesOf(file);
        std::vector<std::optional<std::uint32_t>> covering;
        covering.reserve(choices.size());
        for (const Choice& choice : choices) {
            covering.push_back(coveringEntry(choice));
        }
        const bool isShadowed = !choices.empty() && std::all_of(covering.begin(), covering.end(),
                                                                [](const auto& entry) { return entry.has_value(); });
        if (isShadowed) {
            warnOfShadow(file, *covering.front());
        }
        for (std::size_t index = 0; index < choices.size(); ++index) {
            std::vector<Candidate>& candidates = candidates_[choices[index].place];
            if (!covering[index] && candidates.size() < mostCandidates) {
                candidates.push_back({file.descriptionIndex, choices[index].conditions});
            }
        }
    }

private:
    /// What the entry offers to each of its board types. Left out is what matches nothing.
    std::vector<Choice> choicesOf(const KvTArchiveFile& file) {
        std::vector<Choice> choices;
        conditions_.beginEntry();
        for (std::size_t index = 0; index < file.selections.size(); ++index) {
            const KvTEntrySelection& selection = file.selections[index];
            if (selection.boardTypes.empty() && !isEmptyArray(selection.writtenBoardTypes)) {
                warnOfUnreachable(file, index);
            }
            const Conditions conditions = conditions_.of(selection);
            const bool matches = std::none_of(conditions.begin(), conditions.end(),
                                              [this](std::uint32_t set) { return conditions_.sets().isEmpty(set); });
            for (const std::string_view boardType : selection.boardTypes) {
                if (matches) {
                    choices.push_back({placeOf(boardType, selection), conditions});
                }
            }
        }
        return choices;
    }

    /// An earlier entry that takes whatever `choice` could.
    std::optional<std::uint32_t> coveringEntry(const Choice& choice) const {
        const auto found = candidates_.find(choice.place);
        if (found == candidates_.end()) {
            return std::nullopt;
        }
        for (const Candidate& candidate : found->second) {
            if (covers(candidate.conditions, choice.conditions)) {
                return candidate.entry;
            }
        }
        return std::nullopt;
    }

    bool covers(const Conditions& whole, const Conditions& part) const {
        for (std::size_t index = 0; index < part.size(); ++index) {
            if (!conditions_.sets().isWithin(part[index], whole[index])) {
                return false;
            }
        }
        return true;
    }

    void warnOfUnreachable(const KvTArchiveFile& file, std::size_t board) {
        findings_.warn(KvECheckRule::unreachableBoard, checked_.outlineOf(file).find("boards").at(board),
                       "This element of \"boards\" is never chosen: an earlier one has its board types, and of each "
                       "board type only the first element counts.");
    }

    void warnOfShadow(const KvTArchiveFile& file, std::uint32_t earlier) {
        const std::string other = checked_.entries[earlier].value.path();
        if (file.hasTargetPath) {
            findings_.warn(KvECheckRule::sameTargetPath, checked_.outlineOf(file),
                           "Wherever this entry is written, " + other + " is written to the same file.");
        } else {
            findings_.warn(KvECheckRule::shadowedEntry, checked_.outlineOf(file),
                           "This entry never updates anything: earlier entries, such as " + other +
                               ", take all of its elements.");
        }
    }

    const KvTCheckedArchive& checked_;
    KvCFindingList& findings_;
    EntryConditions conditions_;
    std::unordered_map<std::string, std::vector<Candidate>> candidates_;
};

} // namespace

void warnOfShadows(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    ShadowRules rules(checked, findings);
    for (const KvTArchiveFile& file : checked.archive.files()) {
        rules.check(file);
    }
}
