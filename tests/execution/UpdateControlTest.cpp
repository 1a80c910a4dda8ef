#include "UpdateControl.h"
#include "PhasePolling.h"

#include <gtest/gtest.h>

using namespace KvNReflasher;
using namespace std::chrono_literals;

namespace {

/// The seconds after which a stall is said, within so many rounds whose calls take this long.
std::vector<std::uint32_t> saidWithin(std::uint32_t rounds, std::chrono::nanoseconds calls) {
    KvCStall stall;
    std::vector<std::uint32_t> said;
    for (std::uint32_t round = 0; round < rounds; ++round) {
        stall.addRound(false, calls);
        if (stall.isDue()) {
            said.push_back(stall.seconds());
        }
    }
    return said;
}

} // namespace

TEST(StallTest, IsSaidAfterThirtySecondsAndThenOnceAMinute) {
    EXPECT_EQ(std::vector<std::uint32_t>(), saidWithin(149, 0ns));
    EXPECT_EQ(std::vector<std::uint32_t>({30}), saidWithin(150, 0ns));
    EXPECT_EQ(std::vector<std::uint32_t>({30, 90, 150}), saidWithin(750, 0ns));
}

TEST(StallTest, CountsTheTimeWithinCalls) {
    EXPECT_EQ(std::vector<std::uint32_t>({30, 90}), saidWithin(90, 800ms));
    EXPECT_EQ(std::vector<std::uint32_t>({100, 200}), saidWithin(2, 99800ms));
}

TEST(StallTest, BeginsAnewWithEachChange) {
    KvCStall stall;
    for (int round = 0; round < 149; ++round) {
        stall.addRound(false, 0ns);
    }
    stall.addRound(true, 0ns);
    EXPECT_EQ(0U, stall.seconds());
    stall.addRound(false, 30s);
    EXPECT_TRUE(stall.isDue());
    EXPECT_FALSE(stall.isDue());
    stall.addRound(true, 0ns);
    stall.addRound(false, 30s);
    EXPECT_TRUE(stall.isDue());
}

TEST(UpdateControlTest, AsksForNothingAtFirst) {
    const KvCUpdateControl control;
    EXPECT_FALSE(control.isStopRequested());
    EXPECT_FALSE(control.startsNothing());
    EXPECT_FALSE(control.givesUp());
    EXPECT_EQ(nullptr, control.activity().call);
}

TEST(UpdateControlTest, TheFirstRequestLetsNothingNewBegin) {
    KvCUpdateControl control;
    control.requestStop(KvEStop::finishBegun);
    EXPECT_TRUE(control.startsNothing());
    EXPECT_FALSE(control.givesUp());
}

TEST(UpdateControlTest, AStrongerRequestStays) {
    KvCUpdateControl control;
    control.requestStop(KvEStop::giveUp);
    control.requestStop(KvEStop::finishBegun);
    EXPECT_TRUE(control.givesUp());
}

TEST(UpdateControlTest, AStallCountsOnlyFromItsLimitOn) {
    KvCUpdateControl control;
    control.noteStall(1000000);
    EXPECT_FALSE(control.isStalled());
    control.setStallLimit(60);
    control.noteStall(59);
    EXPECT_FALSE(control.givesUp());
    control.noteStall(60);
    EXPECT_TRUE(control.isStalled());
    EXPECT_TRUE(control.givesUp());
    EXPECT_TRUE(control.startsNothing());
    EXPECT_FALSE(control.isStopRequested());
    control.forgetStall();
    EXPECT_FALSE(control.givesUp());
}

TEST(UpdateControlTest, ACallIsSeenWhileItIsUnderWay) {
    KvCUpdateControl control;
    const auto before = std::chrono::steady_clock::now();
    {
        const KvCCallUnderWay call(control, "update2", 7);
        const KvTActivity activity = control.activity();
        EXPECT_STREQ("update2", activity.call);
        EXPECT_EQ(7U, activity.element);
        EXPECT_GE(activity.begin, before);
    }
    EXPECT_EQ(nullptr, control.activity().call);
}
