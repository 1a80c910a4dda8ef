#pragma once

#include "KvRuns.h"

#include <string>

// JSON documents of runs, as those of KvDocuments.h.

namespace KvNReflasher {

/// The runs of a journal.
[[nodiscard]] KV_REFLASH_API std::string historyDocument(const KvTRunList& list, const KvTVerdict& verdict);
/// One run: as in the list, with its elements. Null: it was not found.
[[nodiscard]] KV_REFLASH_API std::string runDocument(const KvTRunRecord* run, const KvTVerdict& verdict);

} // namespace KvNReflasher
