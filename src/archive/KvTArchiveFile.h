#pragma once

#include "EntrySelection.h"
#include "KvCString.h"
#include "KvCVersion.h"
#include "KvNJson.h"

#include <cstdint>
#include <memory>

/// Stands for an identifier or checksum that is not known.
inline constexpr std::uint32_t unknownValue = 0xFFFFFFFE;

/// The version that stands for one that is not known.
[[nodiscard]] inline KvCVersion unknownVersion() {
    KvCVersion version;
    version.setByULong64(unknownValue);
    return version;
}

/// How an entry's elements are updated.
enum KvEUpdateMode : std::uint32_t {
    standardMode = 0, ///< when version or checksum differ
    upgradeMode = 1   ///< when the entry's version is greater
};

/// One accepted file entry of the archive description. An archive may have very many: small fields stand together.
struct KvTArchiveFile {
    /// File name of the update file, relative to the archive folder.
    KvCString name;
    /// Entries of lower sequence are updated in an earlier phase.
    std::uint32_t sequence = 0;
    /// Index of the entry in the description's "files".
    std::uint32_t descriptionIndex = 0;
    /// Version of the file's contents; zero if the description says null, the archive's if it says nothing.
    KvCVersion version = unknownVersion();
    /// CRC-32 of the update file, from the description or from the file.
    std::uint32_t checksumCrc32 = unknownValue;
    /// The description writes a version, not null.
    bool hasOwnVersion = false;
    /// The description writes a checksum other than unknownValue.
    bool hasOwnChecksum = false;
    /// The file is written into the target's file system instead of updating an element.
    bool hasTargetPath = false;
    /// The update file was not found in the archive folder.
    bool fileMissing = false;
    /// One of KvEUpdateMode.
    std::uint32_t mode = standardMode;
    /// How many update elements were matched to the entry.
    std::uint32_t matchCount = 0;
    /// The entry's JSON object, "boards" included. The entries of an archive share one block of memory for theirs, and
    /// copies of a record share its object: the fields below look into it.
    std::shared_ptr<const KvNJson::json> description;
    /// The boards and places that the entry is meant for.
    KvCEntrySelections selections;
    /// The place that the entry itself names.
    KvTEntryAddress address;
};

/// The "info" block of the archive description.
struct KvTArchiveInfo {
    KvCVersion formatVersion;
    /// Also the version of every entry that gives none.
    KvCVersion archiveVersion;
    KvCString productName;
    /// Empty when the description gives none.
    KvCString archiveVariant;
    KvCString archiveName;
};

/// Decodes a sound entry: `description` is element `descriptionIndex` of "files". `archiveVersion` is the version of an
/// entry that writes none.
[[nodiscard]] KvTArchiveFile makeArchiveFile(std::shared_ptr<const KvNJson::json> description,
                                             std::uint32_t descriptionIndex, const KvCVersion& archiveVersion);
