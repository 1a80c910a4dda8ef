#pragma once

#include "KvCErrorManager.h"
#include "KvEmulation.h"
#include "Property.h"

/// Requires that nothing of the device access service is held any more.
inline void requireNothingHeld() {
    require(KvEmulation::ledger().isClean(), "Everything that was created is released, once.");
}

/// The process's master error list, emptied.
[[nodiscard]] inline KvCErrorListPool& emptyMasterErrorList() {
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    errors.reset();
    return errors;
}
