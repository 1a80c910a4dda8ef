#include "HostServiceStandIn.h"

#include "KvHostInterface.h"
#include "KvNRtosAbstraction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <new>

namespace {

constexpr std::uint32_t addressParameter = 6;

HostServiceStandIn& service() {
    return HostServiceStandIn::instance();
}

std::string addressText(std::uint32_t address) {
    std::array<char, 16> text{};
    KvNRtosAbstraction::ipToString(address, text.data(), text.size() - 1);
    return text.data();
}

std::string shown(const char* text) {
    return std::string("'") + text + "'";
}

/// Any other text than "null" is a failure wherever these are expected.
std::string shown(const void* pointer) {
    return pointer == nullptr ? "null" : "something";
}

std::string parameterText(std::uint32_t parameter, const void* value, std::uint32_t size) {
    std::uint32_t number = 0;
    if (size != sizeof number) {
        return std::to_string(size) + " bytes";
    }
    std::memcpy(&number, value, sizeof number);
    return parameter == addressParameter ? addressText(number) : std::to_string(number);
}

std::int32_t statusOf(const HostServiceStandIn::Answer& answer) {
    return static_cast<std::int32_t>(answer.status);
}

template <class Handle>
std::int32_t giveBack(std::string_view operation, KvCErrorListPool& errors, Handle handle) {
    const auto answer = service().take(operation, service().nameOf(handle), errors);
    service().giveBack(handle);
    return statusOf(answer);
}

} // namespace

HostServiceStandIn& HostServiceStandIn::instance() {
    static HostServiceStandIn standIn;
    return standIn;
}

void HostServiceStandIn::answer(std::string_view operation, const Answer& answer, std::uint32_t occurrence) {
    answers_[{std::string(operation), occurrence}] = answer;
}

void HostServiceStandIn::forget() {
    forgetCalls();
    answers_.clear();
    counts_.clear();
    names_.clear();
    slots_.clear();
    kinds_.clear();
    held_.clear();
    errorListsExhausted_ = false;
}

void HostServiceStandIn::forgetCalls() {
    calls_.clear();
    errorLists_.clear();
}

std::vector<std::string> HostServiceStandIn::operations() const {
    std::vector<std::string> names;
    std::transform(calls_.begin(), calls_.end(), std::back_inserter(names),
                   [](const std::string& call) { return call.substr(0, call.find('(')); });
    return names;
}

HostServiceStandIn::Answer HostServiceStandIn::take(std::string_view operation, const std::string& arguments,
                                                    KvCErrorListPool& errors) {
    std::string name(operation);
    calls_.push_back(name + "(" + arguments + ")");
    errorLists_.push_back(&errors);
    const std::uint32_t occurrence = ++counts_[name];
    auto told = answers_.find(std::pair(name, occurrence));
    told = told != answers_.end() ? told : answers_.find(std::pair(name, 0U));
    const Answer answer = told != answers_.end() ? told->second : Answer();
    if (answer.addsError) {
        KvTErrorEntry entry;
        entry.code = 1;
        entry.text = calls_.back();
        errors.addError(std::move(entry));
    }
    return answer;
}

void HostServiceStandIn::hold(const void* handle, std::string_view kind) {
    std::string name(kind);
    name += std::to_string(++kinds_[name]);
    names_[handle] = name;
    held_.insert(std::move(name));
}

void HostServiceStandIn::giveBack(const void* handle) {
    EXPECT_EQ(held_.erase(nameOf(handle)), 1U) << nameOf(handle) << " is given back but not held";
}

std::string HostServiceStandIn::nameOf(const void* handle) const {
    const auto name = names_.find(handle);
    return name != names_.end() ? name->second : shown(handle);
}

std::int32_t KvHIM_createFilter(KvCErrorListPool& errors, KvHIMFilterHandle& filter, std::uint32_t kind) {
    const auto answer = service().take("createFilter", std::to_string(kind), errors);
    service().create(answer, "filter", filter);
    return statusOf(answer);
}

std::int32_t KvHIM_setFilterParameter(KvCErrorListPool& errors, KvHIMFilterHandle filter, std::uint32_t parameter,
                                      const void* value, std::uint32_t size) {
    const std::string text = parameterText(parameter, value, size);
    return statusOf(service().take("setFilterParameter",
                                   service().nameOf(filter) + ", " + std::to_string(parameter) + ", " + text, errors));
}

std::int32_t KvHIM_applyFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter) {
    return statusOf(service().take("applyFilter", service().nameOf(filter), errors));
}

