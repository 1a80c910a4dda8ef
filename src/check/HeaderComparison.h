#pragma once

#include "KvTArchiveFile.h"
#include "UpdateFileReaders.h"

// What the header of an update file tells otherwise than the archive, where both tell something.

[[nodiscard]] inline bool tellsOtherChecksum(const KvTUpdateFileHeader& header, const KvTArchiveFile& file) {
    return header.checksum != unknownValue && file.checksumCrc32 != unknownValue &&
           header.checksum != file.checksumCrc32;
}

/// An entry that says "version": null expects no version; whether it does is the caller's to know.
[[nodiscard]] inline bool tellsOtherVersion(const KvTUpdateFileHeader& header, const KvTArchiveFile& file) {
    return header.version != unknownVersion() && header.version != file.version;
}
