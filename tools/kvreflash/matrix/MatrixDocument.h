#pragma once

#include "MatrixRecords.h"

#include <string>
#include <vector>

/// The plans as a JSON document, line end included; see docs/schemas/matrix.schema.json.
[[nodiscard]] std::string matrixDocument(const KvTArchiveInfo& archive, const std::vector<KvTMatrixTarget>& targets,
                                         const std::vector<KvTMatrixEntry>& unmatchedEntries);
