#pragma once

#include "KvCVersion.h"
#include "KvTArchiveFile.h"
#include "KvTPlan.h"

#include <cstdint>
#include <optional>
#include <vector>

// What an archive states, as the values that clients are given.

/// Nothing for the zero version and for unknownVersion().
[[nodiscard]] std::optional<KvNReflasher::KvTVersion> knownVersion(const KvCVersion& version);

[[nodiscard]] KvNReflasher::KvTArchiveIdentity archiveIdentityOf(const KvTArchiveInfo& info);

/// `fileIndex` is the entry's position among the accepted ones.
[[nodiscard]] KvNReflasher::KvTArchiveEntry archiveEntryOf(const KvTArchiveFile& file, std::uint32_t fileIndex);

/// The accepted entries of an archive.
[[nodiscard]] std::vector<KvNReflasher::KvTArchiveEntry> archiveEntriesOf(const std::vector<KvTArchiveFile>& files);
