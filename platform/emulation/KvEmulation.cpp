#include "KvEmulation.h"

#include "EmulationService.h"
#include "KvCErrorManager.h"
#include "KvNRtosAbstraction.h"
#include "Ledger.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <utility>

namespace {

/// Enough for "255.255.255.255".
constexpr std::size_t addressTextSize = 16;

} // namespace

KvEmulation::KvTServeResult KvEmulation::serve(const std::string& folder) {
    EmulatedTarget::Loaded loaded = EmulatedTarget::load(folder);
    KvTServeResult result;
    result.error = std::move(loaded.error);
    result.warnings = std::move(loaded.warnings);
    if (loaded.target != nullptr) {
        for (const std::uint32_t address : loaded.target->description().addresses) {
            std::array<char, addressTextSize> text{};
            KvNRtosAbstraction::ipToString(address, text.data(), text.size());
            result.addresses.emplace_back(text.data());
        }
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
