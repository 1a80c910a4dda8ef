#include "KvHostInterface.h"

#include "Call.h"
#include "Ledger.h"
#include "SystemFiles.h"
#include "TargetFileSystem.h"
#include "WideText.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::int32_t statusBufferTooSmall = 21;

// Parameters of a device filter.
constexpr std::uint32_t addressParameter = 6;
constexpr std::uint32_t firstOptionParameter = 8;
constexpr std::uint32_t lastOptionParameter = 9;

Failure noSuchHandle(const char* kind) {
    return {EmulationErrors::wrongHandle, std::string("The ") + kind + " is not valid (any more)."};
}

std::int32_t statusOf(std::int64_t result) {
    return static_cast<std::int32_t>(result);
}

std::string_view textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

Outcome setParameter(DeviceFilter& filter, std::uint32_t parameter, const void* value, std::uint32_t size) {
    const bool isOption = parameter >= firstOptionParameter && parameter <= lastOptionParameter;
    if (parameter != addressParameter && !isOption) {
        return Failure{EmulationErrors::valueUnusable,
                       "A device filter has no parameter " + std::to_string(parameter) + "."};
    }
    if (value == nullptr || size != sizeof(std::uint32_t)) {
        return Failure{EmulationErrors::valueUnusable,
                       "Filter parameter " + std::to_string(parameter) + " takes a value of 4 bytes."};
    }
    if (parameter == addressParameter) {
        std::uint32_t address = 0;
        std::memcpy(&address, value, sizeof address);
        filter.address = address;
    }
    return std::nullopt;
}

/// True when a target that restarts is not found by the filter's session.
bool isHidden(DeviceFilter& filter, EmulatedTarget& target) {
    const auto [known, isNew] = filter.hiddenTargets.try_emplace(&target, false);
    if (isNew) {
        known->second = target.state().takeHiddenLookup();
    }
    return known->second;
}

std::vector<KvHIMSDeviceInfo> passingDevices(const EmulationService& service, DeviceFilter& filter) {
    std::vector<KvHIMSDeviceInfo> passing;
    for (const EmulationService::Device& device : service.devices()) {
        const bool hasAddress = !filter.address || *filter.address == device.ipAddress;
        if (hasAddress && !isHidden(filter, *device.target)) {
            passing.push_back({device.ipAddress, device.number});
        }
    }
    return passing;
}

/// The target of a device record; null when the service knows no such device.
std::shared_ptr<EmulatedTarget> targetOf(const EmulationService& service, const KvHIMSDeviceInfo& info) {
    const std::vector<EmulationService::Device> devices = service.devices();
    const auto found = std::find_if(devices.begin(), devices.end(), [&info](const EmulationService::Device& device) {
        return device.ipAddress == info.ipAddress && device.number == info.deviceNumber;
    });
    return found != devices.end() ? found->target : nullptr;
}

/// The target behind a handle, to which the call is bound; null when the handle is dead.
template <class Registry>
std::shared_ptr<EmulatedTarget> bindToHandle(Call& call, Registry& registry, const void* handle) {
    const TargetHandle* const record = registry.find(handle);
    if (record == nullptr) {
        return nullptr;
    }
    call.bindTo(record->target);
    return record->target;
}

TransferProgress progressFor(KvHIMProgress progress, void* context) {
    if (progress == nullptr) {
        return {};
    }
    return [progress, context](std::uint64_t done, std::uint64_t total) {
        progress(static_cast<std::int64_t>(done), static_cast<std::int64_t>(total), context);
    };
}

/// Records a renamed file in the elements that are this file.
Outcome installRenamed(EmulatedTarget& target, const TargetFileSystem::Renamed& renamed) {
    Outcome outcome;
    for (const ItemDescription* const element : target.fileSystemElementsAt(renamed.location)) {
        Outcome failure = target.install(*element, renamed.contents);
        outcome = outcome ? outcome : std::move(failure);
    }
    return outcome;
}

} // namespace

