#pragma once

#include "JsonText.h"
#include "KvIArchive.h"

#include <optional>
#include <string>

// The records of an archive as JSON.

namespace KvNReflasher {

[[nodiscard]] KvCJsonText identityRecord(const KvTArchiveIdentity& identity);
/// Null for nothing.
[[nodiscard]] KvCJsonText releaseRecord(const std::optional<KvTRelease>& release);
[[nodiscard]] KvCJsonText entryRecord(const KvTArchiveEntry& entry);
/// A finding on the description `file`.
[[nodiscard]] KvCJsonText findingRecord(const KvTFinding& finding, const std::string& file);

} // namespace KvNReflasher
