#include "TargetBuilder.h"

#include <gtest/gtest.h>

namespace {

/// JSON values are made of unsigned and of real numbers only.
KvNJson::json integer(std::int64_t value) {
    return KvNJson::json::parse(std::to_string(value));
}

KvNJson::json errorObject(std::uint32_t code, std::string_view text) {
    KvNJson::json error = KvNJson::json::makeObject();
    error.set("code", code);
    error.set("text", text);
    return error;
}

bool isEmpty(const KvNJson::json& value) {
    return value.view().is_null();
}

} // namespace

ItemBuilder::ItemBuilder(std::string_view identifier) : identifier_(identifier) {}

ItemBuilder& ItemBuilder::instance(std::uint32_t number) {
    instance_ = number;
    return *this;
}

ItemBuilder& ItemBuilder::parameter(std::string_view path, std::string_view text) {
    parameters_.set(path, text);
    return *this;
}

ItemBuilder& ItemBuilder::parameter(std::string_view path, std::uint64_t number) {
    parameters_.set(path, number);
    return *this;
}

ItemBuilder& ItemBuilder::add(ItemBuilder item) {
    items_.push_back(std::move(item));
    return *this;
}

ItemBuilder& ItemBuilder::element(ItemBuilder element) {
    elements_.push_back(std::move(element));
    return *this;
}

ItemBuilder& ItemBuilder::polls(std::uint32_t count) {
    update_.set("polls", count);
    return *this;
}

ItemBuilder& ItemBuilder::progress(std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> answers) {
    KvNJson::json list = KvNJson::json::makeArray();
    for (const auto& [done, total] : answers) {
        KvNJson::json answer;
        answer.append(done);
        answer.append(total);
        list.append(std::move(answer));
    }
    update_.set("progress", std::move(list));
    return *this;
}

ItemBuilder& ItemBuilder::finalState(std::uint32_t state) {
    update_.set("state", state);
    return *this;
}

ItemBuilder& ItemBuilder::reports(std::uint32_t code, std::string_view text) {
    reports_.append(errorObject(code, text));
    update_.set("errors", reports_);
    return *this;
}

ItemBuilder& ItemBuilder::activatedAtReboot() {
    update_.set("activation", "reboot");
    return *this;
}

KvNJson::json ItemBuilder::build() const {
    KvNJson::json result;
    result.set("id", std::string_view(identifier_));
    if (instance_ != 0) {
        result.set("instance", instance_);
    }
    if (!isEmpty(parameters_)) {
        result.set("parameters", parameters_);
    }
    if (!isEmpty(update_)) {
        result.set("update", update_);
    }
    KvNJson::json items = KvNJson::json::makeArray();
    if (!elements_.empty()) {
        ItemBuilder info("UPDATE_INFO");
        info.items_ = elements_;
        items.append(info.build());
    }
    for (const ItemBuilder& below : items_) {
        items.append(below.build());
    }
    if (items.view().size() != 0) {
        result.set("items", std::move(items));
    }
    return result;
}

ItemBuilder item(std::string_view identifier) {
    return ItemBuilder(identifier);
}

ItemBuilder board(std::string_view identifier, std::string_view boardType, std::uint32_t serialNumber) {
    return item(identifier)
        .parameter("PRODUCT/BOARD_TYPE", boardType)
        .parameter("PRODUCT/SERIAL_NUMBER", std::uint64_t(serialNumber));
}

ItemBuilder updateElement(std::uint32_t id, std::string_view name) {
    return item("UPDATE_ELEMENT")
        .parameter("CONFIGURATION", std::uint64_t(0))
        .parameter("ID", std::uint64_t(id))
        .parameter("NAME", name)
        .parameter("VERSION", "1.0")
        .parameter("CHECKSUM_CRC32", std::uint64_t(1))
        .parameter("VALID", std::uint64_t(1))
        .parameter("ACTIVE", std::uint64_t(1));
}

ItemBuilder fileSystemElement(std::uint32_t id, std::string_view location) {
    return item("FILESYSTEM_ELEMENT")
        .parameter("CONFIGURATION", std::uint64_t(0))
        .parameter("ID", std::uint64_t(id))
        .parameter("LOCATION", location)
        .parameter("CHECKSUM_CRC32", std::uint64_t(1));
}

FaultBuilder::FaultBuilder(std::string_view call) {
    fault_.set("call", call);
}

FaultBuilder& FaultBuilder::at(std::string_view address) {
    fault_.set("at", address);
    return *this;
}

FaultBuilder& FaultBuilder::id(std::uint32_t number) {
    fault_.set("id", number);
    return *this;
}

FaultBuilder& FaultBuilder::occurrence(std::uint32_t number) {
    fault_.set("occurrence", number);
    return *this;
}

FaultBuilder& FaultBuilder::status(std::int64_t number) {
    fault_.set("status", integer(number));
    return *this;
}

FaultBuilder& FaultBuilder::error(std::uint32_t code, std::string_view text) {
    errors_.append(errorObject(code, text));
    fault_.set("errors", errors_);
    return *this;
}

FaultBuilder& FaultBuilder::noErrors() {
    fault_.set("errors", KvNJson::json::makeArray());
    return *this;
}

FaultBuilder fault(std::string_view call) {
    return FaultBuilder(call);
}

TargetBuilder& TargetBuilder::address(std::string_view text) {
    if (hasDefaultAddress_) {
        noAddress();
    }
    addresses_.emplace_back(text);
    return *this;
}

TargetBuilder& TargetBuilder::noAddress() {
    addresses_.clear();
    hasDefaultAddress_ = false;
    return *this;
}

TargetBuilder& TargetBuilder::serviceStatus(std::int64_t status) {
    serviceStatus_ = status;
    return *this;
}

TargetBuilder& TargetBuilder::rebootLookups(std::uint32_t count) {
    rebootLookups_ = count;
    return *this;
}

TargetBuilder& TargetBuilder::root(ItemBuilder item) {
    root_ = std::move(item);
    return *this;
}

TargetBuilder& TargetBuilder::add(ItemBuilder item) {
    root_.add(std::move(item));
    return *this;
}

TargetBuilder& TargetBuilder::add(const FaultBuilder& fault) {
    faults_.push_back(fault);
    return *this;
}

std::string TargetBuilder::write() {
    KvNJson::json target;
    KvNJson::json addresses = KvNJson::json::makeArray();
    for (const std::string& address : addresses_) {
        addresses.append(std::string_view(address));
    }
    target.set("addresses", std::move(addresses));
    target.set("serviceStatus", integer(serviceStatus_));
    target.set("rebootLookups", rebootLookups_);
    target.set("inventory", root_.build());
    KvNJson::json faults = KvNJson::json::makeArray();
    for (const FaultBuilder& fault : faults_) {
        faults.append(fault.build());
    }
    target.set("faults", std::move(faults));
    return write(target.dump(4));
}

std::string TargetBuilder::write(std::string_view text) {
    folder_.write("target.json", text);
    return folder_.text();
}

KvEmulation::KvTServeResult TargetBuilder::serve() {
    write();
    return serveAgain();
}

KvEmulation::KvTServeResult TargetBuilder::serveAgain() const {
    KvEmulation::KvTServeResult result = KvEmulation::serve(folder_.text());
    EXPECT_TRUE(result.served) << result.error;
    return result;
}
