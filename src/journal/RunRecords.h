#pragma once

#include "KvRuns.h"

#include <cstdint>
#include <string>

// The records that a journal has beside those of events, and what it adds to these: JSON on one line, with a line end.

namespace KvNReflasher {

/// The run begins: who runs it, where, and what it was planned of; the elements of `plan` do not count.
[[nodiscard]] std::string beginRecord(const std::string& time, const KvTJournalOptions& options,
                                      const KvTSavedPlan& plan);
/// The plan of the run.
[[nodiscard]] std::string planRecord(const std::string& time, const KvTPlan& plan);
/// A phase is about to begin: its elements are no longer untouched.
[[nodiscard]] std::string intentRecord(const std::string& time, std::uint32_t phase, const KvTPlan& plan);
/// `event`, the end of a file that the inventory does not list, with the place and, unless it is empty, the SHA-256 of
/// what was written.
[[nodiscard]] std::string withWrittenFile(const std::string& event, const std::string& targetPath,
                                          const std::string& digest);
/// `event`, the end of a verification, with what the target reports of each element.
[[nodiscard]] std::string withVerifiedElements(const std::string& event, const KvTVerification& verification);
/// The target was asked to reboot.
[[nodiscard]] std::string rebootRecord(const std::string& time, bool succeeded);

} // namespace KvNReflasher
