#include "KvEmulation.h"

#include "EmulatedTarget.h"
#include "EmulationService.h"
#include "InventoryTree.h"
#include "IpV4Text.h"
#include "KvCErrorManager.h"
#include "Ledger.h"
#include "Operation.h"

#include <cstdint>
#include <mutex>
#include <utility>

KvEmulation::KvTServeResult KvEmulation::serve(const std::string& folder) {
    EmulatedTarget::Loaded loaded = EmulatedTarget::load(folder);
    KvTServeResult result;
    result.error = std::move(loaded.error);
    result.warnings = std::move(loaded.warnings);
    if (loaded.target != nullptr) {
        for (const std::uint32_t address : loaded.target->description().addresses) {
            result.addresses.push_back(ipV4Text(address));
        }
        EmulationService& service = EmulationService::instance();
        const std::lock_guard guard(service.mutex());
        service.serve(std::move(loaded.target));
        result.served = true;
    }
    return result;
}

KvEmulation::KvTLedger KvEmulation::ledger() {
    const Ledger& counts = Ledger::instance();
    KvTLedger result;
    result.errorLists = counts.errorLists;
    result.filters = counts.filters;
    result.deviceHandles = counts.deviceHandles;
    result.transferClients = counts.transferClients;
    result.rootHandles = counts.rootHandles;
    result.inventoryTrees = counts.inventoryTrees;
    result.locks = counts.locks;
    result.remoteFiles = counts.remoteFiles;
    result.countLocks = counts.countLocks;
    result.badReleases = counts.badReleases;
    result.faultsMet = counts.faultsMet;
    result.sleptMicroseconds = counts.sleptMicroseconds;
    result.sleeps = counts.sleeps;
    return result;
}

void KvEmulation::reset() {
    {
        EmulationService& service = EmulationService::instance();
        const std::lock_guard guard(service.mutex());
        deleteScannedTrees();
        service.reset();
    }
    Ledger& ledger = Ledger::instance();
    ledger.badReleases = 0;
    ledger.faultsMet = 0;
    ledger.sleptMicroseconds = 0;
    ledger.sleeps = 0;
    KvCErrorManager::getInstance()->getMasterErrorList().reset();
}

std::vector<std::string> KvEmulation::faultOperations() {
    std::vector<std::string> names;
    for (std::size_t operation = 0; operation < operationCount; ++operation) {
        names.emplace_back(traitsOf(static_cast<Operation>(operation)).name);
    }
    return names;
}
