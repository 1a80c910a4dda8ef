#pragma once

#include "KvDocuments.h"

#include <string>
#include <vector>

/// The plan for one target. `messages`: what planning for it has printed.
[[nodiscard]] std::string matrixTargetText(const KvNReflasher::KvTMatrixTarget& target, const std::string& messages);

/// How many elements of each target fare how, and the entries that no element takes.
[[nodiscard]] std::string matrixSummaryText(const std::vector<KvNReflasher::KvTMatrixTarget>& targets,
                                            const std::vector<KvNReflasher::KvTArchiveEntry>& unmatched);
