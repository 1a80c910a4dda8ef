#pragma once

#include "MatrixRecords.h"

#include <vector>

/// Writes the plan for one target to standard output.
void writeMatrixTarget(const KvTMatrixTarget& target);

/// Writes to standard output how many elements of each target would fare how, and the entries that fit none of them.
void writeMatrixSummary(const std::vector<KvTMatrixTarget>& targets,
                        const std::vector<KvTMatrixEntry>& unmatchedEntries);
