#include "InventoryFixture.h"

#include "KvEmulation.h"

#include <iterator>

void InventoryTest::SetUp() {
    KvEmulation::reset();
    inventory.emplace(messages.writer(), options, errors());
}

void InventoryTest::TearDown() {
    EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 0U);
    inventory.reset();
    const std::vector<std::string> untaken = takeErrors();
    EXPECT_TRUE(untaken.empty()) << untaken.front();
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    KvEmulation::reset();
}

bool InventoryTest::tryScan() {
    static_cast<void>(target.serve());
    return inventory->scanInventory("127.0.0.1");
}

void InventoryTest::scan() {
    EXPECT_TRUE(tryScan());
}

void InventoryTest::scanAgain() {
    inventory.emplace(messages.writer(), options, errors());
    KvEmulation::reset();
    scan();
}

std::vector<std::string> InventoryTest::takeErrors() {
    std::vector<std::string> texts;
    for (std::uint32_t index = 0; index < errors().getErrorCount(); ++index) {
        texts.emplace_back(errors().getErrorText(index));
    }
    errors().reset();
    return texts;
}

const KvTUpdateElement& InventoryTest::element(std::size_t index) const {
    static const KvTUpdateElement none;
    if (index >= count()) {
        ADD_FAILURE() << "there is no element " << index;
        return none;
    }
    return *std::next(inventory->elements().begin(), static_cast<std::ptrdiff_t>(index));
}

std::vector<std::string> InventoryTest::names() const {
    std::vector<std::string> result;
    for (const KvTUpdateElement& one : inventory->elements()) {
        result.emplace_back(one.name.view());
    }
    return result;
}

std::vector<std::string> InventoryTest::namesInUnits() const {
    std::vector<std::string> result;
    for (const KvTUpdateElement& one : inventory->elements()) {
        result.push_back(std::string(one.name.view()) + " in " + std::string(one.unitName.view()));
    }
    return result;
}

std::string missing(std::string_view path, std::string_view address) {
    return "There is no parameter " + std::string(path) + " of " + std::string(address) + ".";
}

std::string unreadable(std::string_view path, std::string_view address) {
    return "The value of " + std::string(path) + " of " + std::string(address) + " is of another type.";
}

ItemBuilder carrier(std::string_view identifier, std::string_view elementName) {
    return completeBoard(identifier, "QB1000", 1).element(completeElement(1, elementName));
}

ItemBuilder bareElement(std::string_view identifier) {
    return item(identifier).parameter("CONFIGURATION", 0);
}
