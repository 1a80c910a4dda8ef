#pragma once

#include "ArchiveFindings.h"
#include "KvNJson.h"
#include "KvTArchiveFile.h"

#include <cstdint>

/// What the rules made of a file entry.
enum class KvEEntryOutcome : std::uint8_t {
    accepted,
    /// The entry needs format features that this system does not know; a warning was reported.
    skipped,
    /// Errors were reported.
    refused
};

/// What the rules found out about a file entry.
struct KvTEntryVerdict {
    KvEEntryOutcome outcome = KvEEntryOutcome::refused;
    /// False: the findings want the reading to end.
    bool goOn = true;
};

/// Holds element `index` of "files" against the rules for file entries.
[[nodiscard]] KvTEntryVerdict checkEntry(KvCArchiveFindings& findings, KvNJson::jsonView entry, std::uint32_t index);

/// The same for an entry that is ignored for its feature level, without that rule: whether this system could read it.
[[nodiscard]] KvTEntryVerdict checkIgnoredEntry(KvCArchiveFindings& findings, KvNJson::jsonView entry,
                                                std::uint32_t index);

/// Holds the "info" block of the description `root` against its rules and stores each field in `info` as it passes.
/// False: do not go on.
[[nodiscard]] bool readInfo(KvCArchiveFindings& findings, KvNJson::jsonView root, KvTArchiveInfo& info);
