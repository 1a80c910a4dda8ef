#include "RunningUpdate.h"

#include "CallWatch.h"
#include "PlainProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <vector>

namespace {

using namespace KvNReflasher;
using namespace std::chrono_literals;
using Rung = StopLadder::Rung;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::chrono::steady_clock::time_point begin{100s};

KvTPlan planOfThreeElements() {
    KvTPlan plan;
    for (std::uint32_t index = 0; index < 3; ++index) {
        KvTPlannedElement& element = plan.elements.emplace_back();
        element.index = index;
        element.displayName = "Element " + std::to_string(index);
        element.boardName = index == 2 ? "QB2\rforged" : "QB1";
        element.serialNumber = index == 2 ? 0 : 47;
        element.phase = 0;
    }
    return plan;
}

class RunningUpdateTest : public testing::Test {
protected:
    RunningUpdateTest() { update.setPlan(planOfThreeElements()); }

    void start(std::uint32_t index) { update.onEvent({KvEEvent::elementStart, index}); }
    void end(std::uint32_t index) { update.onEvent({KvEEvent::elementEnd, index}); }
    /// Asks so many times, each more than a second after the one before; the last answer.
    RunningUpdate::Answer requests(int count) {
        RunningUpdate::Answer answer;
        for (int number = 0; number < count; ++number) {
            answer = update.request(begin + number * 1001ms);
        }
        return answer;
    }

    std::vector<KvEStop> asked;
    RunningUpdate update{[this](KvEStop how) { asked.push_back(how); }};
};

} // namespace

TEST_F(RunningUpdateTest, TheFirstRequestLetsNothingNewBegin) {
    EXPECT_FALSE(update.isStopRequested());
    const RunningUpdate::Answer answer = requests(1);
    EXPECT_FALSE(answer.endsTool);
    EXPECT_EQ(
        "\nkvreflash: the update is asked to end: nothing new begins, and what has begun is awaited. Ask again to "
        "give up waiting.\n",
        answer.text);
    EXPECT_THAT(asked, ElementsAre(KvEStop::finishBegun));
    EXPECT_TRUE(update.isStopRequested());
}

TEST_F(RunningUpdateTest, RequestsWithinASecondAreOne) {
    (void)update.request(begin);
    for (const auto later : {0ms, 1ms, 999ms, 1000ms}) {
        EXPECT_EQ("", update.request(begin + later).text);
    }
    EXPECT_THAT(asked, ElementsAre(KvEStop::finishBegun));
    EXPECT_NE("", update.request(begin + 1001ms).text);
}

TEST_F(RunningUpdateTest, TheSecondRequestGivesUpWaitingAndNamesWhatIsInProgress) {
    start(0);
    start(1);
    end(0);
    const RunningUpdate::Answer answer = requests(2);
    EXPECT_FALSE(answer.endsTool);
    EXPECT_EQ("\nkvreflash: waiting is given up; in progress: 'Element 1'. Ask again to end at once.\n", answer.text);
    EXPECT_THAT(asked, ElementsAre(KvEStop::finishBegun, KvEStop::giveUp));
}

TEST_F(RunningUpdateTest, TheSecondRequestSaysIfNothingIsInProgress) {
    EXPECT_THAT(requests(2).text, HasSubstr("given up; no element is in progress."));
}

TEST_F(RunningUpdateTest, TheThirdRequestEndsTheToolAndNamesTheBoardsOnce) {
    start(0);
    start(1);
    start(2);
    const RunningUpdate::Answer answer = requests(3);
    EXPECT_TRUE(answer.endsTool);
    EXPECT_EQ("\nkvreflash: ended at once; this may have cut an update on: QB1, S/N 47, QB2\\x0Dforged\n", answer.text);
    EXPECT_EQ(2U, asked.size());
}

TEST_F(RunningUpdateTest, TheThirdRequestSaysIfNoUpdateWasInProgress) {
    EXPECT_EQ("\nkvreflash: ended at once; no update was in progress\n", requests(3).text);
}

