#include "MatrixTables.h"

#include "TableText.h"
#include "ToolOutput.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

namespace {

const char* textOf(KvEElementOutlook outlook) {
    switch (outlook) {
    case KvEElementOutlook::wouldUpdate:
        return "would update";
    case KvEElementOutlook::upToDate:
        return "up to date";
    case KvEElementOutlook::noEntry:
        return "no entry";
    case KvEElementOutlook::disabled:
        return "disabled";
    }
    return "";
}

std::vector<KvCString> summaryRow(const KvTMatrixTarget& target) {
    std::vector<KvCString> row{KvCString(target.folder), KvCString(target.address)};
    if (target.error) {
        row.insert(row.end(), elementOutlookCount, KvCString(unknownCell));
        row.emplace_back("[FAILED]");
        return row;
    }
    std::array<std::uint32_t, elementOutlookCount> counts{};
    for (const KvTMatrixElement& element : target.elements) {
        ++counts[static_cast<std::size_t>(element.outlook)];
    }
    for (const std::uint32_t count : counts) {
        row.emplace_back(count);
    }
    if (!target.supported) {
        row.emplace_back("[NOT SUPPORTED]");
    }
    return row;
}

} // namespace

void writeMatrixTarget(const KvTMatrixTarget& target) {
    writeText(stdout, "\n" + target.folder + " (" + target.address + ")\n\n" + target.messages);
    if (!target.supported) {
        writeText(stdout, "Not supported by this archive: an update would refuse this target.\n");
    }
    if (target.elements.empty()) {
        writeText(stdout, "There are no update elements.\n");
        return;
    }
    KvTTable table = {{"No.", "Update element", "Installed", "Available", "State"}};
    for (const KvTMatrixElement& element : target.elements) {
        table.push_back({KvCString(element.index), element.displayName, versionCell(element.installedVersion),
                         versionCell(element.availableVersion), textOf(element.outlook)});
    }
    writeText(stdout, tableText(table));
}

void writeMatrixSummary(const std::vector<KvTMatrixTarget>& targets,
                        const std::vector<KvTMatrixEntry>& unmatchedEntries) {
    KvTTable table = {{"Target", "Address", "Would update", "Up to date", "No entry", "Disabled"}};
    std::transform(targets.begin(), targets.end(), std::back_inserter(table), summaryRow);
    writeText(stdout, "\n");
    writeText(stdout, tableText(table));
    if (unmatchedEntries.empty()) {
        return;
    }
    std::string text = "\nFile entries that fit nothing on any of these targets:\n";
    for (const KvTMatrixEntry& entry : unmatchedEntries) {
        text += "        " + std::to_string(entry.index) + ": " + std::string(entry.name.view()) + "\n";
    }
    writeText(stdout, text);
}
