#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryAddress.h"
#include "KvCInventoryItem.h"
#include "KvTOptions.h"
#include "KvTUpdateElement.h"

#include <cstdint>
#include <list>
#include <optional>
#include <vector>

class KvCConsoleWriter;

/// The target's host computing node and computing node, as far as it has them.
struct KvTNodeAddresses {
    std::optional<KvCInventoryAddress> hcn;
    std::optional<KvCInventoryAddress> cn;
    /// Of the HCN, then of the CN, as far as they state them.
    std::vector<std::uint32_t> serialNumbers;
};

/// Reads what the target reports as installed on the element of an inventory item: VALID, ACTIVE, checksum and version.
void readInstalled(KvCErrorListPool& errors, const KvCInventoryItem& item, KvTUpdateElement& element);

/// True for a custom element that the options leave out of the update.
[[nodiscard]] inline bool isLeftOutAsCustom(const KvTUpdateElement& element, const KvNReflasher::KvTOptions& options) {
    return element.custom != 0 && options.disableCustomElements;
}

/// Walks the scanned tree and makes a record of every updatable element that the options select. `elements` and
/// `nodes` are filled anew. Elements are grouped by unit, units in the order of their first element. Structural faults
/// print a warning and leave the item out; what the inventory service reports of its values goes to `errors`.
void walkInventory(KvCErrorListPool& errors, const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                   const KvCInventoryItem& root, std::list<KvTUpdateElement>& elements, KvTNodeAddresses& nodes);
