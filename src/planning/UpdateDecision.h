#pragma once

#include "KvTArchiveFile.h"
#include "KvTOptions.h"
#include "KvTPlan.h"
#include "KvTUpdateElement.h"

#include <vector>

/// Why an element that `file` matches needs an update, in the order of KvEReason; empty if it is up to date.
[[nodiscard]] std::vector<KvNReflasher::KvEReason>
outOfDateReasons(const KvTUpdateElement& element, const KvTArchiveFile& file, const KvNReflasher::KvTOptions& options);

/// What the planner has decided on an element, and why. `file` is the matching entry, or null.
[[nodiscard]] KvNReflasher::KvTDecision decisionOn(const KvTUpdateElement& element, const KvTArchiveFile* file,
                                                   const KvNReflasher::KvTOptions& options);

/// True when an element that is up to date takes no part in the update: always, but for "standard" entries of a forced
/// one.
[[nodiscard]] bool leavesOutUpToDate(const KvTArchiveFile& file, const KvNReflasher::KvTOptions& options);

/// True if the entry has a lower version than is installed; both must be known.
[[nodiscard]] bool isDowngrade(const KvTUpdateElement& element, const KvTArchiveFile& file);

/// True for an FPGA element that no entry matches and whose carrier board the target does not have.
[[nodiscard]] bool lacksCarrierBoard(const KvTUpdateElement& element);
