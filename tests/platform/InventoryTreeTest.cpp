// What clients read from the tree of a scanned target.

#include "EmulationTest.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using namespace KvNInventoryIDs;

class InventoryTree : public EmulationTest {
protected:
    void TearDown() override {
        manager().deleteInventoryTree(tree);
        EmulationTest::TearDown();
    }
    const KvCInventoryItem& scan() {
        target.serve();
        openRoot();
        EXPECT_EQ(manager().scan(errors(), root, tree), 0U);
        return *tree;
    }
    static std::string textOf(const KvCInventoryAddress& address) { return address.toString().c_str(); }

    TargetBuilder target;
    KvCInventoryItem* tree = nullptr;
};

TEST_F(InventoryTree, ItemsAreLinkedInTheOrderOfTheDescription) {
    target.add(item("HCN").add(item("CN")).add(item("NETWORK")));
    target.add(item("NETC"));
    const KvCInventoryItem& top = scan();
    EXPECT_EQ(top.getParent(), nullptr);
    EXPECT_EQ(top.getNext(), nullptr);
    const KvCInventoryItem* const hcn = top.getFirstSubItem();
    ASSERT_NE(hcn, nullptr);
    EXPECT_EQ(hcn->getID(), HCN);
    EXPECT_EQ(hcn->getParent(), &top);
    const KvCInventoryItem* const cn = hcn->getFirstSubItem();
    ASSERT_NE(cn, nullptr);
    EXPECT_EQ(cn->getID(), CN);
    EXPECT_EQ(cn->getParent(), hcn);
    EXPECT_EQ(cn->getFirstSubItem(), nullptr);
    ASSERT_NE(cn->getNext(), nullptr);
    EXPECT_EQ(cn->getNext()->getID(), NETWORK);
    EXPECT_EQ(cn->getNext()->getNext(), nullptr);
    ASSERT_NE(hcn->getNext(), nullptr);
    EXPECT_EQ(hcn->getNext()->getID(), NETC);
}

TEST_F(InventoryTree, AnInstanceDefaultsToThePositionAmongSiblingsOfTheSameIdentifier) {
    target.add(item("ION")).add(item("CN")).add(item("ION").instance(9)).add(item("ION"));
    const KvCInventoryItem& top = scan();
    std::vector<std::string> ids;
    for (const KvCInventoryItem* item = top.getFirstSubItem(); item != nullptr; item = item->getNext()) {
        ids.push_back(textOf(item->getID()));
    }
    EXPECT_THAT(ids, ElementsAre("ION[1]", "CN[1]", "ION[9]", "ION[3]"));
}

TEST_F(InventoryTree, AnAddressBeginsBelowTheRoot) {
    target.add(item("HCN").element(updateElement(1)).element(updateElement(2)));
    const KvCInventoryItem& top = scan();
    const KvCInventoryItem* const second = top.getItem(HCN / UPDATE_INFO / UPDATE_ELEMENT[2]);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(textOf(second->getAddress()), "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2]");
    EXPECT_EQ(second->getAddress(), HCN / UPDATE_INFO / UPDATE_ELEMENT[2]);
    EXPECT_EQ(second->getAddress().getCategory(), UPDATE_ELEMENT.getCategory());
}

TEST_F(InventoryTree, TheRootsAddressIsRootWhateverItsIdentifier) {
    target.root(item("HCN").instance(3).add(item("CN")));
    const KvCInventoryItem& top = scan();
    EXPECT_EQ(textOf(top.getID()), "HCN[3]");
    EXPECT_EQ(textOf(top.getAddress()), "ROOT[1]");
    EXPECT_EQ(textOf(top.getFirstSubItem()->getAddress()), "CN[1]");
}

