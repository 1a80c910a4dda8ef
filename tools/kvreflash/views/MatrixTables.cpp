#include "MatrixTables.h"

#include "PathTexts.h"
#include "TextTable.h"
#include "Texts.h"
#include "ValueTexts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

using namespace KvNReflasher;

namespace {

const char* wordsFor(KvEOutlook outlook) {
    switch (outlook) {
    case KvEOutlook::wouldUpdate:
        return "would update";
    case KvEOutlook::upToDate:
        return "up to date";
    case KvEOutlook::noEntry:
        return "no entry";
    case KvEOutlook::disabled:
        return "disabled";
    }
    return "";
}

bool isDowngraded(const KvTPlannedElement& element) {
    return element.isDowngrade && element.decision.update;
}

std::vector<std::string> summaryRow(const KvTMatrixTarget& target) {
    std::vector<std::string> row{shellWord(target.folder), target.address};
    if (!target.plan) {
        row.insert(row.end(), outlookCount, unknownText);
        row.emplace_back("[FAILED]");
        return row;
    }
    std::array<std::uint32_t, outlookCount> counts{};
    for (const KvTPlannedElement& element : target.plan->elements) {
        ++counts.at(static_cast<std::size_t>(outlookOf(element)));
    }
    std::transform(counts.begin(), counts.end(), std::back_inserter(row),
                   [](std::uint32_t count) { return std::to_string(count); });
    if (!target.plan->supported) {
        row.emplace_back("[NOT SUPPORTED]");
    }
    return row;
}

} // namespace

std::string matrixTargetText(const KvTMatrixTarget& target, const std::string& messages) {
    std::string text("\n");
    text.append(visibleInLine(shellWord(target.folder) + " (" + target.address + ")")).append("\n\n").append(messages);
    if (!target.plan->supported) {
        text += "Not supported by this archive: an update would refuse this target.\n";
    }
    if (target.plan->elements.empty()) {
        return text + "There are no update elements.\n";
    }
    KvTTextTable table = {{"No.", "Update element", "Installed", "Available", "State"}};
    for (const KvTPlannedElement& element : target.plan->elements) {
        table.push_back({std::to_string(element.index), element.displayName, versionCell(element.installed.version),
                         versionCell(element.entry ? element.entry->version : std::nullopt),
                         wordsFor(outlookOf(element)) + std::string(isDowngraded(element) ? " [DOWNGRADE]" : "")});
    }
    return text + tableText(table);
}

std::string matrixSummaryText(const std::vector<KvTMatrixTarget>& targets,
                              const std::vector<KvTArchiveEntry>& unmatched) {
    KvTTextTable table = {{"Target", "Address", "Would update", "Up to date", "No entry", "Disabled"}};
    std::transform(targets.begin(), targets.end(), std::back_inserter(table), summaryRow);
    std::string text("\n");
    text += tableText(table);
    if (!unmatched.empty()) {
        text += "\nFile entries that fit nothing on any of these targets:\n";
    }
    for (const KvTArchiveEntry& entry : unmatched) {
        text += "        " + std::to_string(entry.descriptionIndex) + ": " + visibleInLine(entry.fileName) + "\n";
    }
    return text;
}
