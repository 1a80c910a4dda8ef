#include "ArchiveEntries.h"
#include "KvTComparison.h"
#include "MessageCapture.h"
#include "ReleasedReading.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace KvNReflasher {

namespace {

/// An element, or a file, on boards of a type.
struct Place {
    std::string boardType;
    std::optional<std::uint32_t> elementId;
    std::string targetPath;

    // NOLINTNEXTLINE(modernize-use-nullptr): the 0 that clang-tidy sees is the compiler's
    auto operator<=>(const Place&) const = default;
};

std::string textOf(const KvTComparedValue& value) {
    if (const auto* const number = std::get_if<std::uint64_t>(&value)) {
        return std::to_string(*number);
    }
    const auto* const text = std::get_if<std::string_view>(&value);
    return text != nullptr ? std::string(*text) : "none";
}

struct Rule {
    const char* name;
    KvCAllowedValues KvTEntrySelection::*allowed;
};

constexpr std::array<Rule, 4> ruleTable{{{"variant ", &KvTEntrySelection::boardVariant},
                                         {"board id ", &KvTEntrySelection::boardId},
                                         {"hw ", &KvTEntrySelection::hwCompatibilityId},
                                         {"sw ", &KvTEntrySelection::swCompatibilityId}}};

std::string rulesOf(const KvTEntrySelection& selection) {
    std::string rules;
    for (const Rule& rule : ruleTable) {
        const KvCAllowedValues& allowed = selection.*rule.allowed;
        if (!allowed.written().is_valid()) {
            continue;
        }
        rules.append(rules.empty() ? "" : ", ").append(rule.name);
        for (std::size_t index = 0; index < allowed.size(); ++index) {
            rules.append(index == 0 ? "" : "|").append(textOf(allowed.at(index).value_or(KvTComparedValue())));
        }
    }
    return rules;
}

/// An archive as places with their entries, in the order of the description.
class PlacedArchive {
public:
    PlacedArchive(const KvTArchivePlace& place, const KvTReleaseOptions& release) {
        options_.archiveFolder = place.folder;
        options_.descriptionFileName = place.descriptionFileName;
        options_.mode = showArchiveContent;
        const KvCMessageCapture messages;
        KvCFirmwareArchive archive(messages.writer(), options_);
        KvCReleasedReading reading(messages.writer(), options_, release);
        if (!reading.read(archive, KvESealedFiles::verified)) {
            content_.verdict = {.failure = KvEFailure::archive, .message = reading.refusal()};
        }
        content_.identity = archiveIdentityOf(archive.info());
        content_.entries = archiveEntriesOf(archive.files());
        content_.messages = messages.text();
        content_.release = reading.release();
        for (std::size_t index = 0; content_.verdict.isSuccess() && index < archive.files().size(); ++index) {
            addEntry(archive.files()[index], content_.entries[index]);
        }
    }

    [[nodiscard]] const KvTArchiveContent& content() const { return content_; }
    [[nodiscard]] const std::vector<Place>& places() const { return places_; }
    [[nodiscard]] std::vector<KvTComparedEntry> entriesAt(const Place& place) const {
        const auto found = entries_.find(place);
        return found != entries_.end() ? found->second : std::vector<KvTComparedEntry>();
    }

private:
    void addEntry(const KvTArchiveFile& file, const KvTArchiveEntry& entry) {
        for (const KvTEntrySelection& selection : file.selections) {
            for (const std::string_view boardType : selection.boardTypes) {
                Place place{std::string(boardType), std::nullopt, {}};
                if (selection.address.targetPath) {
                    place.targetPath = *selection.address.targetPath;
                } else {
                    place.elementId = selection.address.id;
                }
                auto [found, isNew] = entries_.try_emplace(place);
                if (isNew) {
                    places_.push_back(place);
                }
                found->second.push_back({entry, rulesOf(selection)});
            }
        }
    }

