#pragma once

#include "KvTOutcome.h"
#include "KvTSavedPlan.h"

#include <optional>
#include <string>

/// Reads the saved plan in the file at `path`. Nothing, with a verdict of class stale, if there is none that still is
/// what was saved.
[[nodiscard]] std::optional<KvNReflasher::KvTSavedPlan> readPlanFile(const std::string& path,
                                                                     KvNReflasher::KvTVerdict& verdict);
