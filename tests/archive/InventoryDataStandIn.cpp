#include "InventoryDataStandIn.h"

#include "KvCInventoryData.h"

#include <utility>

namespace {

InventoryDataStandIn& standIn() {
    return InventoryDataStandIn::instance();
}

void addErrorWhen(bool wanted, KvCErrorListPool& errors) {
    if (wanted) {
        KvTErrorEntry entry;
        entry.code = 1;
        entry.text = "failed";
        errors.addError(std::move(entry));
    }
}

} // namespace

InventoryDataStandIn& InventoryDataStandIn::instance() {
    static InventoryDataStandIn instance;
    return instance;
}

void KvCInventoryData::extractInventoryTreeFromFile(KvCErrorListPool& errors, const char* /*path*/,
                                                    KvCInventoryItem*& root, bool& hasChecksum,
                                                    std::uint32_t& /*checksum*/) {
    root = std::exchange(standIn().tree, nullptr);
    hasChecksum = false;
    addErrorWhen(standIn().extractionAddsError, errors);
}

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& /*path*/,
                                std::uint32_t& value) const {
    value = standIn().number;
    addErrorWhen(standIn().readingAddsError, errors);
}
