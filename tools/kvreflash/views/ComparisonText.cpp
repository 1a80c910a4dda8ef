#include "ComparisonText.h"

#include "ReleaseText.h"
#include "TextTable.h"
#include "Texts.h"
#include "ValueTexts.h"

#include <algorithm>

using namespace KvNReflasher;

namespace {

const char* wordFor(KvEChange change) {
    switch (change) {
    case KvEChange::same:
        return "same";
    case KvEChange::added:
        return "added";
    case KvEChange::removed:
        return "removed";
    case KvEChange::up:
        return "up";
    case KvEChange::down:
        return "DOWN";
    case KvEChange::changed:
        return "changed";
    }
    return "";
}

std::string nameOf(const KvTArchiveDifference& place) {
    return place.elementId ? "element " + std::to_string(*place.elementId) : place.targetPath;
}

std::string versionOf(const std::optional<KvTComparedEntry>& entry) {
    return versionCell(entry ? entry->entry.version : std::nullopt);
}

/// The differences beside the version.
std::string detailsOf(const KvTArchiveDifference& place) {
    std::string details;
    const auto add = [&details](const std::string& detail) {
        details.append(details.empty() ? "" : "; ").append(detail);
    };
    if (!place.before || !place.after) {
        return place.after ? place.after->rules : place.before->rules;
    }
    const KvTArchiveEntry& before = place.before->entry;
    const KvTArchiveEntry& after = place.after->entry;
    if (place.isContentChanged) {
        add("checksum " + checksumCell(before.checksumCrc32) + " -> " + checksumCell(after.checksumCrc32));
    }
    if (place.isSequenceChanged) {
        add("sequence " + std::to_string(before.sequence) + " -> " + std::to_string(after.sequence));
    }
    if (place.isModeChanged) {
        add(after.mode == KvEEntryMode::upgrade ? "mode upgrade" : "mode standard");
    }
    if (place.areRulesChanged) {
        add(std::string("rules '").append(place.before->rules).append("' -> '").append(place.after->rules).append("'"));
    }
    return details;
}

std::string titleOf(const KvTArchiveContent& content) {
    return visibleInLine(content.identity.archiveName + " " + content.identity.archiveVersion);
}

/// Who vouches for an archive; empty if nobody does.
std::string releaseLine(const char* which, const KvTArchiveContent& content) {
    const std::string text = content.release ? releaseText(*content.release) : std::string();
    return text.empty() ? text : std::string(which).append(visibleInLine(text)).append("\n");
}

} // namespace

std::string comparisonText(const KvTComparison& comparison) {
    KvTTextTable table = {{"Board type", "Element or file", "Change", "Old version", "New version", "Details"}};
    std::size_t sameCount = 0;
    for (const KvTArchiveDifference& place : comparison.places) {
        if (place.change == KvEChange::same) {
            ++sameCount;
            continue;
        }
        table.push_back({place.boardType, nameOf(place), wordFor(place.change), versionOf(place.before),
                         versionOf(place.after), detailsOf(place)});
    }
    std::string text = titleOf(comparison.before) + " -> " + titleOf(comparison.after) + "\n" +
                       releaseLine("The old archive is ", comparison.before) +
                       releaseLine("The new archive is ", comparison.after) + "\n";
    if (table.size() > 1) {
        text += tableText(table) + "\n";
    }
    return text + counted(table.size() - 1, "difference") + ", " + std::to_string(sameCount) + " the same\n";
}

std::string comparedPlansText(const KvTPlan& before, const KvTPlan& after) {
    KvTTextTable table = {{"No.", "Update element", "Installed", "Old version", "New version", "Would update"}};
    const std::size_t count = std::min(before.elements.size(), after.elements.size());
    for (std::size_t index = 0; index < count; ++index) {
        const KvTPlannedElement& older = before.elements[index];
        const KvTPlannedElement& newer = after.elements[index];
        const char* const updated = newer.isDowngrade ? "yes [DOWNGRADE]" : "yes";
        table.push_back({std::to_string(newer.index), newer.displayName, versionCell(newer.installed.version),
                         versionCell(older.entry ? older.entry->version : std::nullopt),
                         versionCell(newer.entry ? newer.entry->version : std::nullopt),
                         newer.decision.update ? updated : "no"});
    }
    std::string text("\n");
    return text.append(tableText(table));
}
