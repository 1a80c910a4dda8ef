#pragma once

#include "KvCTargetInventory.h"
#include "KvTOptions.h"

class KvCConsoleWriter;

/// Prints what became of an update: the errors of each element that failed or was cancelled, and the verdict.
/// `filesMissing`: elements were left out because their update files are missing. True if the update succeeded.
[[nodiscard]] bool printUpdateResults(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                                      const KvCTargetInventory& inventory, bool filesMissing);
