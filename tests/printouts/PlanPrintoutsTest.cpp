#include "PlanTables.h"
#include "PlanningTest.h"

#include <string>
#include <utility>
#include <vector>

namespace {

/// The line below a table's heading.
std::string rule(std::size_t length) {
    return std::string(length, '-') + "\n";
}

} // namespace

class PlanPrintouts : public PlanningTest {
protected:
    [[nodiscard]] std::string planTable() {
        return printed([this] { printUpdatePlan(writer(), archive(), inventory()); });
    }
    [[nodiscard]] std::string notes() {
        return printed([this] { printPlanNotes(writer(), options(), inventory(), planner().phaseCount()); });
    }
    [[nodiscard]] std::string unsupported() {
        return printed([this] { printUnsupportedElements(writer(), inventory()); });
    }
    [[nodiscard]] std::string upToDate() {
        return printed([this] { printUpToDateElements(writer(), options(), inventory()); });
    }
};

// The table of the plan.

TEST_F(PlanPrintouts, ATargetWithoutElementsHasNoTable) {
    archiveHas({"'boardType': 'X', 'id': 1"});
    plan();
    EXPECT_EQ("", planTable());
}

TEST_F(PlanPrintouts, EachElementIsARowOfTheTable) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.1', 'checksumCrc32': 4294967295, 'sequence': 9",
                "'boardType': 'X', 'id': 2, 'version': '1.5', 'checksumCrc32': 77, 'sequence': 4",
                "'boardType': 'X', 'id': 3, 'version': null, 'checksumCrc32': 12"});
    targetHas(element("X", 1).version("2.0").checksum(1234567890).shownAs("Board one, SN 1, Firmware"));
    targetHas(element("X", 2).version("1.4a2").checksum(77).shownAs("B"));
    targetHas(element("X", 3).version("").shownAs("no version, no checksum"));
    targetHas(element("X", 9).version("1.5").checksum(5).shownAs("unsupported"));
    targetHas(element("X", 9).version("").shownAs("unsupported too"));
    plan();
    EXPECT_EQ("No. | Update element            | Installed | Available | Checksums                | Up-to-date | "
              "Phase\n" +
                  rule(103) +
                  "0   | Board one, SN 1, Firmware | 2.0       | 2.1       | 1234567890 != 4294967295 | N          | "
                  "1    \n"
                  "1   | B                         | 1.4a2     | 1.5       | 77 == 77                 | N          | "
                  "0    \n"
                  "2   | no version, no checksum   | ---       | ---       | --- != 12                | Y          | "
                  "-    \n"
                  "3   | unsupported               | 1.5       | ---       | 5 != ---                 |            | "
                  "-    \n"
                  "4   | unsupported too           | ---       | ---       |                          |            | "
                  "-    \n",
              planTable());
}

TEST_F(PlanPrintouts, AnUpToDateElementThatPlanningDisabledHasNoPhase) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0', 'checksumCrc32': 2"});
    targetHas(element("X", 1).version("2.0").checksum(2).shownAs("A"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums | Up-to-date | Phase\n" + rule(77) +
                  "0   | A              | 2.0       | 2.0       | 2 == 2    | Y          | -    \n",
              planTable());
}

