#include "KvCTargetAccess.h"

#include "CallJudgement.h"
#include "HostInterfaceHandles.h"
#include "KvCConsoleWriter.h"
#include "KvCStringConversion.h"
#include "KvNRtosAbstraction.h"
#include "Network.h"
#include "TextConversion.h"

#include <array>
#include <vector>

namespace {

/// Status of the failures that this class finds itself.
constexpr std::int32_t deviceNotFound = -1;
/// Statuses of the service that are treated apart.
constexpr std::int32_t bufferTooSmall = 21;
constexpr std::int32_t serviceUnreachable = 33;
constexpr std::int32_t serviceOutdated = 46;

constexpr std::uint32_t filterKind = 1;
constexpr std::uint32_t filterByIpAddress = 6;
constexpr std::uint32_t filterParameter8 = 8;
constexpr std::uint32_t filterParameter9 = 9;
/// A list of this many devices or more is not fetched.
constexpr std::int32_t deviceLimit = 1000;

constexpr std::size_t addressTextSize = 256;

KvCString addressText(std::uint32_t address) {
    std::array<char, addressTextSize> text{};
    KvNRtosAbstraction::ipToString(address, text.data(), text.size() - 1);
    return {text.data()};
}

/// Parses a dotted address; false when that added an error.
bool parseAddress(KvCErrorListPool& errors, const KvCString& text, std::uint32_t& address) {
    return callSucceeds(errors, [&] { address = KvNRtosAbstraction::stringToIpV4(errors, text.c_str()); });
}

std::int32_t setParameter(KvCErrorListPool& errors, KvHIMFilterHandle filter, std::uint32_t parameter,
                          std::uint32_t value) {
    return KvHIM_setFilterParameter(errors, filter, parameter, &value, sizeof value);
}

/// The devices that pass the filter.
std::int32_t listDevices(KvCErrorListPool& errors, KvHIMFilterHandle filter, std::vector<KvHIMSDeviceInfo>& devices,
                         std::int32_t& count) {
    count = 0;
    const std::int32_t status = KvHIM_getDeviceList(errors, filter, nullptr, 0, count);
    if (status != bufferTooSmall || count < 0 || count >= deviceLimit) {
        return status;
    }
    devices.resize(static_cast<std::size_t>(count));
    errors.reset(); // drops the error of asking for the size
    return KvHIM_getDeviceList(errors, filter, devices.data(), count, count);
}

/// Pairs a successful start of the sockets with their stop.
class SocketService {
public:
    SocketService() : started_(startSockets()) {}
    SocketService(const SocketService&) = delete;
    SocketService& operator=(const SocketService&) = delete;
    ~SocketService() {
        if (started_) {
            stopSockets();
        }
    }
    [[nodiscard]] bool started() const { return started_; }

private:
    bool started_;
};

} // namespace

bool KvCTargetAccess::resolveTarget() {
    if (!options_.target.empty() && isLetter(options_.target.front())) {
        return resolveName();
    }
    std::uint32_t address = 0;
    if (parseAddress(errors_, toUtf8(options_.target), address)) {
        ipAddress_ = addressText(address);
    }
    return !ipAddress_.isEmpty();
}

bool KvCTargetAccess::resolveName() {
    const SocketService sockets;
    if (!sockets.started()) {
        if (options_.verbose) {
            writer_.print(L"ERROR: Unable to initialize Windows socket service.\n");
        }
        return false;
    }
    std::uint32_t address = 0;
    if (resolveHostName(toUtf8(options_.target).c_str(), address)) {
        ipAddress_ = addressText(address);
    } else if (options_.verbose) {
        writer_.print(L"ERROR: Hostname cannot be resolved!\n");
    }
    return !ipAddress_.isEmpty();
}

std::int32_t KvCTargetAccess::setUpFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter) const {
    if (const std::int32_t status = setParameter(errors, filter, filterParameter8, 1); status != 0) {
        return status;
    }
    if (const std::int32_t status = setParameter(errors, filter, filterParameter9, 0); status != 0) {
        return status;
    }
    std::uint32_t address = 0;
    if (ipAddress_.isEmpty() || !parseAddress(errors, ipAddress_, address)) {
        return deviceNotFound;
    }
    if (const std::int32_t status = setParameter(errors, filter, filterByIpAddress, address); status != 0) {
        return status;
    }
    return KvHIM_applyFilter(errors, filter);
}

std::int32_t KvCTargetAccess::findDevice(KvCErrorListPool& errors, KvHIMDeviceHandle& device) const {
    device = nullptr;
    DeviceFilter filter(errors);
    if (const std::int32_t status =
            filter.createBy([&](KvHIMFilterHandle& handle) { return KvHIM_createFilter(errors, handle, filterKind); });
        status != 0) {
        return status;
    }
    if (const std::int32_t status = setUpFilter(errors, filter.get()); status != 0) {
        return status;
    }
    std::vector<KvHIMSDeviceInfo> devices;
    std::int32_t count = 0;
    if (const std::int32_t status = listDevices(errors, filter.get(), devices, count); status != 0) {
        return status;
    }
    if (count != 1 || devices.empty()) {
        return deviceNotFound;
    }
    if (const std::int32_t status = filter.release(); status != 0) {
        return status;
    }
    KvHIMDeviceHandle created = nullptr;
    const std::int32_t status = KvHIM_createDeviceHandle(errors, devices.front(), created);
    if (status == 0) {
        device = created;
    }
    return status;
}

bool KvCTargetAccess::checkTargetAccessible() const {
    DeviceHandle device(errors_);
    const std::int32_t status = device.createBy([&](KvHIMDeviceHandle& handle) { return findDevice(errors_, handle); });
    if (status == serviceUnreachable) {
        writer_.print(L"\nERROR: Unable to communicate with the Korvel Hostlink!\n"
                      L"       Maybe the Korvel Setup was not properly installed or the service\n"
                      L"       has crashed.\n");
        return false;
    }
    if (status == serviceOutdated) {
        writer_.print(L"\nERROR: The installed Korvel Hostlink is outdated and unsupported!\n"
                      L"       The installed service is older than the Korvel release of this update\n"
                      L"       utility. The service must be updated to the current release before\n"
                      L"       using this version of the firmware update utility.\n");
        return false;
    }
    if (device.get() != nullptr) {
        return true;
    }
    writer_.print(L"ERROR: Device with IP address %hs not found (error code: %i)!\n", ipAddress_.c_str(), status);
    return false;
}

bool KvCTargetAccess::rebootDevice() const {
    DeviceHandle device(errors_);
    const std::int32_t status = device.createBy([&](KvHIMDeviceHandle& handle) { return findDevice(errors_, handle); });
    if (status != 0 || device.get() == nullptr) {
        writer_.print(L"ERROR: Cannot access device with IP address %hs (error code: %i)!\n", ipAddress_.c_str(),
                      status);
        return false;
    }
    if (KvHIM_FORCE_resetDevice(errors_, device.get(), 0) != 0) {
        // The message shows the status of the lookup, which is 0 here, not that of the reset.
        writer_.print(L"ERROR: Cannot reboot device with IP address %hs (error code: %i)!\n", ipAddress_.c_str(),
                      status);
        return false;
    }
    return true;
}
