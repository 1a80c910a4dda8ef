#include "KvEmulation.h"

#include "EmulationService.h"
#include "KvCErrorManager.h"
#include "Ledger.h"

#include <mutex>
#include <utility>

KvEmulation::KvTServeResult KvEmulation::serve(const std::string& folder) {
    EmulatedTarget::Loaded loaded = EmulatedTarget::load(folder);
    KvTServeResult result;
    result.error = std::move(loaded.error);
    result.warnings = std::move(loaded.warnings);
    if (loaded.target != nullptr) {
        EmulationService& service = EmulationService::instance();
        const std::lock_guard guard(service.mutex());
        service.serve(std::move(loaded.target));
        result.served = true;
    }
    return result;
}

void KvEmulation::reset() {
    {
        EmulationService& service = EmulationService::instance();
        const std::lock_guard guard(service.mutex());
        service.reset();
    }
    Ledger& ledger = Ledger::instance();
    ledger.badReleases = 0;
    ledger.faultsMet = 0;
    ledger.sleptMicroseconds = 0;
    ledger.sleeps = 0;
    KvCErrorManager::getInstance()->getMasterErrorList().reset();
}
