#include "PlanningTest.h"

#include "KvEmulation.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

/// The name that the element of a file at `targetPath` has.
struct NameRow {
    std::string targetPath;
    std::string name;
};

} // namespace

class Cloning : public PlanningTest {
protected:
    /// As a scan makes it.
    static ElementBuilder fileSystemTemplate() {
        ElementBuilder builder = fileElement("X", "*").invalid().inactive().version("");
        return builder.named("Updatable file").board("Node", 0x02003039);
    }
};

TEST_F(Cloning, AnEntryThatNoElementClaimsGetsAnElement) {
    archiveHas({"'boardType': 'X', 'id': 1", "'boardType': 'X', 'targetPath': '/etc/net.ini'"});
    targetHas(element("X", 1));
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(0, 1));
    EXPECT_THAT(matchCounts(), ElementsAre(1, 1));
    EXPECT_EQ(1U, elementAt(1).index);
    EXPECT_EQ("/etc/net.ini", elementAt(1).location.view());
}

TEST_F(Cloning, AnEntryThatAnElementClaimsGetsNone) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '/b'"});
    targetHas(fileElement("X", "/a"));
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(0, 1));
    EXPECT_THAT(matchCounts(), ElementsAre(1, 1));
}

TEST_F(Cloning, AnEntryThatADisabledElementClaimsGetsNone) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'"});
    targetHas(fileElement("X", "/a").disabled());
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_EQ(1U, elements().size());
}

TEST_F(Cloning, AnEntryThatAnElementOfAnotherBoardClaimsGetsNone) {
    archiveHas({"'boardType': ['X', 'Y'], 'targetPath': '/a'"});
    targetHas(fileElement("Y", "/a"));
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_EQ(1U, elements().size());
}

TEST_F(Cloning, EachEntryGetsItsElementInTheOrderOfTheDescription) {
    archiveHas({"'boardType': 'X', 'targetPath': '/c'", "'boardType': 'Y', 'id': 1",
                "'boardType': 'X', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '/b'"});
    targetHas(element("Z", 1));
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(noArchiveFile, 0, 2, 3));
    for (std::uint32_t position = 0; position < 4; ++position) {
        EXPECT_EQ(position, elementAt(position).index);
    }
    EXPECT_EQ("/c", elementAt(1).location.view());
    EXPECT_EQ("/a", elementAt(2).location.view());
    EXPECT_EQ("/b", elementAt(3).location.view());
}

TEST_F(Cloning, TwoEntriesOfOneTargetPathGetAnElementEach) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '/a'"});
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(0, 1));
    EXPECT_THAT(matchCounts(), ElementsAre(1, 1));
}

TEST_F(Cloning, WithoutATemplateUnclaimedEntriesStayUnused) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'"});
    targetHas(element("X", 1));
    plan();
    EXPECT_EQ(1U, elements().size());
    EXPECT_THAT(matchCounts(), ElementsAre(0));
}

TEST_F(Cloning, EntriesWithAnIdentifierAreNeverCloned) {
    archiveHas({"'boardType': 'X', 'id': 0"});
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_TRUE(elements().empty());
}

TEST_F(Cloning, EntriesThatDoNotFitTheTemplatesBoardStayUnused) {
    archiveHas({"'boardType': 'Y', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '/b', 'boardVariant': 'V'",
                "'boardType': 'X', 'targetPath': '/c', 'boardId': 1",
                "'boardType': 'X', 'targetPath': '/d', 'hwCompatibilityId': 1",
                "'boardType': 'X', 'targetPath': '/e', 'swCompatibilityId': 1"});
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_TRUE(elements().empty());
    EXPECT_THAT(matchCounts(), ElementsAre(0, 0, 0, 0, 0));
}

TEST_F(Cloning, EntriesThatFitTheTemplatesBoardAreTaken) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'",
                "'boardType': 'X', 'targetPath': '/b', 'boardVariant': ['V', 'W'], 'boardId': 1, "
                "'hwCompatibilityId': [2], 'swCompatibilityId': 3"});
    targetTakesFiles(fileSystemTemplate().variant("V").boardId(1).hardware(2).software(3));
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(1));
}

TEST_F(Cloning, TheTargetPathIsThatOfTheSelectedBoard) {
    archiveHas({"'boards': [{'boardType': 'Y', 'targetPath': '/y'}, {'boardType': 'X', 'targetPath': '/x'}]"});
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_EQ("/x", elementAt(0).location.view());
}

TEST_F(Cloning, TheNameEndsWithTheFilesName) {
    for (const NameRow& row :
         {NameRow{"/etc/net.ini", "Updatable file (net.ini)"}, NameRow{R"(\\etc\\net.ini)", "Updatable file (net.ini)"},
          NameRow{R"(/etc\\net.ini)", "Updatable file (net.ini)"},
          NameRow{R"(\\etc/net.ini)", "Updatable file (net.ini)"}, NameRow{"/net.ini", "Updatable file (net.ini)"},
          NameRow{"net.ini", "Updatable file"}, NameRow{"", "Updatable file"}, NameRow{"/etc/", "Updatable file ()"},
          NameRow{"/", "Updatable file ()"}, NameRow{"/etc/net (2).ini", "Updatable file (net (2).ini)"}}) {
        forgetTarget();
        archiveHas({"'boardType': 'X', 'targetPath': '" + row.targetPath + "'"});
        targetTakesFiles(fileSystemTemplate());
        plan();
        EXPECT_EQ(row.name, elementAt(0).name.view()) << row.targetPath;
        EXPECT_EQ(row.name, elementAt(0).typeName.view()) << row.targetPath;
        EXPECT_EQ("Node, SN 12345(2), " + row.name, elementAt(0).displayName.view()) << row.targetPath;
    }
}

