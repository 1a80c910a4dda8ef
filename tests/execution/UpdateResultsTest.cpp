#include "UpdateTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <ostream>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Kind = SessionLog::Kind;

namespace {

const std::string cancelledLine = "       Update cancelled due to previous update errors on the same board.\n";
const std::string failedVerdict = "\n    Update failed!\n";
const std::string incompleteVerdict = "\n    Update incomplete due to missing files in the source folder!\n";
const std::string successVerdict = "\n    Update completed successfully!\n";

std::string failureOf(const std::string& element, const std::string& report = "") {
    return "    ERROR: " + element + ":\n" + report;
}

KvTErrorEntry oldError() {
    KvTErrorEntry entry;
    entry.code = 1;
    entry.text = "Old.";
    return entry;
}

class UpdateResultsTest : public UpdateTest {
protected:
    std::string results() {
        const std::string text = log.text();
        const std::size_t begin = text.find("\nResults:\n");
        return begin == std::string::npos ? "" : text.substr(begin + 10);
    }
};

/// Three elements: One on the processor board in phase 0; Two on the same board and Three on another one, both in
/// phase 1. All succeed unless a situation changes that.
struct Rack {
    ItemBuilder one = completeElement(1, "One").polls(2);
    ItemBuilder two = completeElement(2, "Two").polls(1);
    ItemBuilder three = completeElement(1, "Three").polls(1);
    std::vector<FaultBuilder> faults;
    std::vector<std::string> missingFiles;
};

struct Situation {
    const char* name;
    std::function<void(Rack& rack)> arrange;
    /// States of the elements in the end.
    std::vector<std::uint32_t> states;
    /// The elements that the error callback was told of, in this order.
    std::vector<std::string> told;
    /// What follows the heading of the results.
    std::string results;

    friend void PrintTo(const Situation& situation, std::ostream* stream) { *stream << situation.name; }
};

std::function<void(Rack&)> withFault(const FaultBuilder& fault) {
    return [fault](Rack& rack) { rack.faults.push_back(fault); };
}

std::string oneFailed(const std::string& report) {
    return failureOf("NODE, One", report) + failureOf("NODE, Two", cancelledLine) + failedVerdict;
}

class SituationTest : public UpdateResultsTest, public testing::WithParamInterface<Situation> {};

} // namespace

TEST_P(SituationTest, LeavesTheElementsInTheirStatesAndTellsIt) {
    Rack rack;
    GetParam().arrange(rack);
    addNodeElement(1, rack.one, 1);
    addNodeElement(2, rack.two, 2);
    addBoard(1, rack.three, 2);
    for (const FaultBuilder& fault : rack.faults) {
        addFault(fault);
    }
    for (const std::string& name : rack.missingFiles) {
        archive.removeFile(name);
    }
    EXPECT_EQ(update(), GetParam().results == successVerdict);
    EXPECT_EQ(states(), GetParam().states);
    std::vector<std::string> told;
    for (const std::string& index : GetParam().told) {
        told.push_back("elementError " + index);
    }
    EXPECT_EQ(log.notificationsOf("elementError"), told);
    EXPECT_EQ(results(), GetParam().results);
}

