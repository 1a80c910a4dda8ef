#include "ObservedSessionTest.h"

#include <gmock/gmock.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using namespace KvNReflasher;

namespace {

constexpr std::uint32_t afterLastPhase = 0xFFFFFFFF;

/// Two elements in phase 0, a third in phase 1, and a file in phase 2.
class StopTest : public ObservedSessionTest {
protected:
    StopTest() {
        addNodeElement(1, completeElement(1).polls(2));
        addBoard(1, completeElement(1).polls(3));
        addBoard(2, completeElement(1).polls(1), 2);
        addFile("a.cfg", "cfg/a.cfg", 3);
    }

    /// Updates; `visit` sees each event.
    bool updateWith(std::function<void(const KvTEvent&)> visit) {
        visit_ = std::move(visit);
        EXPECT_EQ(0U, prepare(performUpdate));
        observed().setEventFunction(
            [](const KvTEvent& event, void* context) {
                auto& test = *static_cast<StopTest*>(context);
                if (event.event == KvEEvent::phase) {
                    test.phases_.push_back(event.value);
                }
                test.visit_(event);
            },
            this);
        return run();
    }
    /// Updates; asks for an end at the event of this kind and value.
    bool updateStoppedAt(KvEEvent kind, std::uint32_t value, KvEStop how) {
        return updateWith([this, kind, value, how](const KvTEvent& event) {
            if (event.event == kind && event.value == value) {
                observed().requestStop(how);
            }
        });
    }
    /// The phases that were notified.
    [[nodiscard]] const std::vector<std::uint32_t>& phases() const { return phases_; }
    void expectVerdict(KvEFailure failure, const std::string& message) {
        const KvTVerdict verdict = outcome().verdict;
        EXPECT_EQ(failure, verdict.failure);
        EXPECT_THAT(verdict.message, HasSubstr(message));
    }
    /// Of the transferred files so many were not deleted.
    void expectFilesLeft(std::size_t count) {
        EXPECT_EQ(count, log.callsOf("transferFile").size() - log.callsOf("deleteRemoteFile").size());
    }

private:
    std::function<void(const KvTEvent&)> visit_;
    std::vector<std::uint32_t> phases_;
};

} // namespace

struct StopRow {
    const char* name;
    KvEEvent event;
    std::uint32_t value;
    std::vector<std::string> results;
    std::vector<std::uint32_t> phases;
    const char* message;

    friend void PrintTo(const StopRow& row, std::ostream* stream) { *stream << row.name; }
};

class StopMomentsTest : public StopTest, public testing::WithParamInterface<StopRow> {};

TEST_P(StopMomentsTest, NothingNewBeginsAndWhatHasBegunIsAwaited) {
    EXPECT_FALSE(updateStoppedAt(GetParam().event, GetParam().value, KvEStop::finishBegun));
    EXPECT_THAT(results(), ElementsAreArray(GetParam().results));
    EXPECT_THAT(phases(), ElementsAreArray(GetParam().phases));
    expectVerdict(KvEFailure::stopped, GetParam().message);
    EXPECT_TRUE(outcome().verdict.isRetryable());
    EXPECT_EQ(KvEStage::ended, outcome().stage);
    EXPECT_EQ(1U, log.callsOf("lock").size());
    EXPECT_EQ(1U, log.callsOf("unlock").size());
    EXPECT_EQ(log.callsOf("transferFile").size(), log.callsOf("deleteRemoteFile").size());
    EXPECT_THAT(log.text(), HasSubstr("\n    Update failed!\n"));
}

