#include "EmulationService.h"

#include <algorithm>

namespace {

constexpr std::int32_t serviceUnreachable = 33;

/// Made when the library is loaded: later on memory may be exhausted.
[[maybe_unused]] const EmulationService* const madeAtLoad = &EmulationService::instance();

} // namespace

EmulationService& EmulationService::instance() {
    // Never destroyed: destructors of static objects may still release handles.
    static auto* const service = new EmulationService;
    return *service;
}

void EmulationService::reset() {
    transferClients.clear();
    deviceHandles.clear();
    filters.clear();
    locks.clear();
    rootHandles.clear();
    sessions_.clear();
    targets_.clear();
}

std::int32_t EmulationService::hostStatus() const noexcept {
    if (targets_.empty()) {
        return serviceUnreachable;
    }
    const auto troubled = std::find_if(targets_.begin(), targets_.end(),
                                       [](const auto& target) { return target->description().serviceStatus != 0; });
    return troubled != targets_.end() ? (*troubled)->description().serviceStatus : 0;
}

std::vector<EmulationService::Device> EmulationService::devices() const {
    std::vector<Device> result;
    for (const auto& target : targets_) {
        for (const std::uint32_t address : target->description().addresses) {
            const auto number = static_cast<std::uint32_t>(result.size() + 1);
            result.push_back({address, number, target});
        }
    }
    return result;
}

std::shared_ptr<EmulatedTarget> EmulationService::targetAt(std::uint32_t ipAddress) const {
    for (const auto& target : targets_) {
        const auto& addresses = target->description().addresses;
        if (std::find(addresses.begin(), addresses.end(), ipAddress) != addresses.end()) {
            return target;
        }
    }
    return nullptr;
}

UpdateLockHandle* EmulationService::open(const std::shared_ptr<UpdateSession>& session) {
    sessions_[session->sharedTarget().get()] = session;
    return locks.add(session);
}

std::shared_ptr<UpdateSession> EmulationService::sessionWith(const EmulatedTarget& target) const {
    const auto found = sessions_.find(&target);
    return found != sessions_.end() ? found->second.lock() : nullptr;
}
