#pragma once

#include "KvCString.h"
#include "KvPlatformExport.h"

#include <cstdint>
#include <vector>

/// Path of an item or parameter in the inventory tree: components of an identifier and an instance number (from 1).
/// A value type. The root item's children have addresses of one component; an address below an item is written with
/// operator/ (`PRODUCT / BOARD_TYPE`, `NETWORK / ION[3]`).
class KV_PLATFORM_API KvCInventoryAddress {
public:
    /// One step of a path.
    struct Component {
        /// One of KvNInventoryIDs; 0 names nothing.
        std::uint32_t identifier = 0;
        /// Position among the siblings of the same identifier, from 1.
        std::uint32_t instance = 1;
        /// Equal when both numbers are.
        friend bool operator==(const Component&, const Component&) noexcept = default;
    };

    /// The empty address; it names nothing.
    KvCInventoryAddress() = default;
    /// An address of one component.
    explicit KvCInventoryAddress(std::uint32_t identifier, std::uint32_t instance = 1)
        : components_{{identifier, instance}} {}

    /// This address followed by the components of `below`.
    friend KvCInventoryAddress operator/(KvCInventoryAddress above, const KvCInventoryAddress& below) {
        above.components_.insert(above.components_.end(), below.components_.begin(), below.components_.end());
        return above;
    }
    /// The same address with the instance number of the last component replaced; the empty address stays empty.
    [[nodiscard]] KvCInventoryAddress operator[](std::uint32_t instance) const {
        KvCInventoryAddress result = *this;
        if (!result.components_.empty()) {
            result.components_.back().instance = instance;
        }
        return result;
    }

    /// Equal when all identifiers and instance numbers are.
    friend bool operator==(const KvCInventoryAddress&, const KvCInventoryAddress&) noexcept = default;

    /// Identifier of the last component; 0 of the empty address.
    [[nodiscard]] std::uint32_t getCategory() const noexcept {
        return components_.empty() ? 0 : components_.back().identifier;
    }
    /// The last component as an address of its own; empty of the empty address.
    [[nodiscard]] KvCInventoryAddress getLastElement() const {
        return components_.empty() ? KvCInventoryAddress() : KvCInventoryAddress(components_.back());
    }
    /// True of the address that names nothing.
    [[nodiscard]] bool isEmpty() const noexcept { return components_.empty(); }
    /// The components from the top; valid as long as the address is not changed.
    [[nodiscard]] const std::vector<Component>& getComponents() const noexcept { return components_; }

    /// The components as `NAME[instance]`, joined by "/".
    [[nodiscard]] KvCString toString() const;

private:
    explicit KvCInventoryAddress(Component component) : components_{component} {}

    std::vector<Component> components_;
};
