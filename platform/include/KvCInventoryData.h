#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryItem.h"
#include "KvPlatformExport.h"

#include <cstdint>

/// Inventory trees outside a target.
class KV_PLATFORM_API KvCInventoryData {
public:
    /// Reads the inventory tree file at `path` (UTF-8). On success `root` receives the tree, which the caller deletes,
    /// `hasChecksum` tells whether the file states a checksum of its contents, and `checksum` receives it. On failure
    /// an error is added to `errors` and `root` is null.
    static void extractInventoryTreeFromFile(KvCErrorListPool& errors, const char* path, KvCInventoryItem*& root,
                                             bool& hasChecksum, std::uint32_t& checksum);
};