TEST_F(Cloning, TheNamesFollowTheRulesForElementNames) {
    archiveHas({"'boardType': 'X', 'targetPath': 'fpga'", "'boardType': 'X', 'targetPath': '/etc/fpga'"});
    targetTakesFiles(fileElement("X", "*").named("UserFpga").board("", 0));
    plan();
    EXPECT_EQ("FPGA", elementAt(0).typeName.view());
    EXPECT_EQ("X, FPGA", elementAt(0).displayName.view());
    EXPECT_EQ("UserFpga (fpga)", elementAt(1).typeName.view());
    EXPECT_EQ("X, UserFpga (fpga)", elementAt(1).displayName.view());
}

TEST_F(Cloning, TheOtherFieldsAreTheTemplates) {
    KvTUpdateElement made = fileSystemTemplate().boardId(5).hardware(6).software(7).variant("V").build();
    made.boardAddress = KvCInventoryAddress(1) / KvCInventoryAddress(2, 3);
    made.slot = 8;
    made.slotCount = 9;
    made.unitName = "Unit";
    made.unitInstanceName = "Instance";
    made.rackName = "Rack";
    made.configured = false;
    archiveHas({"'boardType': 'X', 'targetPath': '/a', 'boardVariant': 'V', 'boardId': 5, 'hwCompatibilityId': 6, "
                "'swCompatibilityId': 7"});
    targetTakesFiles(made);
    plan();
    const KvTUpdateElement& clone = elementAt(0);
    EXPECT_EQ(made.boardAddress, clone.boardAddress);
    EXPECT_TRUE(clone.elementAddress.isEmpty());
    EXPECT_EQ("X", clone.boardType.view());
    EXPECT_EQ("V", clone.boardVariant.view());
    EXPECT_EQ(5U, clone.boardId);
    EXPECT_EQ(0x02003039U, clone.serialNumber);
    EXPECT_EQ(8U, clone.slot);
    EXPECT_EQ(9U, clone.slotCount);
    EXPECT_EQ("Node", clone.boardName.view());
    EXPECT_EQ("Unit", clone.unitName.view());
    EXPECT_EQ("Instance", clone.unitInstanceName.view());
    EXPECT_EQ("Rack", clone.rackName.view());
    EXPECT_TRUE(clone.isFileSystemElement);
    EXPECT_EQ(6U, clone.hwCompatibilityId);
    EXPECT_EQ(7U, clone.swCompatibilityId);
    EXPECT_FALSE(clone.configured);
    EXPECT_FALSE(clone.valid);
    EXPECT_FALSE(clone.active);
    EXPECT_FALSE(clone.hasChecksum);
    EXPECT_EQ(0U, clone.version.getAsULong64());
}

TEST_F(Cloning, TheTemplateStaysAsItIs) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '/b'"});
    targetTakesFiles(fileSystemTemplate());
    plan();
    const KvTUpdateElement& kept = *inventory().fileSystemTemplate();
    EXPECT_EQ("*", kept.location.view());
    EXPECT_EQ("Updatable file", kept.name.view());
    EXPECT_EQ(noArchiveFile, kept.archiveFileIndex);
    EXPECT_EQ(nullptr, kept.errorLists[callErrors].get());
}

TEST_F(Cloning, EachElementHasTwoErrorListsOfItsOwn) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '/b'"});
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_EQ(4U, KvEmulation::ledger().errorLists);
    for (const KvTUpdateElement& clone : elements()) {
        ASSERT_NE(nullptr, clone.errorLists[callErrors].get());
        ASSERT_NE(nullptr, clone.errorLists[targetErrors].get());
        EXPECT_FALSE(clone.hasErrors());
    }
    forgetTarget();
    EXPECT_EQ(0U, KvEmulation::ledger().errorLists);
}

TEST_F(Cloning, AClonedElementIsAlwaysUpdatedSinceItIsNotValid) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a', 'version': null, 'sequence': 7",
                "'boardType': 'X', 'targetPath': '/b', 'mode': 'upgrade', 'sequence': 8"});
    targetTakesFiles(fileSystemTemplate());
    plan();
    for (const KvTUpdateElement& clone : elements()) {
        EXPECT_FALSE(clone.upToDate);
        EXPECT_FALSE(clone.disabled);
    }
    EXPECT_EQ(2U, planner().phaseCount());
}

TEST_F(Cloning, ClonesStandBehindTheElementsOfTheTargetInTheirPhase) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'", "'boardType': 'X', 'id': 1"});
    targetHas(element("X", 1));
    targetHas(element("X", 1));
    targetTakesFiles(fileSystemTemplate());
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(1, 1, 0));
    EXPECT_THAT(phases(), ElementsAre(0, 0, 0));
}
