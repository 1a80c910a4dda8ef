#include "InventoryTree.h"

#include <utility>

namespace {

/// Made when the library is loaded: later on memory may be exhausted.
[[maybe_unused]] const auto* const madeAtLoad = &scannedTrees();

} // namespace

std::unique_ptr<KvCInventoryItem> KvCInventoryItem::Impl::makeTree(std::unique_ptr<InventoryTreeSource> source) {
    const InventoryTreeSource& shown = *source;
    std::unique_ptr<KvCInventoryItem> root = makeItem(shown, *shown.root, nullptr);
    root->impl_->ownedSource = std::move(source);
    return root;
}

// The depth is limited by that of a description.
std::unique_ptr<KvCInventoryItem> KvCInventoryItem::Impl::makeItem(const InventoryTreeSource& source,
                                                                   const ItemDescription& description,
                                                                   KvCInventoryItem* parent) {
    auto impl = std::make_unique<Impl>();
    impl->source = &source;
    impl->description = &description;
    impl->parent = parent;
    const auto installed = source.installed.find(&description);
    impl->installed = installed != source.installed.end() ? &installed->second : nullptr;
    auto item = std::make_unique<KvCInventoryItem>(std::move(impl));
    auto& items = item->impl_->items;
    items.reserve(description.items().size());
    for (const auto& child : description.items()) {
        items.push_back(makeItem(source, *child, item.get()));
        if (items.size() > 1) {
            items[items.size() - 2]->impl_->next = items.back().get();
        }
    }
    return item;
}

std::unordered_set<KvCInventoryItem*>& scannedTrees() {
    // Never destroyed: destructors of static objects may still delete trees.
    static auto* const trees = new std::unordered_set<KvCInventoryItem*>;
    return *trees;
}

void deleteScannedTrees() {
    const auto& trees = scannedTrees();
    // Each tree takes itself out of the set.
    while (!trees.empty()) {
        delete *trees.begin();
    }
}
