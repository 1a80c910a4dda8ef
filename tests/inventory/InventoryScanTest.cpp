#include "InventoryFixture.h"

#include "KvEmulation.h"
#include "OwnedErrorList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using testing::ElementsAre;

} // namespace

/// Opening, scanning and releasing a target.
class InventoryScanTest : public InventoryTest {
protected:
    void SetUp() override {
        InventoryTest::SetUp();
        target.add(carrier("HCN", "a"));
    }
    void expectNothingScanned() {
        EXPECT_EQ(count(), 0U);
        EXPECT_EQ(inventory->fileSystemTemplate(), nullptr);
        EXPECT_EQ(inventory->hcnAddress(), nullptr);
        EXPECT_EQ(inventory->cnAddress(), nullptr);
        EXPECT_EQ(inventory->rebootSupportStatus(), 1U);
        EXPECT_EQ(printed(), L"");
        EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 0U);
    }
};

TEST_F(InventoryScanTest, BeforeAScanThereIsNothing) {
    expectNothingScanned();
    EXPECT_EQ(inventory->rootHandle(), nullptr);
    EXPECT_EQ(inventory->systemAddress(), nullptr);
}

TEST_F(InventoryScanTest, AScanKeepsTheRootHandleAndReleasesTheTree) {
    scan();
    EXPECT_NE(inventory->rootHandle(), nullptr);
    EXPECT_EQ(KvEmulation::ledger().rootHandles, 1U);
    EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 0U);
    EXPECT_THAT(names(), ElementsAre("a"));
    EXPECT_NE(inventory->fileSystemTemplate(), nullptr);
    EXPECT_EQ(printed(), L"");
}

TEST_F(InventoryScanTest, TheRebootSupportStatusIsToldAtTheEndWhenVerbose) {
    options.verbose = true;
    scan();
    EXPECT_EQ(KeptMessages::list().back(), L"Reboot support status: 3\n");
    EXPECT_EQ(inventory->rebootSupportStatus(), 3U);
}

TEST_F(InventoryScanTest, AnEmptyTargetIsScanned) {
    options.verbose = true;
    TargetBuilder empty;
    static_cast<void>(empty.address("127.0.0.9").serve());
    EXPECT_TRUE(inventory->scanInventory("127.0.0.9"));
    EXPECT_EQ(count(), 0U);
    EXPECT_EQ(printed(), L"Reboot support status: 4\n");
}

TEST_F(InventoryScanTest, TheTargetIsOpenedAtTheAddressGiven) {
    TargetBuilder other;
    static_cast<void>(other.address("10.1.2.3").add(carrier("HCN", "other")).serve());
    static_cast<void>(target.serve());
    EXPECT_TRUE(inventory->scanInventory("10.1.2.3"));
    EXPECT_THAT(names(), ElementsAre("other"));
}

TEST_F(InventoryScanTest, ATargetThatCannotBeOpenedFailsWithoutAHandle) {
    target.add(fault("createRootHandleByIpAddressList").status(5));
    options.verbose = true;
    EXPECT_FALSE(tryScan());
    expectNothingScanned();
    EXPECT_EQ(inventory->rootHandle(), nullptr);
    EXPECT_EQ(KvEmulation::ledger().rootHandles, 0U);
    EXPECT_THAT(takeErrors(), ElementsAre("Fault at createRootHandleByIpAddressList."));
}

TEST_F(InventoryScanTest, OpeningIsJudgedByItsResultAlone) {
    target.add(fault("createRootHandleByIpAddressList").status(5).noErrors());
    EXPECT_FALSE(tryScan());
    expectNothingScanned();
}

TEST_F(InventoryScanTest, AnErrorOfAnOpeningThatSucceedsDoesNotKeepItFromBeingScanned) {
    target.add(fault("createRootHandleByIpAddressList").status(0));
    EXPECT_FALSE(tryScan());
    expectNothingScanned();
    EXPECT_THAT(takeErrors(),
                ElementsAre("Fault at createRootHandleByIpAddressList.", "The root handle is not valid (any more)."));
}

TEST_F(InventoryScanTest, ATargetThatCannotBeScannedFailsAndKeepsTheHandle) {
    target.add(fault("scan"));
    options.verbose = true;
    EXPECT_FALSE(tryScan());
    expectNothingScanned();
    EXPECT_NE(inventory->rootHandle(), nullptr);
    EXPECT_EQ(KvEmulation::ledger().rootHandles, 1U);
    EXPECT_THAT(takeErrors(), ElementsAre("Fault at scan."));
}

TEST_F(InventoryScanTest, ScanningIsJudgedByItsResultAlone) {
    target.add(fault("scan").status(3).noErrors());
    EXPECT_FALSE(tryScan());
    expectNothingScanned();
}