TEST_F(RunningUpdateTest, ClosingClimbsOnlyWhatIsNotReached) {
    EXPECT_NE("", update.climbTo(Rung::finishBegun, begin).text);
    EXPECT_EQ("", update.climbTo(Rung::finishBegun, begin + 5s).text);
    EXPECT_NE("", update.climbTo(Rung::giveUp, begin + 5s).text);
    EXPECT_THAT(asked, ElementsAre(KvEStop::finishBegun, KvEStop::giveUp));
}

TEST(CurrentUpdateTest, IsTheOneThatLives) {
    EXPECT_EQ(nullptr, RunningUpdate::current());
    {
        const RunningUpdate update([](KvEStop) {});
        EXPECT_EQ(&update, RunningUpdate::current());
    }
    EXPECT_EQ(nullptr, RunningUpdate::current());
}

TEST(ClosingTest, AsksForTheEndAndThenGivesUpAndReturnsWhenTheUpdateHasEnded) {
    std::promise<void> givenUp;
    std::vector<KvEStop> asked;
    std::optional<RunningUpdate> update;
    update.emplace([&](KvEStop how) {
        asked.push_back(how);
        if (how == KvEStop::giveUp) {
            givenUp.set_value();
        }
    });
    const auto closing = std::async(std::launch::async, [] { answerClosing(0ms); });
    givenUp.get_future().wait();
    update.reset();
    closing.wait();
    EXPECT_THAT(asked, ElementsAre(KvEStop::finishBegun, KvEStop::giveUp));
    answerClosing(0ms); // nothing is left to be ended
    answerStopRequest();
    answerLostTerminal();
}

// Calls that do not return.

namespace {

KvTActivity callSince(std::chrono::steady_clock::time_point moment, std::optional<std::uint32_t> element = {}) {
    return {"updateStatus2", element, moment};
}

} // namespace

TEST(BlockedCallTest, IsNamedAfterThirtySecondsAndThenOnceAMinute) {
    BlockedCall blocked;
    std::vector<int> said;
    for (int second = 0; second < 200; ++second) {
        if (!blocked.textFor(callSince(begin), nullptr, begin + std::chrono::seconds(second)).empty()) {
            said.push_back(second);
        }
    }
    EXPECT_THAT(said, ElementsAre(30, 90, 150));
}

TEST(BlockedCallTest, IsNamedWithItsElement) {
    const KvTPlan plan = planOfThreeElements();
    EXPECT_EQ("the call updateStatus2 for 'Element 1' has not returned for 31 s",
              BlockedCall().textFor(callSince(begin, 1), &plan, begin + 31s));
    EXPECT_EQ("the call updateStatus2 has not returned for 31 s",
              BlockedCall().textFor(callSince(begin), &plan, begin + 31s));
    EXPECT_EQ("the call updateStatus2 has not returned for 31 s",
              BlockedCall().textFor(callSince(begin, 3), &plan, begin + 31s));
}

TEST(BlockedCallTest, EachCallHasItsOwnTime) {
    BlockedCall blocked;
    EXPECT_NE("", blocked.textFor(callSince(begin), nullptr, begin + 30s));
    EXPECT_EQ("", blocked.textFor({}, nullptr, begin + 31s));
    EXPECT_EQ("", blocked.textFor(callSince(begin + 31s), nullptr, begin + 60s));
    EXPECT_NE("", blocked.textFor(callSince(begin + 31s), nullptr, begin + 61s));
}

TEST(PlainProgressTest, StatesEachTenthOfAPhaseOnce) {
    PlainProgress progress;
    progress.beginPhase(4);
    EXPECT_EQ("", progress.lineFor(0));
    EXPECT_EQ("", progress.lineFor(9));
    EXPECT_EQ("Phase 4: 10%\n", progress.lineFor(10));
    EXPECT_EQ("", progress.lineFor(19));
    EXPECT_EQ("Phase 4: 50%\n", progress.lineFor(57));
    EXPECT_EQ("", progress.lineFor(30));
    EXPECT_EQ("Phase 4: 100%\n", progress.lineFor(100));
    EXPECT_EQ("", progress.lineFor(100));
    progress.beginPhase(5);
    EXPECT_EQ("Phase 5: 10%\n", progress.lineFor(11));
}
