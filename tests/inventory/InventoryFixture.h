#pragma once

#include "CompleteItems.h"
#include "KeptMessages.h"
#include "KvCErrorManager.h"
#include "KvCTargetInventory.h"
#include "KvTOptions.h"
#include "KvTUpdateElement.h"
#include "TargetBuilder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The inventory that a session scans from an emulated target. Each test ends with nothing held of the platform and
/// with no error that it did not take.
class InventoryTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Serves the target and scans it; a test failure when that does not work.
    void scan();
    /// Scans the target again, as a new session does.
    void scanAgain();
    /// Serves the target and tries to scan it.
    bool tryScan();

    static KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }
    /// The texts of the errors so far, which are then forgotten.
    static std::vector<std::string> takeErrors();
    [[nodiscard]] static std::wstring printed() { return KeptMessages::text(); }

    [[nodiscard]] std::size_t count() const { return inventory->elements().size(); }
    /// Element `index` of the list; an empty one and a test failure when there is none.
    [[nodiscard]] const KvTUpdateElement& element(std::size_t index = 0) const;
    /// The names of the elements in the order of the list.
    [[nodiscard]] std::vector<std::string> names() const;
    /// "NAME in UNIT" of the elements in the order of the list.
    [[nodiscard]] std::vector<std::string> namesInUnits() const;

    TargetBuilder target;
    KvNReflasher::KvTOptions options{};
    KeptMessages messages;
    std::optional<KvCTargetInventory> inventory;
};

/// What the service says of a parameter that is missing.
[[nodiscard]] std::string missing(std::string_view path, std::string_view address);
/// What it says of a value that it cannot read as it was asked to.
[[nodiscard]] std::string unreadable(std::string_view path, std::string_view address);

/// A board with one element of that name.
[[nodiscard]] ItemBuilder carrier(std::string_view identifier, std::string_view elementName);
/// An element without parameters but for CONFIGURATION.
[[nodiscard]] ItemBuilder bareElement(std::string_view identifier = "UPDATE_ELEMENT");
