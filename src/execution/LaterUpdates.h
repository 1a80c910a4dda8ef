#pragma once

#include "KvCInventoryAddress.h"
#include "UpdateContext.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

/// Cancels updates of later phases on boards where one has failed.
class KvCLaterUpdates {
public:
    /// `context` must outlive the object.
    explicit KvCLaterUpdates(const KvTUpdateContext& context) : context_(context) {}

    /// Cancels what is still to be updated on a board from phase `fromPhase` on.
    void cancelLaterUpdates(const KvCInventoryAddress& boardAddress, std::uint32_t fromPhase);

private:
    struct AddressHash {
        [[nodiscard]] std::size_t operator()(const KvCInventoryAddress& address) const;
    };

    const KvTUpdateContext& context_;
    /// The elements of each board, by its address; filled when an update first fails.
    std::unordered_map<KvCInventoryAddress, std::vector<const KvTUpdateElement*>, AddressHash> elementsOfBoards_;
};