std::int32_t KvHIM_createFilter(KvCErrorListPool& errors, KvHIMFilterHandle& filter, std::uint32_t /*kind*/) {
    Call call(Operation::createFilter, errors);
    return statusOf(call.run([&] {
        filter = call.service().filters.add(DeviceFilter{HeldCount(Ledger::instance().filters), {}, false, {}});
        return 0;
    }));
}

std::int32_t KvHIM_setFilterParameter(KvCErrorListPool& errors, KvHIMFilterHandle filter, std::uint32_t parameter,
                                      const void* value, std::uint32_t size) {
    Call call(Operation::setFilterParameter, errors);
    call.setId(parameter);
    return statusOf(call.run([&] {
        DeviceFilter* const record = call.service().filters.find(filter);
        return record != nullptr ? call.conclude(setParameter(*record, parameter, value, size))
                                 : call.fail(noSuchHandle("filter"));
    }));
}

std::int32_t KvHIM_applyFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter) {
    Call call(Operation::applyFilter, errors);
    return statusOf(call.run([&]() -> std::int64_t {
        DeviceFilter* const record = call.service().filters.find(filter);
        if (record == nullptr) {
            return call.fail(noSuchHandle("filter"));
        }
        record->isApplied = true;
        return 0;
    }));
}

std::int32_t KvHIM_getDeviceList(KvCErrorListPool& errors, KvHIMFilterHandle filter, KvHIMSDeviceInfo* devices,
                                 std::int32_t capacity, std::int32_t& count) {
    Call call(Operation::getDeviceList, errors);
    return statusOf(call.run([&]() -> std::int64_t {
        DeviceFilter* const record = call.service().filters.find(filter);
        if (record == nullptr || !record->isApplied) {
            return call.fail(noSuchHandle(record == nullptr ? "filter" : "filter that was not applied"));
        }
        const std::vector<KvHIMSDeviceInfo> passing = passingDevices(call.service(), *record);
        const std::size_t room = devices != nullptr && capacity > 0 ? static_cast<std::size_t>(capacity) : 0;
        count = static_cast<std::int32_t>(passing.size());
        if (passing.size() > room) {
            call.fail({EmulationErrors::bufferTooSmall,
                       "The list has no room for " + std::to_string(passing.size()) + " devices."});
            return statusBufferTooSmall;
        }
        std::copy(passing.begin(), passing.end(), devices);
        return 0;
    }));
}

std::int32_t KvHIM_deleteFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter) {
    Call call(Operation::deleteFilter, errors);
    const bool wasAlive = call.service().filters.release(filter).has_value();
    return statusOf(call.run([&] { return wasAlive ? 0 : call.fail(noSuchHandle("filter")); }));
}

std::int32_t KvHIM_createDeviceHandle(KvCErrorListPool& errors, const KvHIMSDeviceInfo& info,
                                      KvHIMDeviceHandle& device) {
    Call call(Operation::createDeviceHandle, errors);
    std::shared_ptr<EmulatedTarget> target;
    call.attempt([&] { target = targetOf(call.service(), info); });
    call.bindTo(target);
    return statusOf(call.run([&]() -> std::int64_t {
        if (target == nullptr) {
            return call.fail({EmulationErrors::notFound,
                              "The service knows no such device " + std::to_string(info.deviceNumber) + "."});
        }
        device = call.service().deviceHandles.add({target, HeldCount(Ledger::instance().deviceHandles)});
        return 0;
    }));
}

std::int32_t KvHIM_deleteDeviceHandle(KvCErrorListPool& errors, KvHIMDeviceHandle device) {
    Call call(Operation::deleteDeviceHandle, errors);
    bindToHandle(call, call.service().deviceHandles, device);
    const bool wasAlive = call.service().deviceHandles.release(device).has_value();
    return statusOf(call.run([&] { return wasAlive ? 0 : call.fail(noSuchHandle("device handle")); }));
}

