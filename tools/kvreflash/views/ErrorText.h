#pragma once

#include "KvTOutcome.h"

#include <string>
#include <vector>

/// An error in one line, such as "ERROR 0x2fff (Host PC): Fault at scan."
[[nodiscard]] std::string errorText(const KvNReflasher::KvTErrorInfo& error);

/// A list of errors under a heading; empty if there are none.
[[nodiscard]] std::string errorsText(const std::vector<KvNReflasher::KvTErrorInfo>& errors);
