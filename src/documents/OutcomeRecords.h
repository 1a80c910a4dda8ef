#pragma once

#include "JsonText.h"
#include "KvTOutcome.h"

#include <vector>

// What came of a session as JSON.

namespace KvNReflasher {

[[nodiscard]] KvCJsonText errorRecord(const KvTErrorInfo& error);
[[nodiscard]] KvCJsonText errorRecords(const std::vector<KvTErrorInfo>& errors);
[[nodiscard]] KvCJsonText fileOutcomeRecord(const KvTFileOutcome& file);
/// Whether and how the target was looked at, without what it reports of elements.
[[nodiscard]] KvCJsonText lookRecord(const KvTLook& look);
/// The number of elements with each result, by its code.
[[nodiscard]] KvCJsonText verifiedCounts(const KvTVerification& verification);

/// Adds what became of an element to its record.
void setOutcome(KvCJsonText& record, const KvTElementOutcome& outcome);
/// Adds what was verified of an element to its record; null: nothing was.
void setVerified(KvCJsonText& record, const KvTVerifiedElement* verified);

} // namespace KvNReflasher
