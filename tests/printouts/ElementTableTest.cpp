#include "ElementNames.h"
#include "ElementTables.h"
#include "KvCStringConversion.h"
#include "TableLayout.h"

#include "InventoryFixture.h"
#include "MessageBytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> markerOf(bool valid, bool active, bool isFile) {
    KvTUpdateElement element;
    element.valid = valid;
    element.active = active;
    element.isFileSystemElement = isFile;
    std::vector<KvCString> row;
    addStatusMarker(row, element);
    std::vector<std::string> texts;
    texts.reserve(row.size());
    for (const KvCString& cell : row) {
        texts.emplace_back(cell.view());
    }
    return texts;
}

std::wstring titleOf(const char* unitName, const char* rackName, const char* unitInstanceName) {
    KvTUpdateElement element;
    element.unitName = unitName;
    element.rackName = rackName;
    element.unitInstanceName = unitInstanceName;
    return unitPathOf(element, toWide);
}

} // namespace

TEST(ElementCells, TheZeroVersionIsShownAsUnknown) {
    EXPECT_EQ(versionCell(KvCVersion()), "---");
    EXPECT_EQ(versionCell(KvCVersion("23.2a12")), "23.2a12");
    EXPECT_EQ(versionCell(KvCVersion(0, 0, 0, 0, 0, 1)), KvCVersion(0, 0, 0, 0, 0, 1).getAsString());
}

TEST(ElementCells, AMarkerStandsForWhatIsNotValidOrNotActive) {
    EXPECT_THAT(markerOf(true, true, false), IsEmpty());
    EXPECT_THAT(markerOf(true, true, true), IsEmpty());
    EXPECT_THAT(markerOf(true, false, false), ElementsAre("[INACTIVE]"));
    EXPECT_THAT(markerOf(true, false, true), IsEmpty());
    EXPECT_THAT(markerOf(false, true, false), ElementsAre("[INVALID]"));
    EXPECT_THAT(markerOf(false, false, false), ElementsAre("[INVALID]"));
    EXPECT_THAT(markerOf(false, false, true), ElementsAre("[INVALID]"));
}

TEST(ElementCells, TheTitleJoinsTheNamesThatAUnitHas) {
    EXPECT_EQ(titleOf("Rack", "", ""), L"Rack");
    EXPECT_EQ(titleOf("Rack", "R1", ""), L"Rack: R1");
    EXPECT_EQ(titleOf("Rack", "", "first"), L"Rack: first");
    EXPECT_EQ(titleOf("Rack", "R1", "first"), L"Rack: R1 / first");
    EXPECT_EQ(titleOf("", "", ""), L"");
    EXPECT_EQ(titleOf("", "R1", ""), L": R1");
    EXPECT_EQ(titleOf("", "", "first"), L": first");
    EXPECT_EQ(titleOf("", "R1", "first"), L": R1 / first");
    EXPECT_EQ(titleOf("Halle \xC3\x84", "\xE2\x82\xAC", "\xF0\x9F\x94\xA7"), L"Halle \u00C4: \u20AC / \U0001F527");
}

/// The printout of the elements.
class ElementTableTest : public InventoryTest {
protected:
    /// What the table prints after a scan.
    std::wstring table() {
        scan();
        KeptMessages::forget();
        printElementTable(messages.writer(), options, *inventory);
        return printed();
    }
    static ItemBuilder unitBoard(const char* unitName, const char* elementName) {
        return carrier("IOMODULE", elementName).parameter("PRODUCT/UNITNAME", unitName);
    }
};

TEST_F(ElementTableTest, WithoutElementsThereIsTheHeadingAndItsRule) {
    EXPECT_EQ(table(), L"Update element | Version\n"
                       L"------------------------\n");
}

TEST_F(ElementTableTest, WithoutElementsVerbosePrintsNothing) {
    options.verbose = true;
    EXPECT_EQ(table(), L"");
}

TEST_F(ElementTableTest, EachElementHasItsRowWithItsMarker) {
    target
        .add(completeBoard("HCN", "QB4120", 2815)
                 .element(completeElement(1, "UserFirmware").parameter("VERSION", "23.2a12"))
                 .element(completeElement(2, "UserFpga").parameter("ACTIVE", 0))
                 .element(completeElement(3, "UserIpl").parameter("VALID", 0).parameter("ACTIVE", 0)))
        .add(completeBoard("IOMODULE", "QB7001", 0)
                 .element(completeElement(1, "").parameter("VERSION", ""))
                 .element(completeFile(2, "a.cfg")));
    EXPECT_EQ(table(), L"Update element              | Version |           \n"
                       L"--------------------------------------------------\n"
                       L"QB4120, SN 2815, Firmware   | 23.2a12 |           \n"
                       L"QB4120, SN 2815, FPGA       | 1.0     | [INACTIVE]\n"
                       L"QB4120, SN 2815, Bootloader | 1.0     | [INVALID] \n"
                       L"QB7001, Update Element      | ---     |           \n"
                       L"QB7001, File                | 1.0     |           \n");
}

