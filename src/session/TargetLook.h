#pragma once

#include "KvTOptions.h"
#include "KvTOutcome.h"
#include "KvTPlan.h"

/// Finds and scans the target of the options once more and takes down what it reports of each element of the plan. The
/// session's own messages, errors and handles stay as they are.
[[nodiscard]] KvNReflasher::KvTLook lookAtTarget(const KvNReflasher::KvTOptions& options,
                                                 const KvNReflasher::KvTPlan& plan);