INSTANTIATE_TEST_SUITE_P(
    Situations, SituationTest,
    testing::Values(
        Situation{"EverythingSucceeds", [](Rack&) {}, {5, 5, 5}, {}, successVerdict},
        Situation{"TransferFails",
                  withFault(fault("transferFile")),
                  {3, 4, 5},
                  {"0", "1"},
                  oneFailed(faultReport("transferFile"))},
        Situation{"StartFails", withFault(fault("update2")), {3, 4, 5}, {"0", "1"}, oneFailed(faultReport("update2"))},
        Situation{"StatusQueryFailsOnce",
                  withFault(fault("updateStatus2")),
                  {5, 4, 5},
                  {"0", "1"},
                  oneFailed(faultReport("updateStatus2"))},
        Situation{"StatusQueryFailsTwice",
                  [](Rack& rack) {
                      rack.faults = {fault("updateStatus2").occurrence(1), fault("updateStatus2").occurrence(2)};
                  },
                  {3, 4, 5},
                  {"0", "1"},
                  oneFailed(faultReport("updateStatus2") + faultReport("updateStatus2"))},
        // No error explains it: the heading stands alone.
        Situation{"UpdateFails", [](Rack& rack) { rack.one.finalState(3); }, {3, 4, 5}, {"0", "1"}, oneFailed("")},
        Situation{"FinishedUpdateReportsErrors",
                  [](Rack& rack) { rack.one.reports(0x1234, "Flash worn out."); },
                  {5, 4, 5},
                  {"0", "1"},
                  oneFailed("       ERROR 0x1234 (reported by Host PC):\n         Flash worn out.\n")},
        Situation{"ErrorQueryFails",
                  withFault(fault("updateErrors2")),
                  {5, 4, 5},
                  {"0", "1"},
                  oneFailed(faultReport("updateErrors2"))},
        Situation{"ErrorQueryFailsWithStatusZero",
                  withFault(fault("updateErrors2").status(0)),
                  {5, 4, 5},
                  {"0", "1"},
                  oneFailed(faultReport("updateErrors2"))},
        Situation{"ErrorQueryHasAStatusButNoError",
                  withFault(fault("updateErrors2").status(7).noErrors()),
                  {5, 5, 5},
                  {},
                  successVerdict},
        // A failed update is not asked for its errors.
        Situation{"FailedUpdateWouldReportErrors",
                  [](Rack& rack) { rack.one.finalState(3).reports(0x1234, "Flash worn out."); },
                  {3, 4, 5},
                  {"0", "1"},
                  oneFailed("")},
        Situation{"CallErrorsComeBeforeThoseOfTheTarget",
                  [](Rack& rack) {
                      rack.one.reports(0x1234, "Flash worn out.");
                      rack.faults = {fault("updateStatus2")};
                  },
                  {5, 4, 5},
                  {"0", "1"},
                  oneFailed(faultReport("updateStatus2") +
                            "       ERROR 0x1234 (reported by Host PC):\n         Flash worn out.\n")},
        Situation{"LastPhaseFails",
                  [](Rack& rack) { rack.three.finalState(3); },
                  {5, 5, 3},
                  {"2"},
                  failureOf("IO1, Three") + failedVerdict},
        Situation{
            "FileIsMissing", [](Rack& rack) { rack.missingFiles = {"node1.bin"}; }, {0, 5, 5}, {}, incompleteVerdict},
        Situation{"FailureWinsOverAMissingFile",
                  [](Rack& rack) {
                      rack.missingFiles = {"node1.bin"};
                      rack.three.finalState(3);
                  },
                  {0, 5, 3},
                  {"2"},
                  failureOf("IO1, Three") + failedVerdict},
        Situation{"LaterFileOfAFailedBoardIsNotLookedFor",
                  [](Rack& rack) {
                      rack.missingFiles = {"node2.bin"};
                      rack.one.finalState(3);
                  },
                  {3, 4, 5},
                  {"0", "1"},
                  oneFailed("")}),
    [](const auto& row) { return row.param.name; });

// Cancelling.

TEST_F(UpdateResultsTest, EveryLaterPhaseOfTheBoardIsCancelledInListOrder) {
    addNodeElement(4, completeElement(4, "Four"), 4);
    addNodeElement(1, completeElement(1, "One").finalState(3), 1);
    addNodeElement(3, completeElement(3, "Three"), 3);
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(4, 3, 4));
    EXPECT_THAT(log.notificationsOf("elementError"), ElementsAre("elementError 1", "elementError 0", "elementError 2"));
    EXPECT_THAT(log.notificationsOf("phase"), ElementsAre("phase 0", "phase 1", "phase 2", "phase 4294967295"));
    EXPECT_THAT(log.callsOf("transferFile"), ElementsAre(R"(transferFile HCN[1] ARCHIVE\node1.bin)"));
}

TEST_F(UpdateResultsTest, ElementsOfTheSamePhaseAreNotCancelled) {
    addNodeElement(1, completeElement(1, "One"));
    addNodeElement(2, completeElement(2, "Two"));
    addFault(fault("transferFile"));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3, 5));
}

