#include "PlannedUpdate.h"

#include "KvTArchiveFile.h"

#include <algorithm>

namespace {

void addEntry(KvTPlannedElement& planned, const KvTArchiveFile& file) {
    planned.fileName = file.name.view();
    planned.availableVersion = file.version == unknownVersion() ? KvCVersion() : file.version;
    if (file.checksumCrc32 != unknownValue) {
        planned.availableChecksum = file.checksumCrc32;
    }
}

} // namespace

KvTInstalled installedOn(const KvTUpdateElement& element) {
    return {.version = element.version,
            .checksum = element.hasChecksum ? std::optional(element.checksumCrc32) : std::nullopt,
            .valid = element.valid,
            .active = element.active};
}

std::vector<KvTPlannedElement> plannedElements(KvCPreparation& preparation,
                                               const std::vector<std::uint32_t>& disabledElements) {
    std::vector<KvTPlannedElement> result;
    for (const KvTUpdateElement& element : preparation.inventory().elements()) {
        KvTPlannedElement& planned = result.emplace_back();
        planned.index = element.index;
        planned.displayName = element.displayName.view();
        planned.address = element.elementAddress.toString().view();
        planned.installed = installedOn(element);
        planned.phase = element.phase;
        planned.upToDate = element.upToDate;
        planned.disabled = element.disabled || std::find(disabledElements.begin(), disabledElements.end(),
                                                         element.index) != disabledElements.end();
        if (element.hasArchiveFile()) {
            planned.file = element.archiveFileIndex;
            addEntry(planned, preparation.archive().files()[element.archiveFileIndex]);
        }
    }
    return result;
}