    KvTOptions options_{};
    KvTArchiveContent content_;
    std::vector<Place> places_;
    std::map<Place, std::vector<KvTComparedEntry>> entries_;
};

bool isLower(const KvTVersion& one, const KvTVersion& other) {
    KvCVersion version;
    KvCVersion otherVersion;
    version.setByULong64(one.number);
    otherVersion.setByULong64(other.number);
    return version < otherVersion;
}

KvEChange changeOf(const KvTArchiveDifference& place) {
    if (!place.before || !place.after) {
        return place.after ? KvEChange::added : KvEChange::removed;
    }
    const std::optional<KvTVersion>& before = place.before->entry.version;
    const std::optional<KvTVersion>& after = place.after->entry.version;
    if (before && after && before->number != after->number) {
        return isLower(*before, *after) ? KvEChange::up : KvEChange::down;
    }
    const bool isSame = !place.isContentChanged && !place.isSequenceChanged && !place.areRulesChanged &&
                        !place.isModeChanged && before.has_value() == after.has_value();
    return isSame ? KvEChange::same : KvEChange::changed;
}

KvTArchiveDifference differenceAt(const Place& place, std::optional<KvTComparedEntry> before,
                                  std::optional<KvTComparedEntry> after) {
    KvTArchiveDifference difference;
    difference.boardType = place.boardType;
    difference.elementId = place.elementId;
    difference.targetPath = place.targetPath;
    difference.before = std::move(before);
    difference.after = std::move(after);
    if (difference.before && difference.after) {
        const KvTArchiveEntry& older = difference.before->entry;
        const KvTArchiveEntry& newer = difference.after->entry;
        difference.isContentChanged = !older.checksumCrc32 || older.checksumCrc32 != newer.checksumCrc32;
        difference.isSequenceChanged = older.sequence != newer.sequence;
        difference.isModeChanged = older.mode != newer.mode;
        difference.areRulesChanged = difference.before->rules != difference.after->rules;
    }
    difference.change = changeOf(difference);
    return difference;
}

/// Pairs the entries for one place: those of the same rules, then the others in their order.
void comparePlace(const Place& place, std::vector<KvTComparedEntry> before, std::vector<KvTComparedEntry> after,
                  std::vector<KvTArchiveDifference>& differences) {
    const auto takeSameRules = [&before](const std::string& rules) -> std::optional<KvTComparedEntry> {
        const auto found = std::find_if(before.begin(), before.end(),
                                        [&](const KvTComparedEntry& entry) { return entry.rules == rules; });
        if (found == before.end()) {
            return std::nullopt;
        }
        std::optional<KvTComparedEntry> taken = std::move(*found);
        before.erase(found);
        return taken;
    };
    std::vector<std::optional<KvTComparedEntry>> partners;
    partners.reserve(after.size());
    for (const KvTComparedEntry& entry : after) {
        partners.push_back(takeSameRules(entry.rules));
    }
    for (std::size_t index = 0; index < after.size(); ++index) {
        if (!partners[index] && !before.empty()) {
            partners[index] = std::move(before.front());
            before.erase(before.begin());
        }
        differences.push_back(differenceAt(place, std::move(partners[index]), std::move(after[index])));
    }
    for (KvTComparedEntry& entry : before) {
        differences.push_back(differenceAt(place, std::move(entry), std::nullopt));
    }
}

} // namespace

KvTComparison compareArchives(const KvTArchivePlace& before, const KvTArchivePlace& after,
                              const KvTReleaseOptions& release) {
    const PlacedArchive older(before, release);
    const PlacedArchive newer(after, release);
    KvTComparison comparison;
    comparison.before = older.content();
    comparison.after = newer.content();
    comparison.verdict = comparison.before.verdict;
    comparison.verdict.add(comparison.after.verdict);
    if (!comparison.verdict.isSuccess()) {
        return comparison;
    }
    for (const Place& place : newer.places()) {
        comparePlace(place, older.entriesAt(place), newer.entriesAt(place), comparison.places);
    }
    for (const Place& place : older.places()) {
        if (newer.entriesAt(place).empty()) {
            comparePlace(place, older.entriesAt(place), {}, comparison.places);
        }
    }
    return comparison;
}

} // namespace KvNReflasher