TEST_F(UpdateResultsTest, TwoFailuresOfABoardCancelItsLaterUpdatesOnce) {
    addNodeElement(1, completeElement(1).finalState(3), 1);
    addNodeElement(2, completeElement(2).finalState(3), 1);
    addNodeElement(3, completeElement(3), 2);
    EXPECT_FALSE(update());
    EXPECT_THAT(log.notificationsOf("elementError"), ElementsAre("elementError 0", "elementError 1", "elementError 2"));
}

TEST_F(UpdateResultsTest, ABoardOfTheSameTypeGoesOn) {
    boards = {completeBoard("IOMODULE", "IO1", 0).element(completeElement(1)).element(completeElement(2)),
              completeBoard("IOMODULE", "IO1", 0).element(completeElement(1)).element(completeElement(2))};
    archive.add(entry("a.bin").board("IO1", 1)).add(entry("b.bin").board("IO1", 2).sequence(2));
    addFault(fault("update2").at("IOMODULE[1]"));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3, 4, 5, 5));
}

TEST_F(UpdateResultsTest, ABoardBelowTheFailedOneGoesOn) {
    addNodeElement(1, completeElement(1).finalState(3));
    node.add(completeBoard("IOMODULE", "IO1", 0).element(completeElement(1)));
    archive.add(entry("b.bin").board("IO1", 1).sequence(2));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3, 5));
}

TEST_F(UpdateResultsTest, LaterFilesOfTheBoardsFileSystemAreCancelledToo) {
    addNodeElement(1, completeElement(1, "One").finalState(3));
    addFile("a.cfg", "a.cfg", 2);
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3, 4));
    EXPECT_THAT(log.callsOf("KvHIM_putFileU"), IsEmpty());
    EXPECT_EQ(results(), failureOf("NODE, One") + failureOf("NODE, Updatable file", cancelledLine) + failedVerdict);
}

TEST_F(UpdateResultsTest, AFileThatCannotBeWrittenCancelsNothing) {
    node.element(completeFile(9, "a.cfg"));
    addFile("a.cfg", "a.cfg", 1);
    addNodeElement(1, completeElement(1, "One").polls(1), 2);
    addFault(fault("KvHIM_putFileU"));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3, 5));
    EXPECT_THAT(log.notificationsOf("elementError"), ElementsAre("elementError 0"));
    // Its messages were printed when it was written: here its heading stands alone.
    EXPECT_EQ(results(), failureOf("NODE, File") + failedVerdict);
}

TEST_F(UpdateResultsTest, CancellingFollowsTheVerdictOnTheElementAndComesBeforeThatOnThePhase) {
    addNodeElement(1, completeElement(1).polls(1).reports(7, "No."), 1);
    addNodeElement(2, completeElement(2), 2);
    EXPECT_FALSE(update());
    const std::vector<std::string> events = log.events();
    const auto query = std::find(events.begin(), events.end(), "updateErrors2 HCN[1] 1");
    ASSERT_NE(query, events.end());
    EXPECT_THAT(std::vector<std::string>(query, query + 6),
                ElementsAre("updateErrors2 HCN[1] 1", "elementError 0", "elementError 1", said("[ERROR]\n"),
                            "deleteRemoteFile HCN[1]", "phase 1"));
}

// Collecting.

TEST_F(UpdateResultsTest, OnlyFinishedUpdatesAreAskedForErrors) {
    addBoard(1, completeElement(1).polls(1));
    addBoard(2, completeElement(1).polls(1).finalState(3));
    addBoard(3, completeElement(1).polls(2));
    addBoard(4, completeElement(1));
    addFault(fault("update2").at("IOMODULE[4]"));
    EXPECT_FALSE(update());
    EXPECT_THAT(log.callsOf("updateErrors2"),
                ElementsAre("updateErrors2 IOMODULE[1] 1", "updateErrors2 IOMODULE[3] 1"));
}

