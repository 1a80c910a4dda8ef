#include "PlanningTest.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

using ElementMatching = PlanningTest;

TEST_F(ElementMatching, TheEarlierOfTwoFittingEntriesWins) {
    archiveHas({"'boardType': 'Y', 'id': 1", "'boardType': ['Y', 'X'], 'id': 1", "'boardType': 'X', 'id': 1"});
    targetHas(element("X", 1));
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(1));
    EXPECT_THAT(matchCounts(), ElementsAre(0, 1, 0));
}

TEST_F(ElementMatching, OneEntryServesAnyNumberOfElements) {
    archiveHas({"'boardType': 'X', 'id': 1", "'boardType': 'X', 'id': 2"});
    targetHas(element("X", 1));
    targetHas(element("X", 2));
    targetHas(element("X", 1));
    targetHas(element("X", 1));
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(0, 1, 0, 0));
    EXPECT_THAT(matchCounts(), ElementsAre(3, 1));
}

TEST_F(ElementMatching, AnElementThatNoEntryIsMeantForKeepsNone) {
    archiveHas({"'boardType': 'X', 'id': 1"});
    targetHas(element("X", 2));
    targetHas(element("Y", 1));
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(noArchiveFile, noArchiveFile));
    EXPECT_THAT(matchCounts(), ElementsAre(0));
}

TEST_F(ElementMatching, DisabledInvalidAndInactiveElementsTakePart) {
    archiveHas({"'boardType': 'X', 'id': 1"});
    targetHas(element("X", 1).disabled());
    targetHas(element("X", 1).invalid());
    targetHas(element("X", 1).inactive());
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(0, 0, 0));
    EXPECT_THAT(matchCounts(), ElementsAre(3));
}

TEST_F(ElementMatching, EveryElementOfAStarLocationTakesTheFirstFittingEntryAndKeepsItsLocation) {
    archiveHas({"'boardType': 'Y', 'targetPath': '/y'", "'boardType': 'X', 'targetPath': '/a'",
                "'boardType': 'X', 'targetPath': '/b'"});
    targetHas(fileElement("X", "*"));
    targetHas(fileElement("X", "*"));
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(1, 1));
    EXPECT_THAT(matchCounts(), ElementsAre(0, 2, 0));
    EXPECT_EQ("*", elementAt(0).location.view());
}

TEST_F(ElementMatching, OneElementOfALocationTakesTheFirstOfTwoEntriesForIt) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a', 'hwCompatibilityId': 1", "'boardType': 'X', 'targetPath': '/a'",
                "'boardType': 'X', 'targetPath': '/a'"});
    targetHas(fileElement("X", "/a"));
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(1));
}

TEST_F(ElementMatching, WithoutEntriesOrElementsNothingHappens) {
    plan();
    EXPECT_EQ(0U, planner().phaseCount());
    targetHas(element("X", 1));
    plan();
    EXPECT_THAT(archiveFileIndices(), ElementsAre(noArchiveFile));
    forgetTarget();
    archiveHas({"'boardType': 'X', 'id': 1"});
    plan();
    EXPECT_THAT(matchCounts(), ElementsAre(0));
    EXPECT_EQ("", messages());
}

TEST_F(ElementMatching, NothingButTheLinkIsWrittenIntoAnElementOfTheTarget) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'"});
    targetHas(fileElement("X", "*").shownAs("X, File").invalid());
    plan();
    const KvTUpdateElement& matched = elementAt(0);
    EXPECT_EQ(0U, matched.index);
    EXPECT_EQ("X, File", matched.displayName.view());
    EXPECT_TRUE(matched.name.isEmpty());
    EXPECT_TRUE(matched.typeName.isEmpty());
    EXPECT_EQ(nullptr, matched.errorLists[callErrors].get());
    EXPECT_EQ(nullptr, matched.errorLists[targetErrors].get());
}

TEST_F(ElementMatching, PlanningPrintsNothingByItself) {
    archiveHas({"'boardType': 'X', 'id': 1", "'boardType': 'X', 'targetPath': '/a'"});
    targetHas(element("X", 1));
    targetHas(element("FPGA_TP1", 1));
    targetTakesFiles(fileElement("X", "*"));
    plan();
    EXPECT_EQ("", messages());
}