INSTANTIATE_TEST_SUITE_P(Moments, StopMomentsTest,
                         testing::Values(StopRow{"Locked",
                                                 KvEEvent::locked,
                                                 0,
                                                 {"not started", "not started", "not started", "not started"},
                                                 {afterLastPhase},
                                                 "ended on request: 4 elements not started"},
                                         StopRow{"FirstTransfer",
                                                 KvEEvent::transfer,
                                                 0,
                                                 {"not started", "not started", "not started", "not started"},
                                                 {0, afterLastPhase},
                                                 "4 elements not started"},
                                         StopRow{"FirstStart",
                                                 KvEEvent::elementStart,
                                                 0,
                                                 {"updated", "not started", "not started", "not started"},
                                                 {0, afterLastPhase},
                                                 "3 elements not started"},
                                         StopRow{"SecondStart",
                                                 KvEEvent::elementStart,
                                                 1,
                                                 {"updated", "updated", "not started", "not started"},
                                                 {0, afterLastPhase},
                                                 "2 elements not started"},
                                         StopRow{"FirstEnd",
                                                 KvEEvent::elementEnd,
                                                 0,
                                                 {"updated", "updated", "not started", "not started"},
                                                 {0, afterLastPhase},
                                                 "2 elements not started"},
                                         StopRow{"SecondPhase",
                                                 KvEEvent::phase,
                                                 1,
                                                 {"updated", "updated", "not started", "not started"},
                                                 {0, 1, afterLastPhase},
                                                 "2 elements not started"},
                                         StopRow{"BeforeTheFile",
                                                 KvEEvent::phase,
                                                 2,
                                                 {"updated", "updated", "updated", "not started"},
                                                 {0, 1, 2, afterLastPhase},
                                                 "1 element not started"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(StopTest, AnUpdateOfWhichEverythingHasBegunSucceeds) {
    EXPECT_TRUE(updateStoppedAt(KvEEvent::elementStart, 3, KvEStop::finishBegun));
    expectVerdict(KvEFailure::none, "");
    EXPECT_THAT(results(), ElementsAre("updated", "updated", "updated", "updated"));
}

TEST_F(StopTest, AFailureIsTheReasonIfEverythingHasBegun) {
    addFault(fault("KvHIM_putFileU"));
    EXPECT_FALSE(updateStoppedAt(KvEEvent::elementStart, 3, KvEStop::finishBegun));
    expectVerdict(KvEFailure::elements, "1 element failed");
}

TEST_F(StopTest, ElementsThatNeverStartedAreListedAsErrors) {
    (void)updateStoppedAt(KvEEvent::elementStart, 0, KvEStop::finishBegun);
    EXPECT_THAT(log.text(), HasSubstr("\nResults:\n    ERROR: IO1, Firmware:\n    ERROR: IO2, Firmware:\n"));
    EXPECT_EQ("the update was ended on request before its turn", outcome().elements[1].reason);
}

TEST_F(StopTest, WaitingIsGivenUpAndTheFilesOfWhatIsInProgressStay) {
    EXPECT_FALSE(updateStoppedAt(KvEEvent::elementStart, 1, KvEStop::giveUp));
    EXPECT_THAT(results(), ElementsAre("in progress", "in progress", "not started", "not started"));
    EXPECT_THAT(phases(), ElementsAre(0, afterLastPhase));
    expectVerdict(KvEFailure::stopped, "2 elements not started, 2 elements still in progress ('");
    EXPECT_THAT(outcome().elements[0].reason,
                HasSubstr("waiting for it was given up on request; the target's last answer was state 1"));
    EXPECT_THAT(log.callsOf("deleteRemoteFile"), IsEmpty());
    EXPECT_EQ(2U, log.callsOf("updateFinish").size());
    EXPECT_EQ(1U, log.callsOf("unlock").size());
    expectFilesLeft(2);
}

TEST_F(StopTest, OfAFinishedUpdateTheFileIsDeletedWhenWaitingForAnotherIsGivenUp) {
    std::uint32_t rounds = 0;
    EXPECT_FALSE(updateWith([&](const KvTEvent& event) {
        rounds += event.event == KvEEvent::progress ? 1 : 0;
        if (rounds == 2) { // the node's element ends in the second round, the board's in the third
            observed().requestStop(KvEStop::giveUp);
        }
    }));
    EXPECT_THAT(results(), ElementsAre("updated", "in progress", "not started", "not started"));
    EXPECT_EQ(1U, log.callsOf("deleteRemoteFile").size());
    expectFilesLeft(1);
}

TEST_F(StopTest, AWeakerRequestDoesNotReplaceAStrongerOne) {
    EXPECT_FALSE(updateWith([this](const KvTEvent& event) {
        if (event.event == KvEEvent::elementStart) {
            observed().requestStop(KvEStop::giveUp);
            observed().requestStop(KvEStop::finishBegun);
        }
    }));
    EXPECT_THAT(results(), ElementsAre("in progress", "not started", "not started", "not started"));
    expectFilesLeft(1);
}

TEST_F(StopTest, ElementsInProgressDoNotCancelLaterOnesOfTheirBoard) {
    addNodeElement(2, completeElement(2).polls(1), 2);
    (void)updateStoppedAt(KvEEvent::elementStart, 0, KvEStop::giveUp);
    EXPECT_THAT(results(), Not(Contains("cancelled")));
    expectFilesLeft(1);
}

TEST_F(StopTest, ASignalHandlerMayAskForTheEnd) {
    static KvISession* asked = nullptr;
    const auto before = std::signal(SIGINT, [](int) { asked->requestStop(KvEStop::finishBegun); });
    EXPECT_FALSE(updateWith([this](const KvTEvent& event) {
        if (event.event == KvEEvent::locked) {
            asked = &observed();
            (void)std::raise(SIGINT);
        }
    }));
    (void)std::signal(SIGINT, before);
    expectVerdict(KvEFailure::stopped, "4 elements not started");
}

TEST_F(StopTest, WithoutAPlanAndWithoutARunThereIsNothingToLeaveOutAndNoCall) {
    KvISession& unprepared = observedFor(performUpdate);
    unprepared.leaveOutDowngrades();
    EXPECT_EQ(nullptr, unprepared.plan());
    EXPECT_EQ(nullptr, unprepared.activity().call);
    EXPECT_FALSE(unprepared.activity().element);
}

TEST_F(StopTest, ARequestBeforeTheRunLetsNothingBegin) {
    EXPECT_EQ(0U, prepare(performUpdate));
    observed().requestStop(KvEStop::finishBegun);
    EXPECT_FALSE(run());
    EXPECT_THAT(log.callsOf("transferFile"), IsEmpty());
    expectVerdict(KvEFailure::stopped, "4 elements not started");
}

TEST_F(StopTest, AFailedBoardCancelsLaterElementsAfterARequest) {
    addBoard(1, completeElement(2).polls(1), 2);
    addFault(fault("update2").at("IOMODULE[1]"));
    (void)updateStoppedAt(KvEEvent::elementStart, 1, KvEStop::finishBegun);
    expectVerdict(KvEFailure::stopped, "not started");
}

// Elements that never end.

class StallTest : public StopTest {
protected:
    StallTest() { addBoard(3, completeElement(1).polls(1).finalState(1), 2); }
};

TEST_F(StallTest, WaitingIsGivenUpAtTheLimit) {
    observedFor(performUpdate).setStallLimit(60);
    std::vector<std::uint32_t> stalls;
    EXPECT_FALSE(updateWith([&](const KvTEvent& event) {
        if (event.event == KvEEvent::stalled) {
            stalls.push_back(event.value);
            EXPECT_EQ(KvEResult::inProgress, observed().outcomeOf(3).result);
        }
    }));
    ASSERT_EQ(1U, stalls.size());
    EXPECT_GE(stalls.front(), 30U);
    expectVerdict(KvEFailure::elements, "nothing changed any more: 1 element not started, 1 element still in progress");
    EXPECT_THAT(results(), ElementsAre("updated", "updated", "updated", "in progress", "not started"));
    EXPECT_EQ("waiting for it was given up: nothing changed any more; the target's last answer was state 1",
              outcome().elements[3].reason);
    EXPECT_EQ("the update was given up before its turn", outcome().elements[4].reason);
    expectFilesLeft(1);
}

TEST_F(StallTest, IsSaidAgainEveryMinute) {
    std::vector<std::uint32_t> stalls;
    EXPECT_FALSE(updateWith([&](const KvTEvent& event) {
        if (event.event == KvEEvent::stalled) {
            stalls.push_back(event.value);
            if (stalls.size() == 3) {
                observed().requestStop(KvEStop::giveUp);
            }
        }
    }));
    ASSERT_EQ(3U, stalls.size());
    EXPECT_EQ(stalls[0] + 60, stalls[1]);
    EXPECT_EQ(stalls[1] + 60, stalls[2]);
    expectFilesLeft(1);
}

TEST_F(StopTest, AnUpdateThatGoesOnDoesNotStall) {
    observedFor(performUpdate).setStallLimit(1);
    std::vector<std::pair<std::uint32_t, std::uint32_t>> answers;
    EXPECT_TRUE(updateWith([](const KvTEvent& event) { EXPECT_NE(KvEEvent::stalled, event.event); }));
}