TEST_F(UpdateResultsTest, EachPhaseHasAVerdictOfItsOwn) {
    addBoard(1, completeElement(1).polls(1), 1);
    addBoard(2, completeElement(1).polls(1).finalState(3), 2);
    addBoard(3, completeElement(1).polls(1), 3);
    options.noProgress = true;
    EXPECT_FALSE(update());
    std::vector<std::string> verdicts = log.events({Kind::message});
    std::erase_if(verdicts,
                  [](const std::string& event) { return event != said("[OK]\n") && event != said("[ERROR]\n"); });
    // Of the transfer and of the phase.
    EXPECT_THAT(verdicts, ElementsAre(said("[OK]\n"), said("[OK]\n"), said("[OK]\n"), said("[ERROR]\n"), said("[OK]\n"),
                                      said("[OK]\n")));
}

TEST_F(UpdateResultsTest, ErrorsOfTheTargetGoIntoTheSecondList) {
    addNodeElement(1, completeElement(1).reports(1, "First.").reports(2, "Second."));
    addFault(fault("updateStatus2"));
    EXPECT_FALSE(update());
    EXPECT_THAT(textsOf(*element(0).errorLists[callErrors]), ElementsAre("Fault at updateStatus2."));
    EXPECT_THAT(textsOf(*element(0).errorLists[targetErrors]), ElementsAre("First.", "Second."));
}

// Results.

TEST_F(UpdateResultsTest, TheErrorsOfAllElementsArePooledBehindThoseOfTheRun) {
    addBoard(1, completeElement(1).polls(1).reports(1, "Target one."));
    addBoard(2, completeElement(1).polls(1).reports(2, "Target two."));
    addFault(fault("updateErrors2").at("IOMODULE[2]").error(9, "Query two."));
    addFault(fault("updateStatus2").at("IOMODULE[1]").error(8, "Status one."));
    addFault(fault("deleteRemoteFile").error(3, "Deletion."));
    addFault(fault("unlock").error(4, "Unlock."));
    EXPECT_FALSE(update());
    EXPECT_THAT(textsOf(errors()), ElementsAre("Deletion.", "Unlock.", "Status one.", "Target one.", "Query two."));
}

TEST_F(UpdateResultsTest, ErrorsOfTheRunAloneDoNotFailTheUpdate) {
    addNodeElement(1, completeElement(1).polls(1));
    addFault(fault("deleteRemoteFile"));
    addFault(fault("unlock"));
    EXPECT_TRUE(update());
    EXPECT_EQ(results(), successVerdict);
}

TEST_F(UpdateResultsTest, ElementsThatNeverStartedAreFailuresWithoutDetails) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    addNodeElement(2, completeElement(2, "Two").polls(1));
    prepare();
    planOf(1).phase = 7; // the plan has one phase only
    EXPECT_FALSE(run());
    EXPECT_THAT(states(), ElementsAre(5, 1));
    EXPECT_EQ(results(), failureOf("NODE, Two") + failedVerdict);
}

TEST_F(UpdateResultsTest, ElementsThatWereNotToBeUpdatedAreNotListedWhateverTheirErrors) {
    addNodeElement(1, completeElement(1).polls(1));
    prepare();
    planOf(0).disabled = true;
    element(0).errorLists[callErrors]->addError(oldError());
    EXPECT_TRUE(run());
    EXPECT_EQ(results(), successVerdict);
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(UpdateResultsTest, ReportsAreIndentedBySevenAndWrapped) {
    const std::string text = "The image was refused because its checksum does not agree with its contents at all.";
    addNodeElement(1, completeElement(1, "One").polls(1).reports(0xABC, text));
    EXPECT_FALSE(update());
    EXPECT_EQ(results(), failureOf("NODE, One", "       ERROR 0xabc (reported by Host PC):\n"
                                                "         The image was refused because its checksum does not agree "
                                                "with its \n"
                                                "         contents at all.\n") +
                             failedVerdict);
}

TEST_F(UpdateResultsTest, CancelledElementsShowTheirErrorsBeforeTheirCancellation) {
    addNodeElement(1, completeElement(1, "One").finalState(3), 1);
    addNodeElement(2, completeElement(2, "Two"), 2);
    prepare();
    element(1).errorLists[callErrors]->addError(oldError());
    EXPECT_FALSE(run());
    EXPECT_EQ(results(),
              failureOf("NODE, One") +
                  failureOf("NODE, Two", "       ERROR 0x1 (reported by Host PC):\n         Old.\n" + cancelledLine) +
                  failedVerdict);
}
