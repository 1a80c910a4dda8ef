#pragma once

#include <cstdint>

class KvCInventoryItem;

/// What the platform's reading of inventory tree files and of numbers does in these tests: operations that fail and
/// yield a result all the same, which the emulation's never do.
struct InventoryDataStandIn {
    /// The tree that the next extraction yields.
    KvCInventoryItem* tree = nullptr;
    bool extractionAddsError = false;
    /// What every number reads as.
    std::uint32_t number = 0;
    bool readingAddsError = false;

    static InventoryDataStandIn& instance();
};
