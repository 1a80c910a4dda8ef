#pragma once

#include "EmulatedTarget.h"
#include "HandleRegistry.h"
#include "Ledger.h"
#include "UpdateSession.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

// What a client sees of a handle is its address only.
class KvCInventoryRootHandle {};
struct KvHIMSFilter {};
struct KvHIMSDevice {};
struct KvHIMSFTClient {};
struct UpdateLockHandle {};

/// A handle that stands for a target.
struct TargetHandle {
    std::shared_ptr<EmulatedTarget> target;
    HeldCount count;
};

/// A device filter, whose life is one device list session.
struct DeviceFilter {
    HeldCount count;
    /// The address that devices must have, when set.
    std::optional<std::uint32_t> address;
    bool isApplied = false;
    /// Whether a target that has been asked for is hidden from this session.
    std::unordered_map<const EmulatedTarget*, bool> hiddenTargets;
};

/// The emulated device access service of this process: the targets that it serves and everything that clients hold.
/// Whoever uses it holds its mutex, as Call does.
class EmulationService {
public:
    /// Lives as long as the process.
    static EmulationService& instance();

    EmulationService(const EmulationService&) = delete;
    EmulationService(EmulationService&&) = delete;
    EmulationService& operator=(const EmulationService&) = delete;
    EmulationService& operator=(EmulationService&&) = delete;

    [[nodiscard]] std::recursive_mutex& mutex() noexcept { return mutex_; }

    [[nodiscard]] const std::vector<std::shared_ptr<EmulatedTarget>>& targets() const noexcept { return targets_; }
    void serve(std::shared_ptr<EmulatedTarget> target) { targets_.push_back(std::move(target)); }
    /// Forgets targets and handles; locks end.
    void reset();

    /// What every host interface operation returns at this moment; 0: they work.
    [[nodiscard]] std::int32_t hostStatus() const noexcept;

    /// A device that the service knows; its number is its place among all devices, from 1.
    struct Device {
        std::uint32_t ipAddress = 0;
        std::uint32_t number = 0;
        std::shared_ptr<EmulatedTarget> target;
    };
    [[nodiscard]] std::vector<Device> devices() const;
    /// The first target that has the address; null when there is none.
    [[nodiscard]] std::shared_ptr<EmulatedTarget> targetAt(std::uint32_t ipAddress) const;

    /// Returns the lock handle of a new update session.
    [[nodiscard]] UpdateLockHandle* open(const std::shared_ptr<UpdateSession>& session);
    /// The update session with `target` that was opened last; null if it has ended.
    [[nodiscard]] std::shared_ptr<UpdateSession> sessionWith(const EmulatedTarget& target) const;

    HandleRegistry<KvCInventoryRootHandle, TargetHandle> rootHandles;
    HandleRegistry<UpdateLockHandle, std::shared_ptr<UpdateSession>> locks;
    HandleRegistry<KvHIMSFilter, DeviceFilter> filters;
    HandleRegistry<KvHIMSDevice, TargetHandle> deviceHandles;
    HandleRegistry<KvHIMSFTClient, TargetHandle> transferClients;

private:
    EmulationService() = default;
    ~EmulationService() = default;

    std::recursive_mutex mutex_;
    std::vector<std::shared_ptr<EmulatedTarget>> targets_;
    std::unordered_map<const EmulatedTarget*, std::weak_ptr<UpdateSession>> sessions_;
};
