#pragma once

#include "KvCFirmwareArchive.h"
#include "KvTPlan.h"

#include <string>
#include <vector>

/// Checks the update files of all elements that `plan` updates: each must exist, be readable, neither be empty nor end
/// within its header, have the version and checksum that the description gives it, and be for all compatibility
/// identifiers that the description allows, if its header states them. `archive` is the one that was planned with. One
/// sentence for each fault, which begins with the name of the file, in the order of the entries.
[[nodiscard]] std::vector<std::string> preflightFindings(const KvCFirmwareArchive& archive,
                                                         const KvNReflasher::KvTOptions& options,
                                                         const KvNReflasher::KvTPlan& plan);
