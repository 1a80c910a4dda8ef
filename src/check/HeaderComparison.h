#pragma once

#include "EntryProperties.h"
#include "KvTArchiveFile.h"
#include "UpdateFileReaders.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Fields in which the header of an update file differs from its entry, if both state them.

[[nodiscard]] inline bool tellsOtherChecksum(const KvTUpdateFileHeader& header, const KvTArchiveFile& file) {
    return header.checksum != unknownValue && file.checksumCrc32 != unknownValue &&
           header.checksum != file.checksumCrc32;
}

/// An entry that says "version": null expects no version; whether it does is the caller's to know.
[[nodiscard]] inline bool tellsOtherVersion(const KvTUpdateFileHeader& header, const KvTArchiveFile& file) {
    return header.version != unknownVersion() && header.version != file.version;
}

/// A compatibility identifier that an entry allows, and that the header of its file excludes.
struct KvTExcludedId {
    /// hwCompatibilityId or swCompatibilityId.
    KvEProperty property = KvEProperty::hwCompatibilityId;
    /// "hardware" or "software".
    const char* kind = "";
    /// What the header states: "2 to 3".
    std::string range;
    /// The identifier; 0 if the entry states none.
    std::uint64_t id = 0;
    /// Index in the entry's selections.
    std::size_t selection = 0;
    /// The identifier is one that the entry itself states or leaves out, for all of its selections that state none.
    bool isShared = true;
    /// Index of the identifier if the entry states an array of them.
    std::size_t item = 0;
};

/// The first excluded identifier of each property of each selection of `file`; of those that selections share only one.
/// A header that states no range, or the range from 0 to 0, excludes none.
[[nodiscard]] std::vector<KvTExcludedId> excludedIds(const KvTUpdateFileHeader& header, const KvTArchiveFile& file);
