#pragma once

#include "EmulatedTarget.h"
#include "ItemDescription.h"
#include "KvCInventoryItem.h"
#include "Ledger.h"

#include <memory>
#include <unordered_set>
#include <vector>

/// What all items of a tree that a client got refer to.
struct InventoryTreeSource {
    /// The description that the tree shows; kept alive.
    std::shared_ptr<const ItemDescription> root;
    /// What differs from the description.
    InstalledElements installed;
    /// The target that was scanned; null of a tree from a file.
    std::shared_ptr<EmulatedTarget> target;
    HeldCount count;
};

struct KvCInventoryItem::Impl {
    /// Only of the root; everything else refers to it.
    std::unique_ptr<InventoryTreeSource> ownedSource;
    const InventoryTreeSource* source = nullptr;
    const ItemDescription* description = nullptr;
    /// Null when nothing was installed.
    const InstalledValues* installed = nullptr;
    KvCInventoryItem* parent = nullptr;
    KvCInventoryItem* next = nullptr;
    std::vector<std::unique_ptr<KvCInventoryItem>> items;

    /// The tree that shows `source`.
    [[nodiscard]] static std::unique_ptr<KvCInventoryItem> makeTree(std::unique_ptr<InventoryTreeSource> source);

private:
    [[nodiscard]] static std::unique_ptr<KvCInventoryItem>
    makeItem(const InventoryTreeSource& source, const ItemDescription& description, KvCInventoryItem* parent);
};

/// The roots of the scanned trees that clients hold. Whoever uses it holds the service's mutex. It lives as long as the
/// process.
[[nodiscard]] std::unordered_set<KvCInventoryItem*>& scannedTrees();
/// Deletes these trees; the caller holds the service's mutex.
void deleteScannedTrees();
