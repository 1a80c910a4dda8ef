#include "ElementTables.h"

#include "ElementNames.h"
#include "KvCConsoleWriter.h"
#include "KvCStringConversion.h"

namespace {

KvTTableRow headingRow() {
    return {"Update element", "Version"};
}

KvTTableRow elementRow(const KvTUpdateElement& element) {
    KvTTableRow row = {element.displayName, versionCell(element.version)};
    addStatusMarker(row, element);
    return row;
}

void printUnitFrame(const KvCConsoleWriter& writer, const std::wstring& title) {
    const std::wstring line(title.size() + 4, L'*');
    writer.print(L"\n%s\n* %s *\n%s\n", line.c_str(), title.c_str(), line.c_str());
}

/// One table for each run of elements of a unit. Elements of no unit at the head of the list have no frame and no
/// heading.
void printUnitTables(const KvCConsoleWriter& writer, const KvCTargetInventory& inventory) {
    KvTTable table;
    std::wstring title;
    for (const KvTUpdateElement& element : inventory.elements()) {
        const std::wstring elementTitle = unitPathOf(element, toWide);
        if (elementTitle != title) {
            printTable(writer, table);
            table = {headingRow()};
            printUnitFrame(writer, elementTitle);
            title = elementTitle;
        }
        table.push_back(elementRow(element));
    }
    printTable(writer, table);
}

} // namespace

void printElementTable(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                       const KvCTargetInventory& inventory) {
    if (options.verbose) {
        printUnitTables(writer, inventory);
        return;
    }
    KvTTable table = {headingRow()};
    for (const KvTUpdateElement& element : inventory.elements()) {
        table.push_back(elementRow(element));
    }
    printTable(writer, table);
}

void addStatusMarker(KvTTableRow& row, const KvTUpdateElement& element) {
    if (!element.valid) {
        row.emplace_back("[INVALID]");
    } else if (!element.active && !element.isFileSystemElement) {
        row.emplace_back("[INACTIVE]");
    }
}
