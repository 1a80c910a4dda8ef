#include "ElementNames.h"
#include "ExhaustedMemory.h"
#include "KvCReflasher.h"
#include "KvCStringConversion.h"

#include <memory>

namespace {

using KvNReflasher::KvTArchiveFileInfo;
using KvNReflasher::KvTUpdateElementInfo;

/// The version's text; empty for the zero version.
std::wstring versionText(const KvCVersion& version) {
    return version.getAsULong64() == 0 ? std::wstring() : toWide(version.getAsString());
}

KvTUpdateElementInfo elementInfo(const KvTUpdateElement& element, std::uint32_t number, const KvTArchiveFile* file) {
    return {.index = number,
            .boardType = toWide(element.boardType),
            .serialNumber = element.serialNumber,
            .boardName = toWide(element.boardName),
            .unitPath = unitPathOf(element, toWide),
            .slot = element.slot,
            .slotCount = element.slotCount,
            .displayName = toWide(element.displayName),
            .typeName = toWide(element.typeName),
            .isFileSystemElement = element.isFileSystemElement,
            .valid = element.valid,
            .active = element.active,
            .installedVersion = versionText(element.version),
            .custom = element.custom != 0 ? 1U : 0U,
            .phase = element.phase,
            .hasArchiveFile = file != nullptr ? 1U : 0U,
            .archiveFileIndex = element.archiveFileIndex,
            .availableVersion = file != nullptr ? versionText(file->version) : std::wstring(),
            .checksumMismatch = file != nullptr && element.checksumCrc32 != file->checksumCrc32,
            .disabled = element.disabled};
}

/// Makes an array of `size` records with `fill(array)` and hands it over; null and 0 when there are none or
/// memory is exhausted.
template <typename Record, typename Fill>
void handOver(std::size_t size, Record*& records, std::uint32_t& count, Fill&& fill) {
    records = nullptr;
    count = 0;
    attempt([&] {
        if (size == 0) {
            return;
        }
        auto array = std::make_unique<Record[]>(size);
        fill(array.get());
        records = array.release();
        count = static_cast<std::uint32_t>(size);
    });
}

} // namespace

void KvCReflasher::getUpdateElements(KvTUpdateElementInfo*& elements, std::uint32_t& count) {
    handOver(preparation_.inventory().elements().size(), elements, count, [this](KvTUpdateElementInfo* record) {
        std::uint32_t number = 0;
        for (const KvTUpdateElement& element : preparation_.inventory().elements()) {
            const KvTArchiveFile* file =
                element.hasArchiveFile() ? &preparation_.archive().files()[element.archiveFileIndex] : nullptr;
            *record++ = elementInfo(element, number++, file);
        }
    });
}

void KvCReflasher::getArchiveFiles(KvTArchiveFileInfo*& files, std::uint32_t& count) {
    handOver(preparation_.archive().files().size(), files, count, [this](KvTArchiveFileInfo* record) {
        for (const KvTArchiveFile& file : preparation_.archive().files()) {
            record->name = file.name.view();
            record->version = file.version.getAsString().view();
            ++record;
        }
    });
}
