#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryItem.h"

#include <cstdint>

/// Whether the target can be rebooted by the updater.
enum KvERebootSupport : std::uint32_t {
    rebootSupported = 0,
    rebootNotDetermined = 1, ///< no scan yet, or no active firmware element to judge by
    rebootNotByFirmware = 2, ///< the installed firmware is too old
    rebootNotByDevice = 3,
    rebootCheckFailed = 4
};

/// Judges by the target's first node: its board model and the version of its active firmware. `status` is left alone
/// when no firmware element is active. `root` is the root of the scanned tree.
void determineRebootSupport(KvCErrorListPool& errors, const KvCInventoryItem& root, std::uint32_t& status);