std::int32_t KvHIM_FORCE_resetDevice(KvCErrorListPool& errors, KvHIMDeviceHandle device, std::uint32_t /*resetKind*/) {
    Call call(Operation::forceResetDevice, errors);
    const auto target = bindToHandle(call, call.service().deviceHandles, device);
    return statusOf(call.run([&] {
        return target != nullptr ? call.conclude(target->state().countReset(target->description().rebootLookups))
                                 : call.fail(noSuchHandle("device handle"));
    }));
}

std::int32_t KvHIM_createFTClientHandle(KvCErrorListPool& errors, KvHIMDeviceHandle device,
                                        KvHIMFTClientHandle& client) {
    Call call(Operation::createFTClientHandle, errors);
    const auto target = bindToHandle(call, call.service().deviceHandles, device);
    return statusOf(call.run([&]() -> std::int64_t {
        if (target == nullptr) {
            return call.fail(noSuchHandle("device handle"));
        }
        client = call.service().transferClients.add({target, HeldCount(Ledger::instance().transferClients)});
        return 0;
    }));
}

std::int32_t KvHIM_deleteFTClientHandle(KvCErrorListPool& errors, KvHIMFTClientHandle client) {
    Call call(Operation::deleteFTClientHandle, errors);
    bindToHandle(call, call.service().transferClients, client);
    const bool wasAlive = call.service().transferClients.release(client).has_value();
    return statusOf(call.run([&] { return wasAlive ? 0 : call.fail(noSuchHandle("transfer client")); }));
}

std::int32_t KvHIM_makeDir(KvCErrorListPool& errors, void* /*reserved*/, KvHIMFTClientHandle client, const char* parent,
                           const char* name) {
    const std::string_view folder = textOrEmpty(parent);
    const std::string_view newName = textOrEmpty(name);
    Call call(Operation::makeDir, errors);
    call.addField("path", folder);
    call.addField("name", newName);
    const auto target = bindToHandle(call, call.service().transferClients, client);
    return statusOf(call.run([&] {
        return target != nullptr
                   ? call.conclude(
                         TargetFileSystem(target->state()).makeFolder(std::string(folder), std::string(newName)))
                   : call.fail(noSuchHandle("transfer client"));
    }));
}

std::int64_t KvHIM_putFileU(KvCErrorListPool& errors, void* /*reserved*/, KvHIMFTClientHandle client,
                            const wchar_t* localPath, const char* folder, const char* name, KvHIMProgress progress,
                            void* context) {
    const std::wstring_view local(localPath != nullptr ? localPath : L"");
    const std::string_view targetFolder = textOrEmpty(folder);
    const std::string_view fileName = textOrEmpty(name);
    Call call(Operation::putFileU, errors);
    call.addField("path", targetFolder);
    call.addField("name", fileName);
    const auto target = bindToHandle(call, call.service().transferClients, client);
    return call.run([&]() -> std::int64_t {
        if (target == nullptr) {
            return call.fail(noSuchHandle("transfer client"));
        }
        const auto written = TargetFileSystem(target->state())
                                 .putFile(SystemFiles::localPathOf(utf8OfWide(local)), std::string(targetFolder),
                                          std::string(fileName), progressFor(progress, context));
        return written.hasValue() ? static_cast<std::int64_t>(written.value()) : call.fail(written.failure());
    });
}

std::int32_t KvHIM_renameFile(KvCErrorListPool& errors, void* /*reserved*/, KvHIMFTClientHandle client,
                              const char* folder, const char* oldName, const char* newName) {
    const std::string_view targetFolder = textOrEmpty(folder);
    const std::string_view name = textOrEmpty(newName);
    Call call(Operation::renameFile, errors);
    call.addField("path", targetFolder);
    call.addField("name", name);
    const auto target = bindToHandle(call, call.service().transferClients, client);
    return statusOf(call.run([&]() -> std::int64_t {
        if (target == nullptr) {
            return call.fail(noSuchHandle("transfer client"));
        }
        const auto renamed =
            TargetFileSystem(target->state())
                .renameFile(std::string(targetFolder), std::string(textOrEmpty(oldName)), std::string(name));
        return renamed.hasValue() ? call.conclude(installRenamed(*target, renamed.value()))
                                  : call.fail(renamed.failure());
    }));
}
