#include "LaterUpdates.h"

std::size_t KvCLaterUpdates::AddressHash::operator()(const KvCInventoryAddress& address) const {
    std::size_t hash = 0;
    for (const KvCInventoryAddress::Component& component : address.getComponents()) {
        hash = (hash * 31 + component.identifier) * 31 + component.instance;
    }
    return hash;
}

void KvCLaterUpdates::cancelLaterUpdates(const KvCInventoryAddress& boardAddress, std::uint32_t fromPhase) {
    if (elementsOfBoards_.empty()) {
        for (const KvTUpdateElement& element : context_.inventory.elements()) {
            elementsOfBoards_[element.boardAddress].push_back(&element);
        }
    }
    for (const KvTUpdateElement* element : elementsOfBoards_[boardAddress]) {
        if (element->updateState == toBeUpdated && element->phase >= fromPhase) {
            context_.runOf(*element).updateState = updateCancelled;
            context_.callbacks.notifyElementError(element->index);
        }
    }
}
