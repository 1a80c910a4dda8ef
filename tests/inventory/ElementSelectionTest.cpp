#include "InventoryFixture.h"

#include "KvNInventoryIDs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::array containers = {"ROOT",       "HCN",      "CN",         "NETC",     "BACKPLANE",
                                   "NETWORK",    "IOROUTER", "ION",        "IOMODULE", "PIGGYBACK_MODULE",
                                   "SUB_BOARDS", "FBMODULE", "UPDATE_INFO"};

} // namespace

/// Which items of a target become elements, and what is said of those that do not.
using ElementSelectionTest = InventoryTest;

TEST_F(ElementSelectionTest, TheWalkDescendsIntoEveryContainer) {
    for (const char* const container : containers) {
        target.add(item(container).instance(2).add(carrier("FBMODULE", container)));
    }
    scan();
    EXPECT_EQ(names(), std::vector<std::string>(containers.begin(), containers.end()));
    EXPECT_EQ(printed(), L"");
}

TEST_F(ElementSelectionTest, OtherItemsAreLeaves) {
    target.add(item("FIRMWARE").add(carrier("IOMODULE", "below firmware")))
        .add(completeBoard("IOMODULE", "QB1000", 1)
                 .element(completeElement(1, "outer").add(carrier("IOMODULE", "below an element")))
                 .element(completeFile(2, "x").add(carrier("IOMODULE", "below a file"))));
    scan();
    EXPECT_THAT(names(), ElementsAre("outer", "File"));
    EXPECT_EQ(printed(), L"");
}

TEST_F(ElementSelectionTest, TheUpdateInfoOfAnItemIsVisitedFirstAndOnce) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .add(carrier("CN", "c"))
                   .add(carrier("IOMODULE", "i"))
                   .add(item("UPDATE_INFO").add(completeElement(1, "h"))));
    scan();
    EXPECT_THAT(names(), ElementsAre("h", "c", "i"));
}

TEST_F(ElementSelectionTest, UpdateElementsAndFileSystemElementsAreElements) {
    target.add(completeBoard("HCN", "QB1000", 1).element(completeElement(1, "a")).element(completeFile(2, "x")));
    scan();
    EXPECT_FALSE(element(0).isFileSystemElement);
    EXPECT_TRUE(element(1).isFileSystemElement);
}

TEST_F(ElementSelectionTest, AnyInstanceOfAnElementIsAnElement) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .element(completeElement(1, "a").instance(500))
                   .element(completeFile(2, "x").instance(4294967295U)));
    scan();
    EXPECT_THAT(names(), ElementsAre("a", "File"));
    EXPECT_EQ(element(0).elementAddress.toString(), "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[500]");
    EXPECT_EQ(element(1).elementAddress.toString(), "HCN[1]/UPDATE_INFO[1]/FILESYSTEM_ELEMENT[4294967295]");
}

TEST_F(ElementSelectionTest, AnElementOutsideAnUpdateInfoIsNoElement) {
    target.add(completeBoard("HCN", "QB1000", 1).add(completeElement(1, "a")).add(completeFile(2, "x")));
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_EQ(printed(), L"WARNING: HCN[1]/UPDATE_ELEMENT[1] has no UPDATE_INFO parent item!\n"
                         L"WARNING: HCN[1]/FILESYSTEM_ELEMENT[1] has no UPDATE_INFO parent item!\n");
}

TEST_F(ElementSelectionTest, AnotherInstanceOfUpdateInfoCarriesNoElements) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .add(item("UPDATE_INFO").instance(2).add(completeElement(1, "second")))
                   .add(item("UPDATE_INFO").instance(1).add(completeElement(1, "first"))));
    scan();
    EXPECT_THAT(names(), ElementsAre("first"));
    EXPECT_EQ(printed(), L"WARNING: HCN[1]/UPDATE_INFO[2]/UPDATE_ELEMENT[1] has no UPDATE_INFO parent item!\n");
}