TEST_F(InventoryTree, ItemsAreFoundRelativeToAnItem) {
    target.add(item("IOROUTER").add(item("NETWORK").add(item("ION").instance(5))));
    const KvCInventoryItem& top = scan();
    const KvCInventoryItem* const router = top.getItem(IOROUTER);
    ASSERT_NE(router, nullptr);
    ASSERT_NE(router->getItem(NETWORK / ION[5]), nullptr);
    EXPECT_EQ(router->getItem(NETWORK / ION), nullptr) << "no instance means instance 1";
    EXPECT_EQ(router->getItem(ION[5]), nullptr);
    EXPECT_EQ(router->getItem(KvCInventoryAddress()), nullptr);
    EXPECT_EQ(top.getItem(ROOT), nullptr) << "an address begins below the item";
}

TEST_F(InventoryTree, ValuesAreReadWithTheirType) {
    target.add(item("HCN")
                   .parameter("PRODUCT/BOARD_TYPE", "QB4120")
                   .parameter("PRODUCT/SERIAL_NUMBER", std::uint64_t(0xFFFFFFFF))
                   .parameter("SLOT", std::uint64_t(255))
                   .parameter("VERSION", "23.2a12"));
    const KvCInventoryItem& hcn = *scan().getItem(HCN);
    KvCString text;
    hcn.getValue(errors(), PRODUCT / BOARD_TYPE, text);
    EXPECT_EQ(text, "QB4120");
    std::uint32_t number = 0;
    hcn.getValue(errors(), PRODUCT / SERIAL_NUMBER, number);
    EXPECT_EQ(number, 0xFFFFFFFFU);
    std::uint8_t byte = 0;
    hcn.getValue(errors(), SLOT, byte);
    EXPECT_EQ(byte, 255);
    KvCVersion version;
    hcn.getValue(errors(), VERSION, version);
    EXPECT_EQ(version, KvCVersion("23.2a12"));
    hcn.getValue(errors(), VERSION, text);
    EXPECT_EQ(text, "23.2a12");
}

TEST_F(InventoryTree, AParameterOfAGroupIsNotOneOfTheItemItself) {
    target.add(item("HCN").parameter("PRODUCT/NAME", "a").parameter("UNITNAME", "b"));
    const KvCInventoryItem& hcn = *scan().getItem(HCN);
    EXPECT_NE(hcn.getParameter(PRODUCT / NAME), nullptr);
    EXPECT_EQ(hcn.getParameter(NAME), nullptr);
    EXPECT_NE(hcn.getParameter(UNITNAME), nullptr);
    EXPECT_EQ(hcn.getParameter(PRODUCT / UNITNAME), nullptr);
    EXPECT_EQ(hcn.getParameter(UNITNAME[2]), nullptr);
    EXPECT_EQ(hcn.getParameter(PRODUCT), nullptr);
    EXPECT_EQ(hcn.getParameter(KvCInventoryAddress()), nullptr);
}

TEST_F(InventoryTree, AValueThatIsMissingOrOfAnotherTypeIsAnErrorAndLeavesTheOutput) {
    target.add(item("HCN")
                   .parameter("SLOT", std::uint64_t(256))
                   .parameter("PRODUCT/ID", std::uint64_t(1) << 32U)
                   .parameter("NAME", "12"));
    const KvCInventoryItem& hcn = *scan().getItem(HCN);
    std::uint8_t byte = 7;
    hcn.getValue(errors(), SLOT, byte);
    EXPECT_EQ(byte, 7);
    std::uint32_t number = 8;
    hcn.getValue(errors(), PRODUCT / ID, number);
    hcn.getValue(errors(), NAME, number);
    hcn.getValue(errors(), RACKNAME, number);
    EXPECT_EQ(number, 8U);
    KvCString text("as it was");
    hcn.getValue(errors(), SLOT, text);
    EXPECT_EQ(text, "as it was");
    KvCVersion version(1, 2, 3, 0, 0, 0);
    hcn.getValue(errors(), SLOT, version);
    EXPECT_EQ(version, KvCVersion(1, 2, 3, 0, 0, 0));
    const auto texts = takeErrorTexts();
    ASSERT_EQ(texts.size(), 6U);
    EXPECT_EQ(texts[0], "The value of SLOT[1] of HCN[1] is of another type.");
    EXPECT_EQ(texts[3], "There is no parameter RACKNAME[1] of HCN[1].");
    hcn.getValue(errors(), RACKNAME, number);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::valueUnusable));
}

