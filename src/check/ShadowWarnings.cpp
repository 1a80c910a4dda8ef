#include "Warnings.h"

#include "EntryConditions.h"
#include "EntryMatching.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

/// How many earlier entries of one board type and address an entry is held against, to keep the work linear.
constexpr std::size_t mostCandidates = 128;

/// An element of "boards", or the entry itself, for one board type.
struct Choice {
    /// Board type and address.
    std::string place;
    KvTConditions conditions{};
};

/// The same for an earlier entry.
struct Candidate {
    std::uint32_t entry = 0;
    KvTConditions conditions{};
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
            const KvTConditions conditions = conditions_.of(selection);
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

    bool covers(const KvTConditions& whole, const KvTConditions& part) const {
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
    KvCEntryConditions conditions_;
    std::unordered_map<std::string, std::vector<Candidate>> candidates_;
};

} // namespace

void warnOfShadows(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    ShadowRules rules(checked, findings);
    for (const KvTArchiveFile& file : checked.archive.files()) {
        rules.check(file);
    }
}
