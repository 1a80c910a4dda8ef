#pragma once

#include "KvIArchive.h"
#include "KvTOptions.h"

#include <vector>

/// Everything that is to be said about the archive that `options` name, in the order of its description. Errors are
/// what the reader refuses the archive for, in its own words: there are some exactly when it does.
[[nodiscard]] std::vector<KvNReflasher::KvTFinding> findingsOfArchive(const KvNReflasher::KvTOptions& options);
