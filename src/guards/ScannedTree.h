#pragma once

#include "ExhaustedMemory.h"
#include "KvCInventoryManager.h"

/// A tree of KvCInventoryManager::scan(), released at its end.
class KvCScannedTree {
public:
    KvCScannedTree() = default;
    KvCScannedTree(const KvCScannedTree&) = delete;
    KvCScannedTree(KvCScannedTree&&) = delete;
    KvCScannedTree& operator=(const KvCScannedTree&) = delete;
    KvCScannedTree& operator=(KvCScannedTree&&) = delete;
    ~KvCScannedTree() {
        if (root_ != nullptr) {
            attempt([this] { KvCInventoryManager::getInstance()->deleteInventoryTree(root_); });
        }
    }

    /// What the scan writes to; once for each tree.
    [[nodiscard]] KvCInventoryItem*& out() { return root_; }
    /// Null without a tree.
    [[nodiscard]] const KvCInventoryItem* root() const { return root_; }

private:
    KvCInventoryItem* root_ = nullptr;
};
