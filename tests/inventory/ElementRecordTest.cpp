#include "InventoryFixture.h"

#include "KvEmulation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

} // namespace

/// What the record of an element says of the board that carries it.
using BoardRecordTest = InventoryTest;

TEST_F(BoardRecordTest, EveryParameterOfABoardIsRead) {
    target.add(item("HCN").add(item("BACKPLANE")
                                   .add(item("IOMODULE")
                                            .instance(4)
                                            .parameter("PRODUCT/BOARD_TYPE", "QB4120")
                                            .parameter("PRODUCT/VARIANT", "A")
                                            .parameter("PRODUCT/ID", 42)
                                            .parameter("PRODUCT/HW_TYPE", 1)
                                            .parameter("PRODUCT/SERIAL_NUMBER", 0x02003039)
                                            .parameter("PRODUCT/SLOT_COUNT", 2)
                                            .parameter("SLOT", 5)
                                            .parameter("PRODUCT/NAME", "Motion")
                                            .element(completeElement(1, "UserFirmware")))));
    scan();
    EXPECT_EQ(element().boardAddress.toString(), "HCN[1]/BACKPLANE[1]/IOMODULE[4]");
    EXPECT_EQ(element().boardType, "QB4120");
    EXPECT_EQ(element().boardVariant, "A");
    EXPECT_EQ(element().boardId, 42U);
    EXPECT_EQ(element().serialNumber, 0x02003039U);
    EXPECT_EQ(element().slotCount, 2U);
    EXPECT_EQ(element().slot, 5U);
    EXPECT_EQ(element().boardName, "Motion (A)");
    EXPECT_EQ(element().displayName, "Motion (A), SN 12345(2), Firmware");
    EXPECT_EQ(element().typeName, "Firmware");
}

TEST_F(BoardRecordTest, TheTypeStandsForAMissingName) {
    target.add(carrier("IOMODULE", "a")).add(carrier("IOMODULE", "b").parameter("PRODUCT/VARIANT", "B2"));
    scan();
    EXPECT_EQ(element(0).boardName, "QB1000");
    EXPECT_EQ(element(1).boardName, "QB1000 (B2)");
}

TEST_F(BoardRecordTest, AnEmptyNameIsAName) {
    target.add(carrier("IOMODULE", "a").parameter("PRODUCT/NAME", ""))
        .add(carrier("IOMODULE", "b").parameter("PRODUCT/NAME", "").parameter("PRODUCT/VARIANT", "B2"));
    scan();
    EXPECT_EQ(element(0).boardName, "");
    // Shown by its type all the same.
    EXPECT_EQ(element(0).displayName, "QB1000, SN 1, a");
    EXPECT_EQ(element(1).boardName, " (B2)");
}

TEST_F(BoardRecordTest, AnEmptyVariantAddsNothing) {
    target.add(carrier("IOMODULE", "a").parameter("PRODUCT/VARIANT", "").parameter("PRODUCT/NAME", "Motion"));
    scan();
    EXPECT_EQ(element().boardName, "Motion");
}