TEST_F(PlanPrintouts, AForcedUpToDateElementHasItsPhase) {
    options().forceUpdate = true;
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0', 'checksumCrc32': 2"});
    targetHas(element("X", 1).version("2.0").checksum(2).shownAs("A"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums | Up-to-date | Phase\n" + rule(77) +
                  "0   | A              | 2.0       | 2.0       | 2 == 2    | Y          | 0    \n",
              planTable());
}

TEST_F(PlanPrintouts, AnElementDisabledBeforeHasNoPhaseAndKeepsTheRest) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0', 'checksumCrc32': 2"});
    targetHas(element("X", 1).checksum(1).disabled().shownAs("A"));
    targetHas(element("X", 2).checksum(1).disabled().shownAs("B"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums | Up-to-date | Phase\n" + rule(77) +
                  "0   | A              | 1.0       | 2.0       | 1 != 2    | N          | -    \n"
                  "1   | B              | 1.0       | ---       | 1 != ---  |            | -    \n",
              planTable());
}

TEST_F(PlanPrintouts, AChecksumThatIsNotKnownIsPrintedAsItIs) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0'"});
    std::vector<KvTArchiveFile> entries = files();
    entries.front().checksumCrc32 = unknownValue;
    archiveHasFiles(std::move(entries));
    targetHas(element("X", 1).checksum(0).shownAs("A"));
    targetHas(element("X", 1).checksum(unknownValue).shownAs("B"));
    targetHas(element("X", 1).shownAs("C"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums                | Up-to-date | Phase\n" +
                  rule(92) +
                  "0   | A              | 1.0       | 2.0       | 0 != 4294967294          | N          | 0    \n"
                  "1   | B              | 1.0       | 2.0       | 4294967294 == 4294967294 | N          | 0    \n"
                  "2   | C              | 1.0       | 2.0       | --- != 4294967294        | N          | 0    \n",
              planTable());
}

TEST_F(PlanPrintouts, AnElementWithoutChecksumIsNeverEqual) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '1.0', 'checksumCrc32': 0"});
    targetHas(element("X", 1).shownAs("A"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums | Up-to-date | Phase\n" + rule(77) +
                  "0   | A              | 1.0       | 1.0       | --- != 0  | Y          | -    \n",
              planTable());
}

TEST_F(PlanPrintouts, MarkersMakeAColumnWithoutHeading) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '1.0', 'checksumCrc32': 2",
                "'boardType': 'X', 'targetPath': '/a', 'version': '1.0', 'checksumCrc32': 2"});
    targetHas(element("X", 1).shownAs("plain"));
    targetHas(element("X", 1).inactive().shownAs("inactive"));
    targetHas(element("X", 1).invalid().shownAs("invalid"));
    targetHas(element("X", 1).invalid().inactive().shownAs("both"));
    targetHas(fileElement("X", "/a").inactive().shownAs("file"));
    targetHas(fileElement("X", "/a").invalid().inactive().shownAs("invalid file"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums | Up-to-date | Phase |           \n" +
                  rule(90) +
                  "0   | plain          | 1.0       | 1.0       | --- != 2  | Y          | -     |           \n"
                  "1   | inactive       | 1.0       | 1.0       | --- != 2  | N          | 0     | [INACTIVE]\n"
                  "2   | invalid        | 1.0       | 1.0       | --- != 2  | N          | 0     | [INVALID] \n"
                  "3   | both           | 1.0       | 1.0       | --- != 2  | N          | 0     | [INVALID] \n"
                  "4   | file           | 1.0       | 1.0       | --- != 2  | Y          | -     |           \n"
                  "5   | invalid file   | 1.0       | 1.0       | --- != 2  | N          | 0     | [INVALID] \n",
              planTable());
}