TEST_F(InventoryTree, ATreeOutlivesItsRootHandle) {
    target.add(item("HCN").parameter("NAME", "node"));
    const KvCInventoryItem& top = scan();
    closeRoot();
    KvCString name;
    top.getItem(HCN)->getValue(errors(), NAME, name);
    EXPECT_EQ(name, "node");
}

TEST_F(InventoryTree, IsCountedUntilItIsReleased) {
    scan();
    EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 1U);
    manager().deleteInventoryTree(tree);
    EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 0U);
    manager().deleteInventoryTree(tree);
    EXPECT_EQ(KvEmulation::ledger().badReleases, 1U);
    tree = nullptr;
    closeRoot();
    KvEmulation::reset();
}

TEST_F(InventoryTree, MayBeReleasedByDeletingItsRoot) {
    scan();
    delete tree;
    tree = nullptr;
    EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 0U);
}

TEST_F(InventoryTree, AScanWithADeadRootHandleFails) {
    scan();
    KvCInventoryRootHandle* const dead = root;
    closeRoot();
    KvCInventoryItem* result = tree;
    EXPECT_NE(manager().scan(errors(), dead, result), 0U);
    EXPECT_EQ(result, nullptr);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongHandle));
}

class RootHandle : public EmulationTest {};

TEST_F(RootHandle, IsForATargetThatHasTheAddress) {
    TargetBuilder first;
    first.address("10.0.0.1").add(item("HCN").parameter("NAME", "first")).serve();
    TargetBuilder second;
    second.address("10.0.0.2").address("10.0.0.3").add(item("CN")).serve();
    openRoot("010.0.0.3");
    KvCInventoryItem* tree = nullptr;
    ASSERT_EQ(manager().scan(errors(), root, tree), 0U);
    EXPECT_NE(tree->getItem(CN), nullptr);
    manager().deleteInventoryTree(tree);
}

TEST_F(RootHandle, NeedsAnAddressOfATarget) {
    TargetBuilder target;
    target.serve();
    EXPECT_NE(manager().createRootHandleByIpAddressList(errors(), "10.0.0.1", root), 0U);
    EXPECT_NE(manager().createRootHandleByIpAddressList(errors(), "localhost", root), 0U);
    EXPECT_NE(manager().createRootHandleByIpAddressList(errors(), nullptr, root), 0U);
    EXPECT_EQ(root, nullptr);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::notFound, EmulationErrorCodes::notAnIpV4Address,
                                              EmulationErrorCodes::notAnIpV4Address));
}

TEST_F(RootHandle, ASecondReleaseIsAnErrorAndCounted) {
    TargetBuilder target;
    target.serve();
    KvCInventoryRootHandle* const handle = openRoot();
    EXPECT_EQ(KvEmulation::ledger().rootHandles, 1U);
    closeRoot();
    EXPECT_EQ(KvEmulation::ledger().rootHandles, 0U);
    EXPECT_NE(manager().deleteRootHandle(errors(), handle), 0U);
    EXPECT_NE(manager().deleteRootHandle(errors(), nullptr), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongHandle, EmulationErrorCodes::wrongHandle));
    EXPECT_EQ(KvEmulation::ledger().badReleases, 2U);
    KvEmulation::reset();
}

TEST_F(RootHandle, ADeadOneIsNeverMistakenForANewOne) {
    TargetBuilder target;
    target.serve();
    KvCInventoryRootHandle* const dead = openRoot();
    closeRoot();
    for (int count = 0; count < 100; ++count) {
        EXPECT_NE(openRoot(), dead);
        closeRoot();
    }
}

} // namespace
