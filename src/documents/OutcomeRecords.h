#pragma once

#include "KvNJson.h"
#include "KvTOutcome.h"

#include <vector>

// What came of a session as JSON.

namespace KvNReflasher {

[[nodiscard]] KvNJson::json errorRecord(const KvTErrorInfo& error);
[[nodiscard]] KvNJson::json errorRecords(const std::vector<KvTErrorInfo>& errors);
[[nodiscard]] KvNJson::json fileOutcomeRecord(const KvTFileOutcome& file);
/// Whether and how the target was looked at, without what it reports of elements.
[[nodiscard]] KvNJson::json lookRecord(const KvTLook& look);
/// The number of elements with each result, by its code.
[[nodiscard]] KvNJson::json verifiedCounts(const KvTVerification& verification);

/// Adds what became of an element to its record.
void setOutcome(KvNJson::json& record, const KvTElementOutcome& outcome);
/// Adds what was verified of an element to its record; null: nothing was.
void setVerified(KvNJson::json& record, const KvTVerifiedElement* verified);

} // namespace KvNReflasher
