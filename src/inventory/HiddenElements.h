#pragma once

#include "KvCInventoryItem.h"
#include "KvTOptions.h"
#include "KvTPlan.h"

#include <vector>

/// The elements of the tree at `root` that a session with these options does not look at, in the order of the target.
/// Errors of reading the tree are dropped.
[[nodiscard]] std::vector<KvNReflasher::KvTHiddenElement> hiddenElementsOf(const KvCInventoryItem& root,
                                                                           const KvNReflasher::KvTOptions& options);
