#pragma once

#include "KvCFirmwareArchive.h"
#include "KvTPlan.h"

#include <string>
#include <vector>

/// Checks the update files of all elements that `plan` updates: each must exist, be readable, and have the version and
/// checksum that the description gives it, where its header tells them. `archive` is the one that was planned with. One
/// sentence for each fault, in the order of the entries.
[[nodiscard]] std::vector<std::string> preflightFindings(const KvCFirmwareArchive& archive,
                                                         const KvNReflasher::KvTOptions& options,
                                                         const KvNReflasher::KvTPlan& plan);
