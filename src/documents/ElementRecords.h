#pragma once

#include "KvNJson.h"
#include "KvTPlan.h"

#include <optional>

// The records of an element as JSON.

namespace KvNReflasher {

[[nodiscard]] KvNJson::json installedRecord(const KvTInstalled& installed);
[[nodiscard]] KvNJson::json plannedElementRecord(const KvTPlannedElement& element);
/// The version and its components; null for nothing.
[[nodiscard]] KvNJson::json versionComponents(const std::optional<KvTVersion>& version);
[[nodiscard]] KvNJson::json triedEntryRecord(const KvTTriedEntry& entry);
[[nodiscard]] KvNJson::json hiddenElementRecord(const KvTHiddenElement& element);

} // namespace KvNReflasher