TEST_F(ElementSelectionTest, AnElementThatIsTheRootHasNoUpdateInfo) {
    target.root(completeElement(1, "root"));
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_EQ(printed(), L"WARNING: ROOT[1] has no UPDATE_INFO parent item!\n");
}

TEST_F(ElementSelectionTest, AnUpdateInfoThatIsTheRootHasNoBoard) {
    target.root(item("UPDATE_INFO")).add(completeElement(1, "a")).add(completeFile(2, "x"));
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_EQ(printed(), L"WARNING: ROOT[1] has no parent item!\nWARNING: ROOT[1] has no parent item!\n");
}

TEST_F(ElementSelectionTest, AnElementDirectlyBelowTheRootHasTheRootAsItsBoard) {
    target.root(completeBoard("ROOT", "QB1000", 77).element(completeElement(1, "a")));
    scan();
    EXPECT_THAT(names(), ElementsAre("a"));
    EXPECT_EQ(element().boardAddress.toString(), "ROOT[1]");
    EXPECT_EQ(element().serialNumber, 77U);
}

TEST_F(ElementSelectionTest, AnElementWithoutConfigurationIsNoElement) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .element(item("UPDATE_ELEMENT").parameter("NAME", "a"))
                   .element(completeElement(2, "b"))
                   .element(item("FILESYSTEM_ELEMENT")));
    scan();
    EXPECT_THAT(names(), ElementsAre("b"));
    EXPECT_EQ(printed(), L"WARNING: HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1] has no CONFIGURATION parameter!\n"
                         L"WARNING: HCN[1]/UPDATE_INFO[1]/FILESYSTEM_ELEMENT[1] has no CONFIGURATION parameter!\n");
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(ElementSelectionTest, OnlyTheFirstFaultOfAnElementIsTold) {
    target.root(item("UPDATE_INFO")).add(item("UPDATE_ELEMENT"));
    scan();
    EXPECT_EQ(printed(), L"WARNING: ROOT[1] has no parent item!\n");
}

TEST_F(ElementSelectionTest, AConfigurationThatIsNotZeroIsConfiguration) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .element(completeElement(1, "zero"))
                   .element(completeElement(2, "one").parameter("CONFIGURATION", 1))
                   .element(completeElement(3, "two").parameter("CONFIGURATION", 2))
                   .element(completeFile(4, "x").parameter("NAME", "most").parameter("CONFIGURATION", 4294967295U)));
    scan();
    EXPECT_THAT(names(), ElementsAre("zero"));
    EXPECT_FALSE(element().configured);
    options.configurationElements = true;
    scanAgain();
    EXPECT_THAT(names(), ElementsAre("one", "two", "most"));
    for (const KvTUpdateElement& one : inventory->elements()) {
        EXPECT_TRUE(one.configured);
    }
    EXPECT_EQ(printed(), L"");
}

