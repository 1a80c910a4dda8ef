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
    /// All must outlive the object; `errors` receives the errors of the session.
    KvCTargetAccess(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options, KvCErrorListPool& errors)
        : writer_(writer), options_(options), errors_(errors) {}

    /// Turns the target text of the options (host name or IPv4 address) into an address. True when there is one.
    [[nodiscard]] bool resolveTarget();

    /// Finds the one device at the target's address; what goes wrong is added to `errors`. 0 and a handle, which the
    /// caller gives back with KvHIM_deleteDeviceHandle(); otherwise the service's status, or -1 when there is no
    /// address or not exactly one device, and a null handle.
    [[nodiscard]] std::int32_t findDevice(KvCErrorListPool& errors, KvHIMDeviceHandle& device) const;

    /// Checks that the device can be found; prints why not.
    [[nodiscard]] bool checkTargetAccessible() const;

    /// Resets the device; prints why that failed.
    [[nodiscard]] bool rebootDevice() const;

    /// The target's address in dotted form; empty until it is resolved.
    [[nodiscard]] const KvCString& ipAddress() const { return ipAddress_; }

private:
    [[nodiscard]] bool resolveName();
    [[nodiscard]] std::int32_t setUpFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter) const;

    const KvCConsoleWriter& writer_;
    const KvNReflasher::KvTOptions& options_;
    KvCErrorListPool& errors_;
    KvCString ipAddress_;
};
