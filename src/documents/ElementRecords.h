#pragma once

#include "JsonText.h"
#include "KvTPlan.h"

#include <optional>

// The records of an element as JSON.

namespace KvNReflasher {

[[nodiscard]] KvCJsonText installedRecord(const KvTInstalled& installed);
[[nodiscard]] KvCJsonText plannedElementRecord(const KvTPlannedElement& element);
/// The version and its components; null for nothing.
[[nodiscard]] KvCJsonText versionComponents(const std::optional<KvTVersion>& version);
[[nodiscard]] KvCJsonText triedEntryRecord(const KvTTriedEntry& entry);
[[nodiscard]] KvCJsonText hiddenElementRecord(const KvTHiddenElement& element);
/// Number of elements that are to be updated.
[[nodiscard]] KvCJsonText updatesOf(const KvTPlan& plan);

} // namespace KvNReflasher
