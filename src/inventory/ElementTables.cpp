#include "ElementTables.h"

#include "TextConversions.h"

void addStatusMarker(std::vector<KvCString>& row, const KvTUpdateElement& element) {
    if (!element.valid) {
        row.emplace_back("[INVALID]");
    } else if (!element.active && !element.isFileSystemElement) {
        row.emplace_back("[INACTIVE]");
    }
}

std::wstring unitTitle(const KvTUpdateElement& element) {
    std::wstring title = toWide(element.unitName);
    if (!element.rackName.isEmpty() || !element.unitInstanceName.isEmpty()) {
        const bool both = !element.rackName.isEmpty() && !element.unitInstanceName.isEmpty();
        title += L": " + toWide(element.rackName) + (both ? L" / " : L"") + toWide(element.unitInstanceName);
    }
    return title;
}
