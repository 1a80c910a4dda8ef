#pragma once

#include "ItemDescription.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

/// What an inventory tree file holds.
struct InventoryTreeFile {
    /// Null: the file is none.
    std::unique_ptr<ItemDescription> root;
    /// What the file states beside its tree.
    std::optional<std::uint32_t> checksum;

    /// The first FIRMWARE item in preorder, the root included; null when there is none.
    [[nodiscard]] const ItemDescription* firmware() const;
};

/// Reads the file from its position to its end. When it is no inventory tree file, the root is null and `reason` says
/// why. A file of another kind is given up at its first byte that is not blank.
[[nodiscard]] InventoryTreeFile readInventoryTreeFile(std::FILE& file, std::string& reason);
