#pragma once

#include "KvCFirmwareArchive.h"
#include "PlannedUpdate.h"

#include <string>
#include <vector>

/// Checks the update files of all elements that are to be updated: each must exist, be readable, and have the version
/// and checksum that the description gives it, where its header tells them. One sentence for each fault.
[[nodiscard]] std::vector<std::string> preflightFindings(const KvCFirmwareArchive& archive,
                                                         const KvNReflasher::KvTOptions& options,
                                                         const std::vector<KvTPlannedElement>& elements);