TEST_F(ElementTableTest, WithoutMarkersThereIsNoThirdColumn) {
    target.add(carrier("HCN", "a"));
    EXPECT_EQ(table(), L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, a | 1.0    \n");
}

TEST_F(ElementTableTest, UnitsDoNotMatterUnlessVerbose) {
    target.add(unitBoard("A", "a")).add(unitBoard("B", "b"));
    EXPECT_EQ(table(), L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, a | 1.0    \n"
                       L"QB1000, SN 1, b | 1.0    \n");
}

TEST_F(ElementTableTest, VerboseFramesEachUnit) {
    options.verbose = true;
    target
        .add(item("BACKPLANE")
                 .parameter("PRODUCT/UNITNAME", "Unit")
                 .parameter("RACKNAME", "R1")
                 .parameter("UNITNAME", "x")
                 .add(carrier("IOMODULE", "a"))
                 .add(carrier("IOMODULE", "UserFirmware").element(completeElement(9, "s").parameter("ACTIVE", 0))))
        .add(unitBoard("Second", "c"));
    EXPECT_EQ(table(), L"\n****************\n* Unit: R1 / x *\n****************\n"
                       L"Update element         | Version |           \n"
                       L"---------------------------------------------\n"
                       L"QB1000, SN 1, a        | 1.0     |           \n"
                       L"QB1000, SN 1, Firmware | 1.0     |           \n"
                       L"QB1000, SN 1, s        | 1.0     | [INACTIVE]\n"
                       L"\n**********\n* Second *\n**********\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, c | 1.0    \n");
}

TEST_F(ElementTableTest, AUnitThatRecursIsFramedAgain) {
    options.verbose = true;
    target.add(unitBoard("A", "a").instance(1))
        .add(unitBoard("B", "b").instance(2))
        .add(unitBoard("A", "c").instance(3));
    EXPECT_EQ(table(), L"\n*****\n* A *\n*****\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, a | 1.0    \n"
                       L"\n*****\n* B *\n*****\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, b | 1.0    \n"
                       L"\n*****\n* A *\n*****\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, c | 1.0    \n");
}

TEST_F(ElementTableTest, UnitsOfOneTitleShareAFrame) {
    options.verbose = true;
    target.add(unitBoard("A", "a").instance(1)).add(unitBoard("A", "b").instance(2));
    EXPECT_EQ(table(), L"\n*****\n* A *\n*****\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, a | 1.0    \n"
                       L"QB1000, SN 1, b | 1.0    \n");
}

TEST_F(ElementTableTest, ElementsWithoutAUnitAtTheBeginningHaveNeitherFrameNorHeading) {
    options.verbose = true;
    target.add(carrier("FBMODULE", "a")).add(carrier("FBMODULE", "b")).add(unitBoard("A", "c"));
    EXPECT_EQ(table(), L"QB1000, SN 1, a | 1.0\n"
                       L"---------------------\n"
                       L"QB1000, SN 1, b | 1.0\n"
                       L"\n*****\n* A *\n*****\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, c | 1.0    \n");
}

TEST_F(ElementTableTest, ElementsWithoutAUnitBehindOthersHaveAnEmptyFrame) {
    options.verbose = true;
    target.add(unitBoard("A", "a")).add(carrier("FBMODULE", "b"));
    EXPECT_EQ(table(), L"\n*****\n* A *\n*****\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, a | 1.0    \n"
                       L"\n****\n*  *\n****\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, b | 1.0    \n");
}

TEST_F(ElementTableTest, ATitleOfTenCharactersIsFramedByFourteenStars) {
    options.verbose = true;
    target.add(unitBoard("0123456789", "a"));
    EXPECT_EQ(table(), L"\n**************\n* 0123456789 *\n**************\n"
                       L"Update element  | Version\n"
                       L"-------------------------\n"
                       L"QB1000, SN 1, a | 1.0    \n");
}

TEST_F(ElementTableTest, TheFrameCountsCharactersAndTheTableBytes) {
    options.verbose = true;
    target.add(unitBoard("\xC3\x84\xE2\x82\xAC", "\xC3\xA4"));
    EXPECT_EQ(table(), L"\n******\n* \u00C4\u20AC *\n******\n"
                       L"Update element   | Version\n"
                       L"--------------------------\n"
                       L"QB1000, SN 1, " +
                           inMessage("\xC3\xA4") + L" | 1.0    \n");
}
