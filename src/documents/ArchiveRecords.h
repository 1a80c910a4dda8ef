#pragma once

#include "KvIArchive.h"
#include "KvNJson.h"

#include <optional>
#include <string>

// The records of an archive as JSON.

namespace KvNReflasher {

[[nodiscard]] KvNJson::json identityRecord(const KvTArchiveIdentity& identity);
/// Null for nothing.
[[nodiscard]] KvNJson::json releaseRecord(const std::optional<KvTRelease>& release);
[[nodiscard]] KvNJson::json entryRecord(const KvTArchiveEntry& entry);
/// A finding on the description `file`.
[[nodiscard]] KvNJson::json findingRecord(const KvTFinding& finding, const std::string& file);

} // namespace KvNReflasher
