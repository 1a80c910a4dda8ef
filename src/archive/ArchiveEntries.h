#pragma once

#include "KvTArchiveFile.h"
#include "KvTPlan.h"

#include <cstdint>
#include <optional>
#include <vector>

/// The version as clients see it; nothing for the zero version and for unknownVersion().
[[nodiscard]] std::optional<KvNReflasher::KvTVersion> knownVersion(const KvCVersion& version);

/// What the archive says of itself, as clients see it.
[[nodiscard]] KvNReflasher::KvTArchiveIdentity archiveIdentityOf(const KvTArchiveInfo& info);

/// An accepted entry as clients see it; `fileIndex` is its position among the accepted ones.
[[nodiscard]] KvNReflasher::KvTArchiveEntry archiveEntryOf(const KvTArchiveFile& file, std::uint32_t fileIndex);

/// All of them, in their order.
[[nodiscard]] std::vector<KvNReflasher::KvTArchiveEntry> archiveEntriesOf(const std::vector<KvTArchiveFile>& files);