TEST_F(InventoryScanTest, ANullTreeFailsEvenWithoutAStatus) {
    target.add(fault("scan").status(0).noErrors());
    EXPECT_FALSE(tryScan());
    expectNothingScanned();
    EXPECT_EQ(KvEmulation::ledger().rootHandles, 1U);
}

TEST_F(InventoryScanTest, ErrorsGoToTheListGiven) {
    const KvCOwnedErrorList list = KvCOwnedErrorList::create();
    inventory.emplace(messages.writer(), options, *list);
    target.add(item("NETC").element(bareElement()));
    static_cast<void>(target.serve());
    EXPECT_TRUE(inventory->scanInventory("127.0.0.1"));
    EXPECT_EQ(list->getErrorCount(), 5U);
    inventory.reset();
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(InventoryScanTest, TheRootHandleIsGivenBackAtTheEnd) {
    target.add(fault("deleteRootHandle"));
    static_cast<void>(target.serve());
    EXPECT_TRUE(inventory->scanInventory("127.0.0.1"));
    inventory.reset();
    EXPECT_EQ(KvEmulation::ledger().rootHandles, 0U);
    EXPECT_THAT(takeErrors(), ElementsAre("Fault at deleteRootHandle."));
}

TEST_F(InventoryScanTest, WithoutAHandleNothingIsGivenBack) {
    target.add(fault("createRootHandleByIpAddressList")).add(fault("deleteRootHandle").occurrence(0));
    EXPECT_FALSE(tryScan());
    EXPECT_EQ(takeErrors().size(), 1U);
    inventory.reset();
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(InventoryScanTest, AWalkBeginsWithAnEmptyListAndNoNodes) {
    static_cast<void>(target.serve());
    KvCInventoryManager& manager = *KvCInventoryManager::getInstance();
    KvCInventoryRootHandle* root = nullptr;
    KvCInventoryItem* tree = nullptr;
    ASSERT_EQ(manager.createRootHandleByIpAddressList(errors(), "127.0.0.1", root), 0U);
    ASSERT_EQ(manager.scan(errors(), root, tree), 0U);
    std::list<KvTUpdateElement> elements(7);
    KvTNodeAddresses nodes{KvCInventoryAddress(99), KvCInventoryAddress(98), {1}};
    for (int round = 0; round < 2; ++round) {
        walkInventory(errors(), messages.writer(), options, *tree, elements, nodes);
        ASSERT_EQ(elements.size(), 1U);
        EXPECT_EQ(elements.front().index, 0U);
        ASSERT_TRUE(nodes.hcn);
        EXPECT_EQ(nodes.hcn->toString(), "HCN[1]");
        EXPECT_FALSE(nodes.cn);
    }
    EXPECT_EQ(KvEmulation::ledger().errorLists, 2U);
    elements.clear();
    manager.deleteInventoryTree(tree);
    EXPECT_EQ(manager.deleteRootHandle(errors(), root), 0U);
}

/// The element that stands for files which no element of the target claims.
using FileSystemTemplateTest = InventoryTest;

TEST_F(FileSystemTemplateTest, ItStandsForTheProcessorBoard) {
    target.add(item("HCN")
                   .parameter("PRODUCT/BOARD_TYPE", "QB4120")
                   .parameter("PRODUCT/VARIANT", "A")
                   .parameter("PRODUCT/ID", 6)
                   .parameter("PRODUCT/SERIAL_NUMBER", 2815)
                   .parameter("PRODUCT/SLOT_COUNT", 2)
                   .parameter("SLOT", 1)
                   .parameter("PRODUCT/UNITNAME", "Rack")
                   .parameter("UNITNAME", "first")
                   .parameter("RACKNAME", "R1")
                   .element(completeElement(3, "UserFirmware")
                                .parameter("HW_COMPATIBILITY_ID", 11)
                                .parameter("SW_COMPATIBILITY_ID", 12)
                                .parameter("TYPE_ID", 13)
                                .parameter("CUSTOM", 1)
                                .parameter("LOCATION", "flash")
                                .parameter("VERSION_HISTORY", "old")));
    options.disableCustomElements = true;
    scan();
    const KvTUpdateElement* const file = inventory->fileSystemTemplate();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->boardAddress.toString(), "HCN[1]");
    EXPECT_EQ(file->boardType, "QB4120");
    EXPECT_EQ(file->boardVariant, "A");
    EXPECT_EQ(file->boardId, 6U);
    EXPECT_EQ(file->serialNumber, 2815U);
    EXPECT_EQ(file->slot, 1U);
    EXPECT_EQ(file->slotCount, 2U);
    EXPECT_EQ(file->boardName, "QB4120 (A)");
    EXPECT_EQ(file->unitName, "Rack");
    EXPECT_EQ(file->unitInstanceName, "first");
    EXPECT_EQ(file->rackName, "R1");
    EXPECT_EQ(file->hwCompatibilityId, 11U);
    EXPECT_EQ(file->swCompatibilityId, 12U);
    EXPECT_TRUE(file->isFileSystemElement);
    EXPECT_EQ(file->location, "*");
    EXPECT_FALSE(file->configured);
    EXPECT_EQ(file->name, "Updatable file");
    EXPECT_EQ(file->typeName, "Updatable file");
    EXPECT_EQ(file->displayName, "QB4120 (A), SN 2815, Updatable file");
}

TEST_F(FileSystemTemplateTest, ItHasNothingOfTheElementItself) {
    target.add(completeBoard("CN", "QB4120", 1)
                   .parameter("PRODUCT/UNITNAME", "Rack")
                   .element(completeElement(3, "UserFirmware")
                                .parameter("CUSTOM", 1)
                                .parameter("TYPE_ID", 13)
                                .parameter("VERSION_HISTORY", "old")));
    options.disableCustomElements = true;
    scan();
    const KvTUpdateElement* const file = inventory->fileSystemTemplate();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->unitItem, nullptr);
    EXPECT_TRUE(file->elementAddress.isEmpty());
    EXPECT_EQ(file->elementId, 0U);
    EXPECT_EQ(file->typeId, 0U);
    EXPECT_EQ(file->custom, 0U);
    EXPECT_FALSE(file->disabled);
    EXPECT_FALSE(file->valid);
    EXPECT_FALSE(file->active);
    EXPECT_FALSE(file->hasChecksum);
    EXPECT_EQ(file->checksumCrc32, 0U);
    EXPECT_FALSE(file->hasArchiveFile());
    EXPECT_EQ(file->version, KvCVersion());
    EXPECT_EQ(file->versionHistory, "");
    EXPECT_EQ(file->index, 0U);
    EXPECT_EQ(file->errorLists[0].get(), nullptr);
    EXPECT_EQ(file->errorLists[1].get(), nullptr);
}

