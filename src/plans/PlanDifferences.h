#pragma once

#include "KvTSavedPlan.h"

#include <string>
#include <vector>

namespace KvNReflasher {

/// Everything in which `now`, a plan of the same target and options, differs from the `saved` one: a sentence each,
/// those of the target and of the archive first, then those of elements in the order of the saved plan.
[[nodiscard]] std::vector<std::string> differencesBetween(const KvTSavedPlan& saved, const KvTSavedPlan& now);

/// Those of the target's identity and of the archive alone.
[[nodiscard]] std::vector<std::string> originDifferencesBetween(const KvTSavedPlan& saved, const KvTSavedPlan& now);

} // namespace KvNReflasher
