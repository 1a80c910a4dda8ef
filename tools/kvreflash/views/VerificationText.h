#pragma once

#include "KvTOutcome.h"

#include <string>

/// The table of the elements that are not as expected, and a sentence that sums all up.
[[nodiscard]] std::string verificationText(const KvNReflasher::KvTPlan& plan,
                                           const KvNReflasher::KvTVerification& verification);

/// The list of the elements that no entry matches; empty if there are none.
[[nodiscard]] std::string elementsWithoutEntryText(const KvNReflasher::KvTPlan& plan);

/// "as expected", "differs", ...
[[nodiscard]] const char* wordsFor(KvNReflasher::KvEVerified result);
