#include "KvTArchiveFile.h"

#include "EntryProperties.h"

#include <algorithm>
#include <utility>

namespace {

using KvNJson::jsonView;

void takeVersion(KvTArchiveFile& file, jsonView version, const KvCVersion& archiveVersion) {
    file.hasOwnVersion = version.is_string();
    if (!version.is_valid()) {
        file.version = archiveVersion;
    } else {
        file.version = file.hasOwnVersion ? versionOf(version) : KvCVersion();
    }
}

void takeChecksum(KvTArchiveFile& file, jsonView checksum) {
    if (checksum.is_valid()) {
        file.checksumCrc32 = static_cast<std::uint32_t>(checksum.get_unsigned());
        file.hasOwnChecksum = file.checksumCrc32 != unknownValue;
    }
}

bool namesFile(const KvTEntrySelection& selection) {
    return selection.address.targetPath.has_value();
}

} // namespace

KvTArchiveFile makeArchiveFile(std::shared_ptr<const KvNJson::json> description, std::uint32_t descriptionIndex,
                               const KvCVersion& archiveVersion) {
    KvTArchiveFile file;
    file.descriptionIndex = descriptionIndex;
    file.description = std::move(description);
    const KvCEntryProperties entry(file.description->view());
    file.name = KvCString(entry[KvEProperty::name].get_string());
    file.sequence = static_cast<std::uint32_t>(entry[KvEProperty::sequence].get_unsigned());
    takeVersion(file, entry[KvEProperty::version], archiveVersion);
    takeChecksum(file, entry[KvEProperty::checksumCrc32]);
    file.selections = selectionsOf(entry);
    file.address = addressOf(entry);
    file.hasTargetPath =
        file.address.targetPath || std::any_of(file.selections.begin(), file.selections.end(), namesFile);
    file.mode = entry[KvEProperty::mode].get_string() == "upgrade" ? upgradeMode : standardMode;
    return file;
}
