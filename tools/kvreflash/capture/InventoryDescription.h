#pragma once

#include "KvNJson.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

class KvCInventoryItem;

/// An inventory as an emulated target's description has it.
struct DescribedInventory {
    /// The root item; nothing when an emulated target cannot have it.
    std::optional<KvNJson::json> root;
    /// The root included.
    std::size_t itemCount = 0;
    std::size_t parameterCount = 0;
    /// What is not described as the target has it; one sentence each.
    std::vector<std::string> warnings;
};

/// Describes everything below `root` that a description can hold: items and parameters with the identifiers of
/// KvNInventoryIDs. Each value has the type by which the target lets it be read.
[[nodiscard]] DescribedInventory describeInventory(const KvCInventoryItem& root);
