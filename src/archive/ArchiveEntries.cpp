#include "ArchiveEntries.h"

#include <string>

using namespace KvNReflasher;

namespace {

std::string textOf(const KvCString& text) {
    return std::string(text.view());
}

} // namespace

std::optional<KvTVersion> knownVersion(const KvCVersion& version) {
    if (version.getAsULong64() == 0 || version == unknownVersion()) {
        return std::nullopt;
    }
    return KvTVersion{version.getAsULong64(), textOf(version.getAsString())};
}

KvTArchiveIdentity archiveIdentityOf(const KvTArchiveInfo& info) {
    return {.archiveName = textOf(info.archiveName),
            .archiveVersion = textOf(info.archiveVersion.getAsString()),
            .productName = textOf(info.productName),
            .formatVersion = textOf(info.formatVersion.getAsString()),
            .archiveVariant = textOf(info.archiveVariant)};
}

KvTArchiveEntry archiveEntryOf(const KvTArchiveFile& file, std::uint32_t fileIndex) {
    KvTArchiveEntry entry;
    entry.fileIndex = fileIndex;
    entry.descriptionIndex = file.descriptionIndex;
    entry.fileName = textOf(file.name);
    entry.version = knownVersion(file.version);
    if (file.checksumCrc32 != unknownValue) {
        entry.checksumCrc32 = file.checksumCrc32;
    }
    entry.mode = file.mode == upgradeMode ? KvEEntryMode::upgrade : KvEEntryMode::standard;
    entry.sequence = file.sequence;
    return entry;
}

std::vector<KvTArchiveEntry> archiveEntriesOf(const std::vector<KvTArchiveFile>& files) {
    std::vector<KvTArchiveEntry> entries;
    entries.reserve(files.size());
    for (const KvTArchiveFile& file : files) {
        entries.push_back(archiveEntryOf(file, static_cast<std::uint32_t>(entries.size())));
    }
    return entries;
}
