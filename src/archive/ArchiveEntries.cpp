#include "ArchiveEntries.h"

using namespace KvNReflasher;

std::optional<KvTVersion> knownVersion(const KvCVersion& version) {
    if (version == KvCVersion() || version == unknownVersion()) {
        return std::nullopt;
    }
    return KvTVersion{.number = version.getAsULong64(), .text = std::string(version.getAsString().view())};
}

KvTArchiveIdentity archiveIdentityOf(const KvTArchiveInfo& info) {
    return {.archiveName = std::string(info.archiveName.view()),
            .archiveVersion = std::string(info.archiveVersion.getAsString().view()),
            .productName = std::string(info.productName.view()),
            .formatVersion = std::string(info.formatVersion.getAsString().view()),
            .archiveVariant = std::string(info.archiveVariant.view())};
}

KvTArchiveEntry archiveEntryOf(const KvTArchiveFile& file, std::uint32_t fileIndex) {
    return {.fileIndex = fileIndex,
            .descriptionIndex = file.descriptionIndex,
            .fileName = std::string(file.name.view()),
            .version = knownVersion(file.version),
            .checksumCrc32 = file.checksumCrc32 != unknownValue ? std::optional(file.checksumCrc32) : std::nullopt,
            .mode = file.mode == upgradeMode ? KvEEntryMode::upgrade : KvEEntryMode::standard,
            .sequence = file.sequence};
}

std::vector<KvTArchiveEntry> archiveEntriesOf(const std::vector<KvTArchiveFile>& files) {
    std::vector<KvTArchiveEntry> entries;
    entries.reserve(files.size());
    for (const KvTArchiveFile& file : files) {
        entries.push_back(archiveEntryOf(file, static_cast<std::uint32_t>(entries.size())));
    }
    return entries;
}
