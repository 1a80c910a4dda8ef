#pragma once

#include "ArchiveFindings.h"
#include "KvNJson.h"

#include <cstdint>

/// What the rules made of a file entry.
enum class KvEEntryOutcome : std::uint8_t {
    accepted,
    /// The entry needs format features that this system does not know; a warning was reported.
    skipped,
    /// Errors were reported.
    refused
};

/// What the rules found out about an accepted entry.
struct KvTEntryShape {
    /// The entry or an element of its "boards" has "targetPath".
    bool hasTargetPath = false;
};

/// Holds element `index` of "files" against the rules for file entries. After an accepted outcome `shape` is filled.
/// `goOn` becomes false when the findings want the reading to end.
[[nodiscard]] KvEEntryOutcome checkEntry(KvCArchiveFindings& findings, KvNJson::jsonView entry, std::uint32_t index,
                                         KvTEntryShape& shape, bool& goOn);