TEST_F(BoardRecordTest, TheSlotIsReadOnlyOfABoardWithSlots) {
    target.add(carrier("IOMODULE", "a").parameter("SLOT", 5))
        .add(carrier("IOMODULE", "b").parameter("SLOT", 6).parameter("PRODUCT/SLOT_COUNT", 1))
        .add(carrier("IOMODULE", "c").parameter("PRODUCT/SLOT_COUNT", 3))
        .add(carrier("IOMODULE", "d").parameter("PRODUCT/SLOT", 8).parameter("PRODUCT/SLOT_COUNT", 3));
    scan();
    EXPECT_EQ(element(0).slot, 0U);
    EXPECT_EQ(element(1).slot, 6U);
    EXPECT_EQ(element(2).slot, 0U);
    EXPECT_EQ(element(2).slotCount, 3U);
    EXPECT_EQ(element(3).slot, 0U);
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(BoardRecordTest, WhatMayBeMissingIsMissingInSilence) {
    target.add(item("IOMODULE")
                   .parameter("PRODUCT/SERIAL_NUMBER", 0)
                   .parameter("PRODUCT/SLOT_COUNT", 1)
                   .element(completeElement(1, "a")));
    scan();
    EXPECT_EQ(element().boardType, "");
    EXPECT_EQ(element().boardVariant, "");
    EXPECT_EQ(element().boardId, 0U);
    EXPECT_EQ(element().slot, 0U);
    EXPECT_EQ(element().boardName, "");
    EXPECT_EQ(element().displayName, ", a");
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(BoardRecordTest, TheBoardIdIsStatedOrDeterminedByTheHardwareType) {
    options.verbose = true;
    const auto with = [](const char* boardType, std::uint32_t hardwareType) {
        return completeBoard("IOMODULE", boardType, 1)
            .element(completeElement(1, "a"))
            .parameter("PRODUCT/HW_TYPE", std::uint64_t(hardwareType));
    };
    target.add(with("QB4120", 1))
        .add(with("QB4120", 5))
        .add(with("QB4120", 1).parameter("PRODUCT/ID", 0))
        .add(with("QBx86_32", 2))
        .add(with("QB4140", 0));
    scan();
    EXPECT_EQ(element(0).boardId, 7U);
    EXPECT_EQ(element(1).boardId, 0U);
    EXPECT_EQ(element(2).boardId, 0U);
    EXPECT_EQ(element(3).boardId, 2U);
    EXPECT_EQ(element(4).boardId, 0U);
    EXPECT_EQ(printed(), L"QB4120: BoardId (7) determined by HwType (1)\n"
                         L"QBx86_32: BoardId (2) determined by HwType (2)\n"
                         L"Reboot support status: 3\n");
}

TEST_F(BoardRecordTest, ADeterminedBoardIdIsToldForEveryElementAndOnlyWhenVerbose) {
    target.add(completeBoard("IOMODULE", "QB7001", 1)
                   .parameter("PRODUCT/HW_TYPE", 3)
                   .element(completeElement(1, "a"))
                   .element(completeElement(2, "b")));
    scan();
    EXPECT_EQ(element(0).boardId, 5U);
    EXPECT_EQ(printed(), L"");
    options.verbose = true;
    scanAgain();
    EXPECT_EQ(printed(), L"QB7001: BoardId (5) determined by HwType (3)\n"
                         L"QB7001: BoardId (5) determined by HwType (3)\n"
                         L"Reboot support status: 3\n");
}

TEST_F(BoardRecordTest, ABoardIdThatCannotBeReadIsNotDetermined) {
    options.verbose = true;
    target.add(completeBoard("IOMODULE", "QB4120", 1)
                   .parameter("PRODUCT/ID", "x")
                   .parameter("PRODUCT/HW_TYPE", 1)
                   .element(completeElement(1, "a")));
    scan();
    EXPECT_EQ(element().boardId, 0U);
    EXPECT_EQ(printed(), L"Reboot support status: 3\n");
    EXPECT_THAT(takeErrors(), ElementsAre(unreadable("PRODUCT[1]/ID[1]", "IOMODULE[1]")));
}

TEST_F(BoardRecordTest, ValuesThatCannotBeReadLeaveTheirDefaultsInTheOrderOfReading) {
    target.add(item("IOMODULE")
                   .parameter("PRODUCT/NAME", 1)
                   .parameter("SLOT", "x")
                   .parameter("PRODUCT/SLOT_COUNT", 3)
                   .parameter("PRODUCT/SERIAL_NUMBER", "12")
                   .parameter("PRODUCT/HW_TYPE", "x")
                   .parameter("PRODUCT/VARIANT", 2)
                   .parameter("PRODUCT/BOARD_TYPE", 3)
                   .element(completeElement(1, "a")));
    scan();
    EXPECT_EQ(element().boardType, "");
    EXPECT_EQ(element().boardVariant, "");
    EXPECT_EQ(element().boardId, 0U);
    EXPECT_EQ(element().serialNumber, 0U);
    EXPECT_EQ(element().slotCount, 3U);
    EXPECT_EQ(element().slot, 0U);
    EXPECT_EQ(element().boardName, "");
    EXPECT_THAT(takeErrors(),
                ElementsAre(unreadable("PRODUCT[1]/BOARD_TYPE[1]", "IOMODULE[1]"),
                            unreadable("PRODUCT[1]/VARIANT[1]", "IOMODULE[1]"),
                            unreadable("PRODUCT[1]/HW_TYPE[1]", "IOMODULE[1]"),
                            unreadable("PRODUCT[1]/SERIAL_NUMBER[1]", "IOMODULE[1]"),
                            unreadable("SLOT[1]", "IOMODULE[1]"), unreadable("PRODUCT[1]/NAME[1]", "IOMODULE[1]")));
}

/// What the record of an element says of the element itself.
using ElementRecordTest = InventoryTest;

TEST_F(ElementRecordTest, EveryParameterOfAnElementIsRead) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .element(item("UPDATE_ELEMENT")
                                .parameter("CONFIGURATION", 0)
                                .parameter("ID", 17)
                                .parameter("LOCATION", "flash")
                                .parameter("HW_COMPATIBILITY_ID", 3)
                                .parameter("SW_COMPATIBILITY_ID", 4294967295U)
                                .parameter("TYPE_ID", 5)
                                .parameter("CUSTOM", 255)
                                .parameter("VALID", 1)
                                .parameter("ACTIVE", 1)
                                .parameter("CHECKSUM_CRC32", 0xDEADBEEF)
                                .parameter("VERSION", "23.2a12")
                                .parameter("NAME", "IoFpga7")
                                .parameter("VERSION_HISTORY", "23.1;23.0")));
    scan();
    EXPECT_EQ(element().elementAddress.toString(), "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]");
    EXPECT_EQ(element().elementId, 17U);
    EXPECT_EQ(element().location, "flash");
    EXPECT_EQ(element().hwCompatibilityId, 3U);
    EXPECT_EQ(element().swCompatibilityId, 4294967295U);
    EXPECT_EQ(element().typeId, 5U);
    EXPECT_EQ(element().custom, 255U);
    EXPECT_FALSE(element().configured);
    EXPECT_TRUE(element().valid);
    EXPECT_TRUE(element().active);
    EXPECT_TRUE(element().hasChecksum);
    EXPECT_EQ(element().checksumCrc32, 0xDEADBEEFU);
    EXPECT_EQ(element().version, KvCVersion("23.2a12"));
    EXPECT_EQ(element().name, "IoFpga7");
    EXPECT_EQ(element().versionHistory, "23.1;23.0");
    EXPECT_EQ(element().typeName, "FPGA");
    EXPECT_EQ(element().displayName, "QB1000, SN 1, FPGA");
}

