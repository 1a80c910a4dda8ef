#pragma once

#include "KvTOptions.h"
#include "MatrixRecords.h"

#include <optional>
#include <string>

/// Reads the archive of the options. Nothing when it cannot be read, which is then said on standard error.
[[nodiscard]] std::optional<KvTMatrixArchive> readMatrixArchive(const KvNReflasher::KvTOptions& options);

/// Serves the emulated target in `folder` (UTF-8) alone and plans an update of what is at its first address. What is
/// odd about its description is said.
[[nodiscard]] KvTMatrixTarget planMatrixTarget(const KvNReflasher::KvTOptions& options, const KvTMatrixArchive& archive,
                                               const std::string& folder);
