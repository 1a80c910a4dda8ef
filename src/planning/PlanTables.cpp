#include "ElementTables.h"
#include "KvCConsoleWriter.h"
#include "KvCUpdatePlanner.h"
#include "TableLayout.h"

namespace {

constexpr int listIndentation = 8;

/// The installed and the available checksum and whether they are equal. `file` is null without a matching entry.
KvCString checksumCell(const KvTUpdateElement& element, const KvTArchiveFile* file) {
    if (file == nullptr && !element.hasChecksum) {
        return {};
    }
    KvCString cell = element.hasChecksum ? KvCString(element.checksumCrc32) : KvCString(unknownCell);
    const bool equal = file != nullptr && element.hasChecksum && element.checksumCrc32 == file->checksumCrc32;
    cell += equal ? " == " : " != ";
    cell += file != nullptr ? KvCString(file->checksumCrc32) : KvCString(unknownCell);
    return cell;
}

std::vector<KvCString> planRow(const KvTUpdateElement& element, std::uint32_t number, const KvTArchiveFile* file) {
    const bool planned = file != nullptr && !element.disabled;
    std::vector<KvCString> row = {KvCString(number),
                                  element.displayName,
                                  versionCell(element.version),
                                  file != nullptr ? versionCell(file->version) : KvCString(unknownCell),
                                  checksumCell(element, file),
                                  file != nullptr ? KvCString(element.upToDate ? "Y" : "N") : KvCString(),
                                  planned ? KvCString(element.phase) : KvCString("-")};
    addStatusMarker(row, element);
    return row;
}

} // namespace

void KvCUpdatePlanner::printUpdatePlan() const {
    if (inventory_.elements().empty()) {
        return;
    }
    KvTTable table = {{"No.", "Update element", "Installed", "Available", "Checksums", "Up-to-date", "Phase"}};
    std::uint32_t number = 0;
    for (const KvTUpdateElement& element : inventory_.elements()) {
        const KvTArchiveFile* file = element.hasArchiveFile() ? &archive_.files()[element.archiveFileIndex] : nullptr;
        table.push_back(planRow(element, number++, file));
    }
    printTable(writer_, table);
}

void KvCUpdatePlanner::printUnsupportedElements() const {
    bool printed = false;
    for (const KvTUpdateElement& element : inventory_.elements()) {
        if (element.disabled || element.hasArchiveFile()) {
            continue;
        }
        if (!printed) {
            writer_.print(L"\nUnsupported update elements (will be ignored):\n");
            printed = true;
        }
        writer_.print(L"%*s%hs\n", listIndentation, L"", element.displayName.c_str());
    }
    if (printed) {
        writer_.print(L"\n");
    }
}

void KvCUpdatePlanner::printUpToDateElements() const {
    if (options_.forceUpdate) {
        return;
    }
    bool printed = false;
    for (const KvTUpdateElement& element : inventory_.elements()) {
        if (!element.hasArchiveFile() || !element.upToDate) {
            continue;
        }
        if (!printed) {
            writer_.print(L"\nNo update is required for these elements:\n");
            printed = true;
        }
        writer_.print(L"%*s%hs\n", listIndentation, L"", element.displayName.c_str());
    }
}