TEST_F(ElementRecordTest, WhatMayBeMissingIsMissingInSilence) {
    target.add(
        completeBoard("HCN", "QB1000", 1)
            .element(bareElement().parameter("VERSION", "").parameter("NAME", "a").parameter("VERSION_HISTORY", "")));
    scan();
    EXPECT_EQ(element().elementId, 0U);
    EXPECT_EQ(element().location, "");
    EXPECT_EQ(element().hwCompatibilityId, 0U);
    EXPECT_EQ(element().swCompatibilityId, 0U);
    EXPECT_EQ(element().typeId, 0U);
    EXPECT_EQ(element().custom, 0U);
    EXPECT_FALSE(element().valid);
    EXPECT_FALSE(element().active);
    EXPECT_FALSE(element().hasChecksum);
    EXPECT_EQ(element().checksumCrc32, 0U);
    EXPECT_EQ(element().version, KvCVersion());
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(ElementRecordTest, WhatHasToBeThereLeavesItsDefaultAndOneErrorEach) {
    target.add(item("FBMODULE").element(bareElement()));
    scan();
    EXPECT_EQ(element().serialNumber, 0U);
    EXPECT_EQ(element().slotCount, 0U);
    EXPECT_EQ(element().version, KvCVersion());
    EXPECT_EQ(element().name, "Update Element");
    EXPECT_EQ(element().versionHistory, "");
    EXPECT_EQ(element().displayName, ", Update Element");
    EXPECT_EQ(printed(), L"");
    const std::string address = "FBMODULE[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]";
    EXPECT_THAT(takeErrors(),
                ElementsAre(missing("PRODUCT[1]/SERIAL_NUMBER[1]", "FBMODULE[1]"),
                            missing("PRODUCT[1]/SLOT_COUNT[1]", "FBMODULE[1]"), missing("VERSION[1]", address),
                            missing("NAME[1]", address), missing("VERSION_HISTORY[1]", address)));
}

TEST_F(ElementRecordTest, ErrorsDoNotFailTheScan) {
    target.add(item("FBMODULE").element(bareElement()).element(bareElement()));
    EXPECT_TRUE(tryScan());
    EXPECT_EQ(count(), 2U);
    EXPECT_EQ(takeErrors().size(), 10U);
}

TEST_F(ElementRecordTest, AnElementWithAnEmptyNameIsCalledUpdateElement) {
    target.add(completeBoard("HCN", "QB1000", 1).element(completeElement(1, "")));
    scan();
    EXPECT_EQ(element().name, "Update Element");
    EXPECT_EQ(element().typeName, "Update Element");
    EXPECT_EQ(element().displayName, "QB1000, SN 1, Update Element");
}

TEST_F(ElementRecordTest, ValidAndActiveMeanExactlyOne) {
    struct Row {
        std::uint32_t value;
        bool isSet;
    };
    constexpr std::array rows = {Row{0, false}, Row{1, true}, Row{2, false}, Row{255, false}};
    ItemBuilder host = completeBoard("HCN", "QB1000", 1);
    for (const Row& row : rows) {
        host.element(completeElement(1, "valid").parameter("VALID", std::uint64_t(row.value)));
        host.element(completeElement(2, "active").parameter("ACTIVE", std::uint64_t(row.value)));
    }
    target.add(host);
    scan();
    for (std::size_t index = 0; index < rows.size(); ++index) {
        EXPECT_EQ(element(2 * index).valid, rows[index].isSet) << rows[index].value;
        EXPECT_TRUE(element(2 * index).active);
        EXPECT_EQ(element(2 * index + 1).active, rows[index].isSet) << rows[index].value;
        EXPECT_TRUE(element(2 * index + 1).valid);
    }
}

TEST_F(ElementRecordTest, AChecksumOfZeroIsOne) {
    target.add(completeBoard("HCN", "QB1000", 1).element(completeElement(1, "a").parameter("CHECKSUM_CRC32", 0)));
    scan();
    EXPECT_TRUE(element().hasChecksum);
    EXPECT_EQ(element().checksumCrc32, 0U);
}

TEST_F(ElementRecordTest, ValuesThatCannotBeReadLeaveTheirDefaultsInTheOrderOfReading) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .element(item("FILESYSTEM_ELEMENT")
                                .parameter("VERSION_HISTORY", 1)
                                .parameter("NAME", 1)
                                .parameter("VERSION", 1)
                                .parameter("CHECKSUM_CRC32", "x")
                                .parameter("ACTIVE", 256)
                                .parameter("VALID", "1")
                                .parameter("CUSTOM", 256)
                                .parameter("TYPE_ID", "x")
                                .parameter("SW_COMPATIBILITY_ID", "x")
                                .parameter("HW_COMPATIBILITY_ID", 4294967296U)
                                .parameter("LOCATION", 1)
                                .parameter("ID", "x")
                                .parameter("CONFIGURATION", 0)));
    scan();
    EXPECT_EQ(element().custom, 0U);
    EXPECT_FALSE(element().valid);
    EXPECT_FALSE(element().active);
    // The element has a checksum; it just cannot be read.
    EXPECT_TRUE(element().hasChecksum);
    EXPECT_EQ(element().checksumCrc32, 0U);
    EXPECT_EQ(element().name, "Update Element");
    const std::string address = "HCN[1]/UPDATE_INFO[1]/FILESYSTEM_ELEMENT[1]";
    EXPECT_THAT(takeErrors(), ElementsAre(unreadable("ID[1]", address), unreadable("LOCATION[1]", address),
                                          unreadable("HW_COMPATIBILITY_ID[1]", address),
                                          unreadable("SW_COMPATIBILITY_ID[1]", address),
                                          unreadable("TYPE_ID[1]", address), unreadable("CUSTOM[1]", address),
                                          unreadable("VALID[1]", address), unreadable("ACTIVE[1]", address),
                                          unreadable("CHECKSUM_CRC32[1]", address), unreadable("VERSION[1]", address),
                                          unreadable("NAME[1]", address), unreadable("VERSION_HISTORY[1]", address)));
}

