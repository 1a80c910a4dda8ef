#pragma once

#include "Faults.h"
#include "ItemDescription.h"
#include "JsonPlace.h"
#include "KvCErrorManager.h"

#include <memory>
#include <vector>

/// Readers of the parts of a description. Each records why it refuses a value and where.

/// Reads an item and everything below it as the root of an inventory; null if it is refused.
[[nodiscard]] std::unique_ptr<ItemDescription> readRootItem(const JsonPlace& place);
/// Reads a list of error objects in place of `entries`; false if it is refused.
[[nodiscard]] bool readErrorEntries(const JsonPlace& place, std::vector<KvTErrorEntry>& entries);
/// Reads a list of fault objects in place of `faults`; false if it is refused.
[[nodiscard]] bool readFaults(const JsonPlace& place, std::vector<Fault>& faults);
