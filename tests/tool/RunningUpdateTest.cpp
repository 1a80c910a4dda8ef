#include "RunningUpdate.h"
#include "PlainProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using KvNReflasher::KvTPlan;
using KvNReflasher::KvTPlannedElement;
using namespace std::chrono_literals;
using testing::EndsWith;

/// Three elements in two phases, and two that are not updated.
KvTPlan planOfTwoPhases() {
    KvTPlan plan;
    for (std::uint32_t index = 0; index < 5; ++index) {
        KvTPlannedElement& element = plan.elements.emplace_back();
        element.index = index;
        element.displayName = "Element " + std::to_string(index);
        if (index < 3) {
            element.phase = index / 2;
        }
    }
    return plan;
}

class RunningUpdateTest : public testing::Test {
protected:
    /// What the second of two interrupts says.
    std::string lastWords() {
        (void)update.interrupt(begin);
        const RunningUpdate::Answer answer = update.interrupt(begin + 1s);
        EXPECT_TRUE(answer.endsTool);
        return answer.text;
    }

    RunningUpdate update{planOfTwoPhases()};
    const std::chrono::steady_clock::time_point begin{100s};
};

TEST_F(RunningUpdateTest, TheFirstInterruptWarnsAndGoesOn) {
    const RunningUpdate::Answer answer = update.interrupt(begin);
    EXPECT_FALSE(answer.endsTool);
    EXPECT_EQ("\nkvreflash: the target is being updated; interrupting may leave it incomplete. The update goes on. "
              "Interrupt again within 3 s to end at once.\n",
              answer.text);
}

TEST_F(RunningUpdateTest, ASecondInterruptWithinThreeSecondsEndsTheTool) {
    (void)update.interrupt(begin);
    EXPECT_TRUE(update.interrupt(begin + 3s).endsTool);
}

TEST_F(RunningUpdateTest, ALaterInterruptIsAFirstOneAgain) {
    (void)update.interrupt(begin);
    EXPECT_FALSE(update.interrupt(begin + 3001ms).endsTool);
    EXPECT_TRUE(update.interrupt(begin + 5s).endsTool);
}

TEST_F(RunningUpdateTest, ItTellsWhichElementsOfThePhaseDidNotFail) {
    update.beginPhase(0);
    update.elementFailed(1);
    EXPECT_THAT(lastWords(),
                EndsWith("the target may be incomplete. Elements of phase 0 that were not reported failed:\n"
                         "  0  Element 0\n"));
}

TEST_F(RunningUpdateTest, ElementsThatTakeNoPartAreNotTold) {
    update.beginPhase(1);
    EXPECT_THAT(lastWords(), EndsWith("not reported failed:\n  2  Element 2\n"));
}

TEST_F(RunningUpdateTest, BeforeTheFirstPhaseAndBehindTheLastOneNoElementIsTold) {
    EXPECT_THAT(lastWords(), EndsWith("No phase had begun.\n"));
    update.beginPhase(0xFFFFFFFF);
    EXPECT_THAT(update.interrupt(begin + 2s).text, EndsWith("All phases had ended.\n"));
}

TEST(CurrentUpdate, IsTheOneThatLives) {
    EXPECT_EQ(nullptr, RunningUpdate::current());
    {
        const RunningUpdate update{KvTPlan()};
        EXPECT_EQ(&update, RunningUpdate::current());
    }
    EXPECT_EQ(nullptr, RunningUpdate::current());
}

TEST(PlainProgress, TellsEachTenthOfAPhaseOnce) {
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

TEST(RunningUpdates, NamesMakeNoLines) {
    KvTPlan plan;
    plan.elements.emplace_back().displayName = "A\nkvreflash: forged\r\x1B";
    plan.elements.back().phase = 0;
    RunningUpdate update(plan);
    update.beginPhase(0);
    const std::chrono::steady_clock::time_point begin{100s};
    (void)update.interrupt(begin);
    EXPECT_THAT(update.interrupt(begin + 1s).text, EndsWith("\n  0  A\\x0Akvreflash: forged\\x0D\\x1B\n"));
}

} // namespace
