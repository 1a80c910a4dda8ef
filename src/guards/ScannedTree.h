#pragma once

#include "ExhaustedMemory.h"
#include "KvCInventoryManager.h"

/// A tree of KvCInventoryManager::scan(), released at its end.
class ScannedTree {
public:
    ScannedTree() = default;
    ScannedTree(const ScannedTree&) = delete;
    ScannedTree(ScannedTree&&) = delete;
    ScannedTree& operator=(const ScannedTree&) = delete;
    ScannedTree& operator=(ScannedTree&&) = delete;
    ~ScannedTree() {
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
