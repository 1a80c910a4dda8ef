#pragma once

#include "KvEmulation.h"
#include "KvNJson.h"
#include "ScratchFolder.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// An item of an emulated target's inventory: `item("HCN").parameter("PRODUCT/NAME", "Node").add(item("CN"))`.
class ItemBuilder {
public:
    explicit ItemBuilder(std::string_view identifier);

    ItemBuilder& instance(std::uint32_t number);
    ItemBuilder& parameter(std::string_view path, std::string_view text);
    ItemBuilder& parameter(std::string_view path, std::uint64_t number);
    /// Adds an item below this one.
    ItemBuilder& add(ItemBuilder item);
    /// Adds an element to this board: below its UPDATE_INFO item.
    ItemBuilder& element(ItemBuilder element);

    // How an update of this element goes.
    ItemBuilder& polls(std::uint32_t count);
    ItemBuilder& progress(std::initializer_list<std::pair<std::uint32_t, std::uint32_t>> answers);
    ItemBuilder& finalState(std::uint32_t state);
    ItemBuilder& reports(std::uint32_t code, std::string_view text);
    ItemBuilder& activatedAtReboot();

    [[nodiscard]] KvNJson::json build() const;

private:
    std::string identifier_;
    std::uint32_t instance_ = 0;
    KvNJson::json parameters_;
    KvNJson::json update_;
    KvNJson::json reports_;
    std::vector<ItemBuilder> items_;
    std::vector<ItemBuilder> elements_;
};

[[nodiscard]] ItemBuilder item(std::string_view identifier);
/// An item that carries a board of this type and serial number.
[[nodiscard]] ItemBuilder board(std::string_view identifier, std::string_view boardType, std::uint32_t serialNumber);
/// An update element of version 1.0 and checksum 1, valid, active, and no configuration.
[[nodiscard]] ItemBuilder updateElement(std::uint32_t id, std::string_view name = "Firmware");
/// A file system element of checksum 1 at `location` below the target's root folder.
[[nodiscard]] ItemBuilder fileSystemElement(std::uint32_t id, std::string_view location);

/// A fault: `fault("lock").at("HCN[1]").status(7)`.
class FaultBuilder {
public:
    explicit FaultBuilder(std::string_view call);

    FaultBuilder& at(std::string_view address);
    FaultBuilder& id(std::uint32_t number);
    FaultBuilder& occurrence(std::uint32_t number);
    FaultBuilder& status(std::int64_t number);
    FaultBuilder& error(std::uint32_t code, std::string_view text);
    FaultBuilder& noErrors();

    [[nodiscard]] KvNJson::json build() const { return fault_; }

private:
    KvNJson::json fault_;
    KvNJson::json errors_;
};

[[nodiscard]] FaultBuilder fault(std::string_view call);

/// An emulated target in a scratch folder. It has the address 127.0.0.1 unless it is given others.
class TargetBuilder {
public:
    TargetBuilder& address(std::string_view text);
    TargetBuilder& noAddress();
    TargetBuilder& serviceStatus(std::int64_t status);
    TargetBuilder& rebootLookups(std::uint32_t count);
    /// The identifier of the root item.
    TargetBuilder& root(ItemBuilder item);
    /// Adds an item below the root.
    TargetBuilder& add(ItemBuilder item);
    TargetBuilder& add(const FaultBuilder& fault);
    /// Writes target.json; returns the folder.
    std::string write();
    /// The same with a text of its own.
    std::string write(std::string_view text);
    /// Writes and serves the target; a test failure when it is refused.
    KvEmulation::KvTServeResult serve();
    /// Serves the target as it was written; a test failure when it is refused.
    [[nodiscard]] KvEmulation::KvTServeResult serveAgain() const;

    [[nodiscard]] const ScratchFolder& folder() const { return folder_; }

private:
    ScratchFolder folder_;
    ItemBuilder root_{"ROOT"};
    std::vector<std::string> addresses_{"127.0.0.1"};
    bool hasDefaultAddress_ = true;
    std::int64_t serviceStatus_ = 0;
    std::uint32_t rebootLookups_ = 0;
    std::vector<FaultBuilder> faults_;
};
