#pragma once

#include "KvCFirmwareArchive.h"
#include "KvCTargetInventory.h"
#include "KvTOptions.h"
#include "KvTPlan.h"

#include <cstdint>
#include <string>

/// What the target reports as installed on an element.
[[nodiscard]] KvNReflasher::KvTInstalled installedOn(const KvTUpdateElement& element);

/// The elements of a scanned target as a plan without decisions.
[[nodiscard]] KvNReflasher::KvTPlan makeElementList(const KvCTargetInventory& inventory, const KvCString& address);

/// What the planner has decided for a scanned target, once it has planned.
[[nodiscard]] KvNReflasher::KvTPlan makePlan(const KvCFirmwareArchive& archive, const KvCTargetInventory& inventory,
                                             const KvCString& address, std::uint32_t phaseCount,
                                             const KvNReflasher::KvTOptions& options);

/// Takes an element out of the plan, for a reason against the update.
void disable(KvNReflasher::KvTPlannedElement& element, KvNReflasher::KvEReason reason);

/// Names the elements that decide that the target is not supported, in one line.
[[nodiscard]] std::string unsupportedMessage(const KvNReflasher::KvTPlan& plan);
