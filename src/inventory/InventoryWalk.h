#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryAddress.h"
#include "KvCInventoryItem.h"
#include "KvTOptions.h"
#include "KvTUpdateElement.h"

#include <list>
#include <optional>

class KvCConsoleWriter;

/// The addresses of the target's host computing node and computing node, as far as it has them.
struct KvTNodeAddresses {
    std::optional<KvCInventoryAddress> hcn;
    std::optional<KvCInventoryAddress> cn;
};

/// Walks the scanned tree and makes a record of every updatable element that the options select. `elements` and
/// `nodes` are filled anew. Elements are grouped by unit, units in the order of their first element. Structural faults
/// print a warning and leave the item out; what the inventory service reports of its values goes to `errors`.
void walkInventory(KvCErrorListPool& errors, const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                   const KvCInventoryItem& root, std::list<KvTUpdateElement>& elements, KvTNodeAddresses& nodes);
