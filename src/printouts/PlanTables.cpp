#include "PlanTables.h"

#include "ElementTables.h"
#include "KvCConsoleWriter.h"
#include "UpdateDecision.h"

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

KvTTableRow planRow(const KvTUpdateElement& element, std::uint32_t number, const KvTArchiveFile* file) {
    const bool planned = file != nullptr && !element.disabled;
    KvTTableRow row = {KvCString(number),
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

void printPlanNotes(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                    const KvCTargetInventory& inventory, std::uint32_t phaseCount) {
    if (!options.verbose) {
        return;
    }
    for (const KvTUpdateElement& element : inventory.elements()) {
        if (lacksCarrierBoard(element)) {
            writer.print(L"Update element \"%hs\" has been disabled, because no QB5150 or QB5170 has been detected.\n",
                         element.displayName.c_str());
        }
    }
    writer.print(L"The update process takes %u phases!\n", phaseCount);
}

void printUpdatePlan(const KvCConsoleWriter& writer, const KvCFirmwareArchive& archive,
                     const KvCTargetInventory& inventory) {
    if (inventory.elements().empty()) {
        return;
    }
    KvTTable table = {{"No.", "Update element", "Installed", "Available", "Checksums", "Up-to-date", "Phase"}};
    std::uint32_t number = 0;
    for (const KvTUpdateElement& element : inventory.elements()) {
        const KvTArchiveFile* file = element.hasArchiveFile() ? &archive.files()[element.archiveFileIndex] : nullptr;
        table.push_back(planRow(element, number++, file));
    }
    printTable(writer, table);
}

void printUnsupportedElements(const KvCConsoleWriter& writer, const KvCTargetInventory& inventory) {
    bool printed = false;
    for (const KvTUpdateElement& element : inventory.elements()) {
        if (element.disabled || element.hasArchiveFile()) {
            continue;
        }
        if (!printed) {
            writer.print(L"\nUnsupported update elements (will be ignored):\n");
            printed = true;
        }
        writer.print(L"%*s%hs\n", listIndentation, L"", element.displayName.c_str());
    }
    if (printed) {
        writer.print(L"\n");
    }
}

void printUpToDateElements(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                           const KvCTargetInventory& inventory) {
    if (options.forceUpdate) {
        return;
    }
    bool printed = false;
    for (const KvTUpdateElement& element : inventory.elements()) {
        if (!element.hasArchiveFile() || !element.upToDate) {
            continue;
        }
        if (!printed) {
            writer.print(L"\nNo update is required for these elements:\n");
            printed = true;
        }
        writer.print(L"%*s%hs\n", listIndentation, L"", element.displayName.c_str());
    }
}
