#pragma once

#include "KvCErrorManager.h"
#include "KvCString.h"
#include "KvHostInterface.h"
#include "KvTOptions.h"

#include <cstdint>

class KvCConsoleWriter;

/// Finds the session's target through the device access service.
class KvCTargetAccess {
public:
    /// Both must outlive the object.
    KvCTargetAccess(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options)
        : writer_(writer), options_(options) {}

    /// Turns the target text of the options (host name or IPv4 address) into an address. True when there is one.
    [[nodiscard]] bool resolveTarget(KvCErrorListPool& errors);

    /// Finds the one device at the target's address. 0 and a handle, which the caller gives back with
    /// KvHIM_deleteDeviceHandle(); otherwise the service's status, or -1 when there is no address or not exactly one
    /// device, and a null handle.
    [[nodiscard]] std::int32_t findDevice(KvCErrorListPool& errors, KvHIMDeviceHandle& device) const;

    /// Checks that the device can be found; prints why not.
    [[nodiscard]] bool checkTargetAccessible(KvCErrorListPool& errors) const;

    /// Resets the device; prints why that failed.
    [[nodiscard]] bool rebootDevice(KvCErrorListPool& errors) const;

    /// The target's address in dotted form; empty until it is resolved.
    [[nodiscard]] const KvCString& ipAddress() const { return ipAddress_; }

private:
    [[nodiscard]] bool resolveName();
    [[nodiscard]] std::int32_t setUpFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter) const;

    const KvCConsoleWriter& writer_;
    const KvNReflasher::KvTOptions& options_;
    KvCString ipAddress_;
};