TEST_F(PlanPrintouts, WithoutMarkersThereIsNoColumnForThem) {
    targetHas(fileElement("X", "/a").inactive().shownAs("file"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums | Up-to-date | Phase\n" + rule(77) +
                  "0   | file           | 1.0       | ---       |           |            | -    \n",
              planTable());
}

TEST_F(PlanPrintouts, UnsupportedElementsHaveTheirMarkersToo) {
    targetHas(element("X", 1).invalid().shownAs("A"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums | Up-to-date | Phase |          \n" + rule(89) +
                  "0   | A              | 1.0       | ---       |           |            | -     | [INVALID]\n",
              planTable());
}

TEST_F(PlanPrintouts, ClonedElementsAreRowsBehindTheOthers) {
    archiveHas({"'boardType': 'X', 'targetPath': '/etc/net.ini', 'version': null, 'checksumCrc32': 12"});
    targetHas(element("X", 1).shownAs("A"));
    targetTakesFiles(fileElement("X", "*").named("Updatable file").board("Node", 7).invalid().version(""));
    plan();
    EXPECT_EQ(
        "No. | Update element                       | Installed | Available | Checksums | Up-to-date | Phase |"
        "          \n" +
            rule(111) +
            "0   | A                                    | 1.0       | ---       |           |            | -     |"
            "          \n"
            "1   | Node, SN 7, Updatable file (net.ini) | ---       | ---       | --- != 12 | N          | 0     |"
            " [INVALID]\n",
        planTable());
}

TEST_F(PlanPrintouts, NamesArePrintedAsTheyAre) {
    targetHas(element("X", 1).shownAs("100 %s \xC3\x84"));
    plan();
    EXPECT_EQ("No. | Update element | Installed | Available | Checksums | Up-to-date | Phase\n" + rule(77) +
                  "0   | 100 %s \xC3\x84      | 1.0       | ---       |           |            | -    \n",
              planTable());
}

// The list of unsupported elements.

TEST_F(PlanPrintouts, WithoutUnsupportedElementsTheirListIsEmpty) {
    archiveHas({"'boardType': 'X', 'id': 1"});
    targetHas(element("X", 1));
    targetHas(element("X", 2).disabled());
    plan();
    EXPECT_EQ("", unsupported());
    forgetTarget();
    EXPECT_EQ("", unsupported());
}

TEST_F(PlanPrintouts, UnsupportedElementsAreListedInTheirOrder) {
    archiveHas({"'boardType': 'X', 'id': 1"});
    targetHas(element("X", 2).shownAs("second, %s"));
    targetHas(element("X", 1).shownAs("supported"));
    targetHas(element("X", 3).disabled().shownAs("disabled"));
    targetHas(element("X", 4).invalid().inactive().shownAs("first"));
    targetHas(fileElement("X", "/a").shownAs("file \xC3\x84"));
    plan();
    EXPECT_EQ("\n"
              "Unsupported update elements (will be ignored):\n"
              "        second, %s\n"
              "        first\n"
              "        file \xC3\x84\n"
              "\n",
              unsupported());
}

TEST_F(PlanPrintouts, TheListOfUnsupportedElementsKnowsNoOptions) {
    options().forceUpdate = true;
    options().verbose = true;
    targetHas(element("X", 1).shownAs("A"));
    plan();
    EXPECT_EQ("\nUnsupported update elements (will be ignored):\n        A\n\n", unsupported());
}

TEST_F(PlanPrintouts, ADisabledFpgaElementIsNotListedAsUnsupported) {
    targetHas(element("FPGA_TP1", 1).shownAs("without carrier"));
    targetHas(element("FPGA_TP1", 1).software(0x20100).shownAs("with carrier"));
    plan();
    EXPECT_EQ("\nUnsupported update elements (will be ignored):\n        with carrier\n\n", unsupported());
}

// The list of elements that need no update.

TEST_F(PlanPrintouts, WithoutUpToDateElementsTheirListIsEmpty) {
    archiveHas({"'boardType': 'X', 'id': 1"});
    targetHas(element("X", 1));
    targetHas(element("X", 2));
    plan();
    EXPECT_EQ("", upToDate());
    forgetTarget();
    EXPECT_EQ("", upToDate());
}

TEST_F(PlanPrintouts, UpToDateElementsAreListedInTheirOrder) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0'"});
    targetHas(element("X", 1).version("2.0").shownAs("second, %s"));
    targetHas(element("X", 1).version("1.0").shownAs("to be updated"));
    targetHas(element("X", 2).version("2.0").shownAs("unsupported"));
    targetHas(element("X", 1).version("2.0").disabled().shownAs("disabled \xC3\x84"));
    targetHas(element("X", 1).version("2.0").shownAs("first"));
    plan();
    EXPECT_EQ("\n"
              "No update is required for these elements:\n"
              "        second, %s\n"
              "        disabled \xC3\x84\n"
              "        first\n",
              upToDate());
}

TEST_F(PlanPrintouts, AForcedUpdateListsNoUpToDateElements) {
    options().forceUpdate = true;
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0', 'mode': 'upgrade'", "'boardType': 'X', 'id': 2"});
    targetHas(element("X", 1).version("2.0"));
    targetHas(element("X", 2).version("2.0"));
    plan();
    EXPECT_TRUE(elementAt(0).upToDate);
    EXPECT_TRUE(elementAt(1).upToDate);
    EXPECT_EQ("", upToDate());
}

TEST_F(PlanPrintouts, AnElementWithoutEntryIsNotListedAsUpToDate) {
    targetHas(element("X", 1));
    planOf(0).upToDate = true;
    EXPECT_EQ("", upToDate());
}

// The notes on a plan.

TEST_F(PlanPrintouts, TheVerboseOptionNamesTheElementsThatWereDisabled) {
    options().verbose = true;
    targetHas(element("FPGA_TP1", 1).shownAs("Carrier, SN 5, FPGA"));
    targetHas(element("FPGA_TP1", 1).software(0x30100).shownAs("not this one"));
    targetHas(element("FPGA_TP1", 1).shownAs("\xC3\x84, 100 %s"));
    plan();
    EXPECT_EQ("Update element \"Carrier, SN 5, FPGA\" has been disabled, because no QB5150 or QB5170 has been "
              "detected.\n"
              "Update element \"\xC3\x84, 100 %s\" has been disabled, because no QB5150 or QB5170 has been detected.\n"
              "The update process takes 0 phases!\n",
              notes());
}

TEST_F(PlanPrintouts, AnElementThatWasDisabledBeforeIsNamedToo) {
    options().verbose = true;
    targetHas(element("FPGA_TP1", 1).disabled().shownAs("custom"));
    plan();
    EXPECT_EQ("Update element \"custom\" has been disabled, because no QB5150 or QB5170 has been detected.\n"
              "The update process takes 0 phases!\n",
              notes());
}

TEST_F(PlanPrintouts, TheVerboseOptionStatesTheNumberOfPhases) {
    options().verbose = true;
    EXPECT_EQ("The update process takes 0 phases!\n", notes());
    archiveHas({"'boardType': 'X', 'id': 1", "'boardType': 'X', 'id': 2, 'sequence': 9"});
    targetHas(element("X", 1));
    targetHas(element("X", 2));
    plan();
    EXPECT_EQ("The update process takes 2 phases!\n", notes());
}

TEST_F(PlanPrintouts, NotesAreForTheVerboseOptionAlone) {
    targetHas(element("FPGA_TP1", 1));
    plan();
    EXPECT_EQ("", notes());
}