std::int32_t KvHIM_getDeviceList(KvCErrorListPool& errors, KvHIMFilterHandle filter, KvHIMSDeviceInfo* devices,
                                 std::int32_t capacity, std::int32_t& count) {
    constexpr std::int32_t bufferTooSmall = 21;
    const std::string arguments = service().nameOf(filter) + ", " + shown(devices) + ", " + std::to_string(capacity) +
                                  ", " + std::to_string(count);
    auto answer = service().take("getDeviceList", arguments, errors);
    if (answer.status == 0 && !answer.count && capacity == 0) {
        answer.status = bufferTooSmall;
    }
    count = answer.count.value_or(1);
    for (std::int32_t index = 0; devices != nullptr && index < std::min(count, capacity); ++index) {
        devices[index] = {0, static_cast<std::uint32_t>(index + 1)};
    }
    return statusOf(answer);
}

std::int32_t KvHIM_deleteFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter) {
    return giveBack("deleteFilter", errors, filter);
}

std::int32_t KvHIM_createDeviceHandle(KvCErrorListPool& errors, const KvHIMSDeviceInfo& info,
                                      KvHIMDeviceHandle& device) {
    const auto answer = service().take("createDeviceHandle", std::to_string(info.deviceNumber), errors);
    service().create(answer, "device", device);
    return statusOf(answer);
}

std::int32_t KvHIM_deleteDeviceHandle(KvCErrorListPool& errors, KvHIMDeviceHandle device) {
    return giveBack("deleteDeviceHandle", errors, device);
}

std::int32_t KvHIM_FORCE_resetDevice(KvCErrorListPool& errors, KvHIMDeviceHandle device, std::uint32_t resetKind) {
    return statusOf(
        service().take("FORCE_resetDevice", service().nameOf(device) + ", " + std::to_string(resetKind), errors));
}

std::int32_t KvHIM_createFTClientHandle(KvCErrorListPool& errors, KvHIMDeviceHandle device,
                                        KvHIMFTClientHandle& client) {
    const auto answer = service().take("createFTClientHandle", service().nameOf(device), errors);
    service().create(answer, "client", client);
    return statusOf(answer);
}

std::int32_t KvHIM_deleteFTClientHandle(KvCErrorListPool& errors, KvHIMFTClientHandle client) {
    return giveBack("deleteFTClientHandle", errors, client);
}

std::int32_t KvHIM_makeDir(KvCErrorListPool& errors, void* reserved, KvHIMFTClientHandle client, const char* parent,
                           const char* name) {
    return statusOf(service().take(
        "makeDir", shown(reserved) + ", " + service().nameOf(client) + ", " + shown(parent) + ", " + shown(name),
        errors));
}

std::int64_t KvHIM_putFileU(KvCErrorListPool& errors, void* reserved, KvHIMFTClientHandle client,
                            const wchar_t* localPath, const char* folder, const char* name, KvHIMProgress progress,
                            void* context) {
    const std::wstring local(localPath);
    EXPECT_TRUE(progress == nullptr && context == nullptr);
    return service()
        .take("putFileU",
              shown(reserved) + ", " + service().nameOf(client) + ", " +
                  shown(std::string(local.begin(), local.end()).c_str()) + ", " + shown(folder) + ", " + shown(name),
              errors)
        .status;
}

std::int32_t KvHIM_renameFile(KvCErrorListPool& errors, void* reserved, KvHIMFTClientHandle client, const char* folder,
                              const char* oldName, const char* newName) {
    return statusOf(service().take("renameFile",
                                   shown(reserved) + ", " + service().nameOf(client) + ", " + shown(folder) + ", " +
                                       shown(oldName) + ", " + shown(newName),
                                   errors));
}

// The error manager's lists and its way to the system's error logging belong to the same service.

KvCErrorList* KvCErrorManager::createErrorList(std::uint32_t /*ownerId*/, std::uint32_t /*listKind*/,
                                               std::uint32_t /*entryCount*/, std::uint32_t /*parametersPerEntry*/,
                                               std::uint32_t /*textSize*/) {
    if (service().errorListsExhausted()) {
        throw std::bad_alloc();
    }
    auto* const list = new KvCErrorList;
    service().hold(list, "list");
    return list;
}

void KvCErrorManager::deleteErrorList(KvCErrorList* list) {
    service().giveBack(list);
    delete list;
}

void KvCErrorManager::sendErrorList(KvCErrorList* list, std::uint32_t destination) {
    service().take("sendErrorList", std::to_string(destination), *list);
}
