#pragma once

#include "KvCInventoryItem.h"

#include <string>

/// Walks an inventory tree and checks on the way that items, neighbours, addresses and values fit each other. The
/// result lists every item, one a line.
[[nodiscard]] std::string listInventory(const KvCInventoryItem& root);