TEST_F(FileSystemTemplateTest, AnyInstanceOfANodeWillDo) {
    target.add(item("NETWORK").add(carrier("HCN", "a").instance(3)));
    scan();
    ASSERT_NE(inventory->fileSystemTemplate(), nullptr);
    EXPECT_EQ(inventory->fileSystemTemplate()->boardAddress.toString(), "NETWORK[1]/HCN[3]");
}

TEST_F(FileSystemTemplateTest, TheFirstRecordDecidesNotTheFirstNode) {
    options.verbose = true;
    target.add(carrier("IOMODULE", "i")).add(carrier("HCN", "h"));
    scan();
    EXPECT_EQ(inventory->fileSystemTemplate(), nullptr);
    EXPECT_EQ(printed(), L"HCN found: HCN[1]\n"
                         L"WARNING: Cannot initialize file system element template. Unexpected HCN address "
                         L"(IOMODULE[1]).\n"
                         L"Reboot support status: 3\n");
}

TEST_F(FileSystemTemplateTest, TheWarningIsPrintedOnlyWhenVerbose) {
    target.add(item("HCN").add(carrier("IOMODULE", "i")));
    scan();
    EXPECT_EQ(inventory->fileSystemTemplate(), nullptr);
    EXPECT_EQ(printed(), L"");
}

TEST_F(FileSystemTemplateTest, TheFirstRecordIsThatAfterTheFilters) {
    target.add(carrier("HCN", "h").add(carrier("IOMODULE", "i")));
    options.elementNameFilter = "i";
    scan();
    EXPECT_EQ(count(), 1U);
    EXPECT_EQ(inventory->fileSystemTemplate(), nullptr);
}

TEST_F(FileSystemTemplateTest, WithConfigurationElementsThereIsNone) {
    options.verbose = true;
    options.configurationElements = true;
    target.add(completeBoard("HCN", "QB1000", 1).element(completeElement(1, "a").parameter("CONFIGURATION", 1)))
        .add(item("CN"));
    scan();
    EXPECT_EQ(count(), 1U);
    EXPECT_EQ(inventory->fileSystemTemplate(), nullptr);
    EXPECT_EQ(printed(), L"HCN found: HCN[1]\nCN found: CN[1]\nReboot support status: 3\n");
}

TEST_F(FileSystemTemplateTest, WithoutANodeThereIsNoneAndNoWarning) {
    options.verbose = true;
    target.add(carrier("IOMODULE", "i"));
    scan();
    EXPECT_EQ(inventory->fileSystemTemplate(), nullptr);
    EXPECT_EQ(printed(), L"Reboot support status: 3\n");
}

TEST_F(FileSystemTemplateTest, WithoutAnElementThereIsNoneAndNoWarning) {
    options.verbose = true;
    target.add(item("HCN"));
    scan();
    EXPECT_EQ(inventory->fileSystemTemplate(), nullptr);
    EXPECT_EQ(printed(), L"HCN found: HCN[1]\nReboot support status: 4\n");
}
