#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryAddress.h"
#include "KvCString.h"
#include "KvCVersion.h"
#include "KvPlatformExport.h"

#include <cstdint>
#include <memory>

/// A parameter of an inventory item; only its existence is of interest, values are read with
/// KvCInventoryItem::getValue().
class KvCInventoryParameter;

/// A node of an inventory tree. The tree owns its nodes; pointers to them and to their parameters are valid until the
/// tree is released. Deleting the root releases the whole tree. A tree is read from one thread at a time.
class KV_PLATFORM_API KvCInventoryItem {
public:
    struct Impl;

    /// For whoever makes trees: an item of what `impl` holds.
    explicit KvCInventoryItem(std::unique_ptr<Impl> impl);
    KvCInventoryItem(const KvCInventoryItem&) = delete;
    KvCInventoryItem(KvCInventoryItem&&) = delete;
    KvCInventoryItem& operator=(const KvCInventoryItem&) = delete;
    KvCInventoryItem& operator=(KvCInventoryItem&&) = delete;
    /// Releases everything below, too. Throws nothing.
    ~KvCInventoryItem();

    /// Identifier and instance number of this item, as an address of one component.
    [[nodiscard]] const KvCInventoryAddress& getID() const;
    /// Address from below the root; of the root: ROOT[1].
    [[nodiscard]] const KvCInventoryAddress& getAddress() const;

    /// Null of the root.
    [[nodiscard]] KvCInventoryItem* getParent() const;
    /// The first child; null when there is none.
    [[nodiscard]] KvCInventoryItem* getFirstSubItem() const;
    /// The next sibling; null of the last one.
    [[nodiscard]] KvCInventoryItem* getNext() const;
    /// The item at `below`, relative to this item; null when there is none.
    [[nodiscard]] KvCInventoryItem* getItem(const KvCInventoryAddress& below) const;

    /// Not null when the item has the parameter at `path` (`PRODUCT / BOARD_TYPE`, `SLOT`).
    [[nodiscard]] const KvCInventoryParameter* getParameter(const KvCInventoryAddress& path) const;

    /// Read the parameter at `path` into `value`. A missing parameter, or one that is not of the type or range asked
    /// for, adds an error to `errors` and leaves `value` as it was.
    /// @{
    void getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, std::uint32_t& value) const;
    void getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, std::uint8_t& value) const;
    void getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, KvCString& value) const;
    void getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, KvCVersion& value) const;
    /// @}

private:
    std::unique_ptr<Impl> impl_;
};