TEST_F(ElementSelectionTest, AConfigurationThatCannotBeReadCountsAsZero) {
    target.add(completeBoard("HCN", "QB1000", 1)
                   .element(completeElement(1, "text").parameter("CONFIGURATION", "1"))
                   .element(completeElement(2, "large").parameter("CONFIGURATION", 4294967296U)));
    scan();
    EXPECT_THAT(names(), ElementsAre("text", "large"));
    EXPECT_FALSE(element(0).configured);
    EXPECT_FALSE(element(1).configured);
    EXPECT_EQ(printed(), L"");
    EXPECT_THAT(takeErrors(), ElementsAre(unreadable("CONFIGURATION[1]", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]"),
                                          unreadable("CONFIGURATION[1]", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2]")));
}

TEST_F(ElementSelectionTest, WarningsComeInTheOrderOfTheWalk) {
    options.verbose = true;
    target.add(completeBoard("HCN", "QB1000", 1)
                   .add(completeElement(9, "misplaced"))
                   .add(carrier("CN", "c").element(item("UPDATE_ELEMENT")))
                   .element(item("UPDATE_ELEMENT")));
    scan();
    EXPECT_EQ(printed(), L"HCN found: HCN[1]\n"
                         L"WARNING: HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1] has no CONFIGURATION parameter!\n"
                         L"WARNING: HCN[1]/UPDATE_ELEMENT[1] has no UPDATE_INFO parent item!\n"
                         L"CN found: HCN[1]/CN[1]\n"
                         L"WARNING: HCN[1]/CN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2] has no CONFIGURATION parameter!\n"
                         L"Reboot support status: 3\n");
}

/// The addresses of the nodes.
using NodeAddressTest = InventoryTest;

TEST_F(NodeAddressTest, TheNodesAreRememberedAndToldWhenVerbose) {
    options.verbose = true;
    target.add(item("HCN").add(item("CN")));
    scan();
    ASSERT_NE(inventory->hcnAddress(), nullptr);
    ASSERT_NE(inventory->cnAddress(), nullptr);
    EXPECT_EQ(inventory->hcnAddress()->toString(), "HCN[1]");
    EXPECT_EQ(inventory->cnAddress()->toString(), "HCN[1]/CN[1]");
    EXPECT_EQ(inventory->systemAddress(), inventory->hcnAddress());
    EXPECT_EQ(printed(), L"HCN found: HCN[1]\nCN found: HCN[1]/CN[1]\nReboot support status: 4\n");
}

TEST_F(NodeAddressTest, WithoutVerboseTheyAreNotTold) {
    target.add(item("HCN").add(item("CN")));
    scan();
    EXPECT_EQ(printed(), L"");
}

TEST_F(NodeAddressTest, TheFirstOfTheWalkWins) {
    options.verbose = true;
    target.add(item("NETWORK").add(item("HCN").instance(4).add(item("CN").instance(3)).add(item("CN"))))
        .add(item("HCN").add(item("CN")));
    scan();
    EXPECT_EQ(inventory->hcnAddress()->toString(), "NETWORK[1]/HCN[4]");
    EXPECT_EQ(inventory->cnAddress()->toString(), "NETWORK[1]/HCN[4]/CN[3]");
    EXPECT_EQ(printed(), L"HCN found: NETWORK[1]/HCN[4]\nCN found: NETWORK[1]/HCN[4]/CN[3]\n"
                         L"Reboot support status: 3\n");
}

TEST_F(NodeAddressTest, AComputingNodeAloneStandsForTheSystem) {
    target.add(item("CN"));
    scan();
    EXPECT_EQ(inventory->hcnAddress(), nullptr);
    ASSERT_NE(inventory->cnAddress(), nullptr);
    EXPECT_EQ(inventory->systemAddress(), inventory->cnAddress());
}

TEST_F(NodeAddressTest, ATargetMayHaveNoNode) {
    target.add(carrier("IOMODULE", "i")).add(item("FIRMWARE").add(item("HCN")));
    scan();
    EXPECT_EQ(inventory->hcnAddress(), nullptr);
    EXPECT_EQ(inventory->cnAddress(), nullptr);
    EXPECT_EQ(inventory->systemAddress(), nullptr);
}

TEST_F(NodeAddressTest, TheRootCanBeTheNode) {
    target.root(item("HCN"));
    scan();
    ASSERT_NE(inventory->hcnAddress(), nullptr);
    EXPECT_EQ(inventory->hcnAddress()->toString(), "ROOT[1]");
}

/// The filters of the options.
class ElementFilterTest : public InventoryTest {
protected:
    void SetUp() override {
        InventoryTest::SetUp();
        target
            .add(completeBoard("IOMODULE", "QB4120", 1234)
                     .element(completeElement(1, "UserFirmware"))
                     .element(completeElement(2, "UserFpga")))
            .add(completeBoard("IOMODULE", "QB7001", 0x02000000 + 1234)
                     .element(completeElement(1, "UserFirmware"))
                     .element(completeElement(2, "IoFpga")));
    }
    /// Scans and names the elements with the types of their boards.
    std::vector<std::string> kept() {
        scan();
        std::vector<std::string> result;
        for (const KvTUpdateElement& one : inventory->elements()) {
            result.push_back(std::string(one.boardType.view()) + " " + std::string(one.name.view()));
        }
        EXPECT_EQ(printed(), L"");
        return result;
    }
};

TEST_F(ElementFilterTest, WithoutFiltersEverythingIsKept) {
    EXPECT_THAT(kept(), ElementsAre("QB4120 UserFirmware", "QB4120 UserFpga", "QB7001 UserFirmware", "QB7001 IoFpga"));
}

TEST_F(ElementFilterTest, TheNameFilterKeepsElementsOfTheseNames) {
    options.elementNameFilter = "IoFpga, UserFpga";
    EXPECT_THAT(kept(), ElementsAre("QB4120 UserFpga", "QB7001 IoFpga"));
}

TEST_F(ElementFilterTest, TheNameFilterTakesWholeNames) {
    options.elementNameFilter = "UserFpgaX Io";
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(ElementFilterTest, TheBoardTypeFilterKeepsElementsOfTheseBoards) {
    options.boardTypeFilter = "QB1 QB7001";
    EXPECT_THAT(kept(), ElementsAre("QB7001 UserFirmware", "QB7001 IoFpga"));
}

TEST_F(ElementFilterTest, TheSerialNumberFilterComparesAll32Bits) {
    options.serialNumberFilter = "1234";
    EXPECT_THAT(kept(), ElementsAre("QB4120 UserFirmware", "QB4120 UserFpga"));
}

TEST_F(ElementFilterTest, ASubNumberBelongsToTheSerialNumber) {
    options.serialNumberFilter = "33555666";
    EXPECT_THAT(kept(), ElementsAre("QB7001 UserFirmware", "QB7001 IoFpga"));
}

TEST_F(ElementFilterTest, SerialNumbersAreComparedAsTheirDecimalText) {
    options.serialNumberFilter = "0x4D2,01234,1.234,1234(2)";
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(ElementFilterTest, AllFiltersHaveToPass) {
    options.elementNameFilter = "UserFirmware";
    options.boardTypeFilter = "QB4120";
    options.serialNumberFilter = "1234,33555666";
    EXPECT_THAT(kept(), ElementsAre("QB4120 UserFirmware"));
}

TEST_F(ElementFilterTest, AListOfSeparatorsIsAFilterThatNothingPasses) {
    options.elementNameFilter = " ,";
    EXPECT_THAT(kept(), IsEmpty());
}

TEST_F(ElementFilterTest, IndicesCountWhatIsKept) {
    options.elementNameFilter = "IoFpga,UserFpga";
    scan();
    EXPECT_EQ(element(0).index, 0U);
    EXPECT_EQ(element(1).index, 1U);
}

TEST_F(ElementFilterTest, ConfigurationElementsAreFilteredToo) {
    target.add(completeBoard("IOMODULE", "QB4140", 5)
                   .element(completeElement(1, "Recipe").parameter("CONFIGURATION", 1))
                   .element(completeElement(2, "Other").parameter("CONFIGURATION", 1)));
    options.configurationElements = true;
    options.elementNameFilter = "Recipe UserFirmware";
    EXPECT_THAT(kept(), ElementsAre("QB4140 Recipe"));
}

/// The filters meet boards and elements that lack what they ask for.
using FilteredGapsTest = InventoryTest;

TEST_F(FilteredGapsTest, AnElementWithoutANamePassesEveryNameFilter) {
    options.elementNameFilter = "Something";
    target.add(completeBoard("IOMODULE", "QB1000", 1).element(completeElement(1, "")));
    scan();
    EXPECT_THAT(names(), ElementsAre("Update Element"));
}

TEST_F(FilteredGapsTest, TheReplacementOfAnEmptyNameIsNotFiltered) {
    options.elementNameFilter = "Update";
    target.add(completeBoard("IOMODULE", "QB1000", 1).element(completeElement(1, "Update Element")));
    scan();
    EXPECT_EQ(count(), 0U);
}

TEST_F(FilteredGapsTest, ABoardWithoutATypePassesEveryBoardTypeFilterAndIsReported) {
    options.boardTypeFilter = "QB4120";
    target.add(item("IOMODULE")
                   .parameter("PRODUCT/SERIAL_NUMBER", 1)
                   .parameter("PRODUCT/SLOT_COUNT", 0)
                   .element(completeElement(1, "a")));
    scan();
    EXPECT_THAT(names(), ElementsAre("a"));
    EXPECT_THAT(takeErrors(), ElementsAre(missing("PRODUCT[1]/BOARD_TYPE[1]", "IOMODULE[1]")));
}

TEST_F(FilteredGapsTest, WithoutABoardTypeFilterABoardWithoutATypeIsNotReported) {
    target.add(item("IOMODULE")
                   .parameter("PRODUCT/SERIAL_NUMBER", 1)
                   .parameter("PRODUCT/SLOT_COUNT", 0)
                   .element(completeElement(1, "a")));
    scan();
    EXPECT_THAT(names(), ElementsAre("a"));
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(FilteredGapsTest, AMissingSerialNumberCountsAsZeroAndIsReported) {
    target.add(item("IOMODULE").parameter("PRODUCT/SLOT_COUNT", 0).element(completeElement(1, "a")));
    options.serialNumberFilter = "7";
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_THAT(takeErrors(), ElementsAre(missing("PRODUCT[1]/SERIAL_NUMBER[1]", "IOMODULE[1]")));
    options.serialNumberFilter = "7,0";
    scanAgain();
    EXPECT_THAT(names(), ElementsAre("a"));
    // Asked for by the filter and by the record.
    EXPECT_EQ(takeErrors().size(), 2U);
}

TEST_F(FilteredGapsTest, AMissingNameIsReportedByTheFilter) {
    options.elementNameFilter = "x";
    options.boardTypeFilter = "no such board";
    target.add(completeBoard("IOMODULE", "QB1000", 1).element(bareElement()));
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_THAT(takeErrors(), ElementsAre(missing("NAME[1]", "IOMODULE[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]")));
}

TEST_F(FilteredGapsTest, AFilterThatFailsKeepsTheLaterOnesFromReading) {
    // Neither a board type nor a serial number can be read, and nobody asks.
    target.add(item("IOMODULE").parameter("PRODUCT/BOARD_TYPE", 1).element(completeElement(1, "a")));
    options.elementNameFilter = "b";
    options.boardTypeFilter = "QB4120";
    options.serialNumberFilter = "1";
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(FilteredGapsTest, TheBoardTypeIsFilteredBeforeTheSerialNumber) {
    target.add(item("IOMODULE").parameter("PRODUCT/BOARD_TYPE", "QB7001").element(completeElement(1, "a")));
    options.boardTypeFilter = "QB4120";
    options.serialNumberFilter = "1";
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(FilteredGapsTest, TheStructuralWarningsComeBeforeTheFilters) {
    target.add(completeBoard("IOMODULE", "QB1000", 1).element(item("UPDATE_ELEMENT").parameter("NAME", "a")));
    options.elementNameFilter = "b";
    scan();
    EXPECT_EQ(printed(), L"WARNING: IOMODULE[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1] has no CONFIGURATION parameter!\n");
}

TEST_F(FilteredGapsTest, TheSelectionByConfigurationComesBeforeTheFilters) {
    target.add(item("IOMODULE").element(bareElement().parameter("CONFIGURATION", 1)));
    options.elementNameFilter = "b";
    options.serialNumberFilter = "1";
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(FilteredGapsTest, AFilteredElementIsDroppedInSilence) {
    options.verbose = true;
    target.add(completeBoard("IOMODULE", "QB4120", 1).parameter("PRODUCT/HW_TYPE", 1).element(completeElement(1, "a")));
    options.elementNameFilter = "b";
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_EQ(printed(), L"Reboot support status: 3\n");
    options.elementNameFilter = "a";
    KeptMessages::forget();
    scanAgain();
    EXPECT_EQ(count(), 1U);
    EXPECT_NE(printed(), L"Reboot support status: 3\n");
}
