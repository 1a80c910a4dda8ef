#pragma once

#include "KvCFirmwareArchive.h"
#include "KvCTargetInventory.h"
#include "KvTOptions.h"

#include <cstdint>

class KvCConsoleWriter;

/// Prints the elements that have lost their part in the update to a rule, and the number of phases; only with the
/// verbose option.
void printPlanNotes(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                    const KvCTargetInventory& inventory, std::uint32_t phaseCount);
/// Prints the table of the plan; nothing if the target has no elements.
void printUpdatePlan(const KvCConsoleWriter& writer, const KvCFirmwareArchive& archive,
                     const KvCTargetInventory& inventory);
/// Prints the enabled elements that no archive entry matches.
void printUnsupportedElements(const KvCConsoleWriter& writer, const KvCTargetInventory& inventory);
/// Prints the elements that are up to date, unless the update is forced.
void printUpToDateElements(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                           const KvCTargetInventory& inventory);
