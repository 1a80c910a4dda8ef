#include "UpdateTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

using testing::ElementsAre;
using Kind = SessionLog::Kind;

namespace {

class StatusQueriesTest : public UpdateTest {
protected:
    /// The percentages that were told.
    std::vector<std::string> progress() { return log.notificationsOf("progress"); }
};

} // namespace

TEST_F(StatusQueriesTest, FinishedElementsAreNotAskedAgain) {
    addBoard(1, completeElement(1).polls(1));
    addBoard(2, completeElement(1).polls(3));
    EXPECT_TRUE(update());
    EXPECT_THAT(log.callsOf("updateStatus2"),
                ElementsAre("updateStatus2 IOMODULE[1] 1", "updateStatus2 IOMODULE[2] 1", "updateStatus2 IOMODULE[2] 1",
                            "updateStatus2 IOMODULE[2] 1"));
}

TEST_F(StatusQueriesTest, TwoFailedQueriesInARowEndTheElement) {
    addNodeElement(1, completeElement(1).polls(9));
    addFault(fault("updateStatus2").occurrence(2));
    addFault(fault("updateStatus2").occurrence(3));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3));
    EXPECT_THAT(log.events({Kind::call, Kind::notification}),
                ElementsAre("lock HCN[1] 65539", "phase 0", testing::_, "update2 HCN[1] 1", "updateStatus2 HCN[1] 1",
                            "progress 11", "updateStatus2 HCN[1] 1 -> status 1, errors 1", "progress 0",
                            "updateStatus2 HCN[1] 1 -> status 1, errors 1", "elementError 0", "progress 100",
                            "progress 100", "deleteRemoteFile HCN[1]", "phase 4294967295", "updateFinish HCN[1]/CN[1]",
                            "updateFinish HCN[1]", "unlock"));
    EXPECT_THAT(textsOf(*element(0).errorLists[callErrors]),
                ElementsAre("Fault at updateStatus2.", "Fault at updateStatus2."));
}

TEST_F(StatusQueriesTest, AGoodAnswerBetweenFailedQueriesResetsTheCount) {
    addNodeElement(1, completeElement(1).polls(5));
    for (const std::uint32_t occurrence : {1U, 3U, 5U, 7U}) {
        addFault(fault("updateStatus2").occurrence(occurrence));
    }
    prepare();
    EXPECT_FALSE(run());
    EXPECT_THAT(states(), ElementsAre(5));
    EXPECT_EQ(element(0).pollFailures, 0U);
    EXPECT_THAT(progress(), ElementsAre("progress 0", "progress 20", "progress 0", "progress 40", "progress 0",
                                        "progress 60", "progress 0", "progress 80", "progress 100", "progress 100"));
}

TEST_F(StatusQueriesTest, FailedQueriesDoNotCountInTheNextRun) {
    addNodeElement(1, completeElement(1).polls(1));
    for (const std::uint32_t occurrence : {1U, 2U, 3U}) {
        addFault(fault("updateStatus2").occurrence(occurrence));
    }
    prepare();
    EXPECT_FALSE(run());
    EXPECT_THAT(states(), ElementsAre(3));
    (void)run(); // what was collected in the first run still counts
    EXPECT_THAT(states(), ElementsAre(5));
    EXPECT_EQ(log.callsOf("updateStatus2").size(), 4U);
}

TEST_F(StatusQueriesTest, AnElementThatFailedOnceCountsAsZeroInThatRound) {
    addBoard(1, completeElement(1).progress({{1, 2}, {1, 2}}));
    addBoard(2, completeElement(1).progress({{1, 2}, {1, 2}}));
    addFault(fault("updateStatus2").at("IOMODULE[2]"));
    EXPECT_FALSE(update());
    EXPECT_THAT(progress(), ElementsAre("progress 25", "progress 50", "progress 75", "progress 100", "progress 100"));
}

TEST_F(StatusQueriesTest, FailuresOfDifferentElementsAreCountedApart) {
    addBoard(1, completeElement(1).polls(2));
    addBoard(2, completeElement(1).polls(2));
    addFault(fault("updateStatus2").at("IOMODULE[1]"));
    addFault(fault("updateStatus2").at("IOMODULE[2]"));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(5, 5));
}

TEST_F(StatusQueriesTest, AQueryWithAnErrorHasFailedWhateverItsStatus) {
    addNodeElement(1, completeElement(1));
    addFault(fault("updateStatus2").occurrence(0).status(0));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3));
    EXPECT_EQ(log.callsOf("updateStatus2").size(), 2U);
}

TEST_F(StatusQueriesTest, AQueryWithoutAnErrorIsAnAnswerWhateverItsStatus) {
    addNodeElement(1, completeElement(1));
    addFault(fault("updateStatus2").status(7).noErrors());
    EXPECT_FALSE(update());
    // An answer that names no state is not one of an update that runs or has succeeded.
    EXPECT_THAT(states(), ElementsAre(3));
    EXPECT_EQ(log.callsOf("updateStatus2").size(), 1U);
    EXPECT_FALSE(element(0).hasErrors());
}

class FinalStateTest : public StatusQueriesTest, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(FinalStateTest, OtherThanRunningAndSucceededFailsTheElement) {
    addNodeElement(1, completeElement(1).polls(1).finalState(GetParam()));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3));
    EXPECT_THAT(log.events({Kind::call, Kind::notification}),
                ElementsAre("lock HCN[1] 65539", "phase 0", testing::_, "update2 HCN[1] 1", "updateStatus2 HCN[1] 1",
                            "elementError 0", "progress 100", "progress 100", "deleteRemoteFile HCN[1]",
                            "phase 4294967295", "updateFinish HCN[1]/CN[1]", "updateFinish HCN[1]", "unlock"));
}

INSTANTIATE_TEST_SUITE_P(States, FinalStateTest, testing::Values(0, 3, 4, 5, 0xFFFFFFFF));