TEST_F(ElementRecordTest, ErrorsComeInTheOrderBoardUnitElement) {
    target.add(item("IOROUTER").parameter("PRODUCT/PACKAGE_NAME", 1).element(bareElement()));
    scan();
    const std::string address = "IOROUTER[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]";
    EXPECT_THAT(takeErrors(),
                ElementsAre(missing("PRODUCT[1]/SERIAL_NUMBER[1]", "IOROUTER[1]"),
                            missing("PRODUCT[1]/SLOT_COUNT[1]", "IOROUTER[1]"),
                            unreadable("PRODUCT[1]/PACKAGE_NAME[1]", "IOROUTER[1]"),
                            missing("PRODUCT[1]/SERIAL_NUMBER[1]", "IOROUTER[1]"), missing("VERSION[1]", address),
                            missing("NAME[1]", address), missing("VERSION_HISTORY[1]", address)));
}

TEST_F(ElementRecordTest, CustomElementsAreDisabledOnlyWithTheOption) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .element(completeElement(1, "plain"))
                   .element(completeElement(2, "zero").parameter("CUSTOM", 0))
                   .element(completeElement(3, "one").parameter("CUSTOM", 1))
                   .element(completeElement(4, "two").parameter("CUSTOM", 2)));
    scan();
    for (const KvTUpdateElement& one : inventory->elements()) {
        EXPECT_FALSE(one.disabled) << one.name.c_str();
    }
    options.disableCustomElements = true;
    scanAgain();
    ASSERT_THAT(names(), ElementsAre("plain", "zero", "one", "two"));
    EXPECT_FALSE(element(0).disabled);
    EXPECT_FALSE(element(1).disabled);
    EXPECT_TRUE(element(2).disabled);
    EXPECT_TRUE(element(3).disabled);
    EXPECT_EQ(element(3).custom, 2U);
}

TEST_F(ElementRecordTest, PlanAndExecutionAreAsOfANewRecord) {
    target.add(carrier("HCN", "a"));
    scan();
    EXPECT_EQ(element().archiveFileIndex, 0xFFFFFFFFU);
    EXPECT_FALSE(element().hasArchiveFile());
    EXPECT_EQ(element().phase, 0U);
    EXPECT_FALSE(element().upToDate);
    EXPECT_FALSE(element().disabled);
    EXPECT_EQ(element().updateState, 0U);
    EXPECT_EQ(element().pollFailures, 0U);
}

TEST_F(ElementRecordTest, EachElementOwnsTwoEmptyErrorLists) {
    target.add(carrier("HCN", "a")).add(carrier("CN", "b")).add(carrier("NETC", "c"));
    scan();
    std::set<const KvCErrorList*> lists;
    for (const KvTUpdateElement& one : inventory->elements()) {
        for (const KvCOwnedErrorList& list : one.errorLists) {
            ASSERT_NE(list.get(), nullptr);
            EXPECT_EQ(list->getErrorCount(), 0U);
            lists.insert(list.get());
        }
        EXPECT_FALSE(one.hasErrors());
    }
    EXPECT_EQ(lists.size(), 6U);
    EXPECT_EQ(KvEmulation::ledger().errorLists, 6U);
    inventory.reset();
    EXPECT_EQ(KvEmulation::ledger().errorLists, 0U);
    inventory.emplace(messages.writer(), options, errors());
}

TEST_F(ElementRecordTest, AnErrorInEitherListIsAnErrorOfTheElement) {
    target.add(carrier("HCN", "a")).add(carrier("CN", "b"));
    scan();
    const std::list<KvTUpdateElement>& elements = inventory->elements();
    elements.front().errorLists[callErrors]->addError({});
    elements.back().errorLists[targetErrors]->addError({});
    EXPECT_TRUE(element(0).hasErrors());
    EXPECT_TRUE(element(1).hasErrors());
}

TEST(UpdateElement, ANewRecordHasTheseDefaults) {
    const KvTUpdateElement element;
    EXPECT_EQ(element.unitItem, nullptr);
    EXPECT_TRUE(element.boardAddress.isEmpty());
    EXPECT_TRUE(element.elementAddress.isEmpty());
    EXPECT_EQ(element.boardId, 0U);
    EXPECT_EQ(element.serialNumber, 0U);
    EXPECT_EQ(element.index, 0U);
    EXPECT_FALSE(element.isFileSystemElement);
    EXPECT_TRUE(element.configured);
    EXPECT_FALSE(element.valid);
    EXPECT_FALSE(element.active);
    EXPECT_FALSE(element.hasChecksum);
    EXPECT_EQ(element.version.getAsULong64(), 0U);
    EXPECT_EQ(element.archiveFileIndex, 0xFFFFFFFFU);
    EXPECT_EQ(element.errorLists[0].get(), nullptr);
    EXPECT_EQ(element.errorLists[1].get(), nullptr);
}
