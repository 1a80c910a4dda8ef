#include "EnvironmentVariable.h"
#include "ExampleRack.h"
#include "KvEmulation.h"
#include "KvISession.h"
#include "SessionLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace KvNReflasher;

namespace {

/// What the session's notifications and messages see of a sweep.
struct Moments {
    KvISession* session = nullptr;
    KvEStop how = KvEStop::finishBegun;
    /// The moment to ask for the end at, from 1; 0: never.
    std::uint32_t chosen = 0;
    std::uint32_t passed = 0;
    bool isAsked = false;
    /// Transfers, starts and files so far, and when the end was asked for.
    std::uint32_t begun = 0;
    std::uint32_t begunWhenAsked = 0;
    std::vector<std::uint32_t> phasesAfterwards;

    void pass() {
        if (++passed == chosen) {
            isAsked = true;
            begunWhenAsked = begun;
            session->requestStop(how);
        }
    }
    void onEvent(const KvTEvent& event) {
        if (event.event == KvEEvent::phase && isAsked) {
            phasesAfterwards.push_back(event.value);
        }
        begun += event.event == KvEEvent::transfer || event.event == KvEEvent::elementStart ? 1 : 0;
        pass();
    }
};

/// Asks updates of the example rack to end at seeded moments: each event and each message is one.
class StopSweepTest : public testing::TestWithParam<KvEStop> {
protected:
    StopSweepTest() {
        options.archiveFolder = exampleArchive();
        options.descriptionFileName = L"archive.json";
        options.target = L"127.0.0.1";
        options.mode = performUpdate;
    }
    void TearDown() override { KvEmulation::reset(); }

    /// Updates a fresh rack; returns whether that succeeded.
    bool updateStoppedAt(std::uint32_t moment);
    void expectNothingNewBegan() const;
    void expectConsistentOutcome(bool succeeded);
    void expectNextUpdateCompletes();

    KvTOptions options{};
    ExampleRack rack;
    SessionLog log;
    EnvironmentVariable timeScale{"KV_TIME_SCALE", "0"};
    Moments moments;
    KvTOutcome outcome;

private:
    bool update();
};

bool StopSweepTest::update() {
    log.clear();
    const std::unique_ptr<KvISession> session(KvISession::createInstance(options));
    moments.session = session.get();
    session->setEventFunction(
        [](const KvTEvent& event, void* context) { static_cast<Moments*>(context)->onEvent(event); }, &moments);
    session->setMessageFunction([](const std::string&, void* context) { static_cast<Moments*>(context)->pass(); },
                                &moments);
    EXPECT_EQ(0U, session->prepare());
    const bool succeeded = session->run();
    outcome = session->outcome();
    return succeeded;
}

bool StopSweepTest::updateStoppedAt(std::uint32_t moment) {
    moments = {};
    moments.how = GetParam();
    moments.chosen = moment;
    rack.serveFresh({});
    return update();
}

/// What the message of its begin had announced may go on.
void StopSweepTest::expectNothingNewBegan() const {
    EXPECT_LE(moments.begun, moments.begunWhenAsked + 1);
    for (const std::uint32_t phase : moments.phasesAfterwards) {
        EXPECT_EQ(0xFFFFFFFFU, phase);
    }
}

void StopSweepTest::expectConsistentOutcome(bool succeeded) {
    const auto count = [this](KvEResult result) {
        return std::count_if(outcome.elements.begin(), outcome.elements.end(),
                             [result](const KvTElementOutcome& element) { return element.result == result; });
    };
    const bool isComplete = count(KvEResult::notStarted) + count(KvEResult::inProgress) == 0;
    EXPECT_EQ(isComplete, succeeded);
    EXPECT_EQ(isComplete ? KvEFailure::none : KvEFailure::stopped, outcome.verdict.failure) << outcome.verdict.message;
    EXPECT_EQ(0, count(KvEResult::failed) + count(KvEResult::cancelled));
    EXPECT_TRUE(GetParam() == KvEStop::giveUp || count(KvEResult::inProgress) == 0);
    // The files of what is in progress, which may share them, stay on the target.
    const std::size_t left = log.callsOf("transferFile").size() - log.callsOf("deleteRemoteFile").size();
    EXPECT_LE(left, static_cast<std::size_t>(count(KvEResult::inProgress)));
    EXPECT_EQ(left == 0, count(KvEResult::inProgress) == 0);
    EXPECT_TRUE(KvEmulation::ledger().isClean());
}

void StopSweepTest::expectNextUpdateCompletes() {
    moments = {};
    if (rack.serveAgain()) {
        EXPECT_TRUE(update()) << outcome.verdict.message;
        EXPECT_TRUE(KvEmulation::ledger().isClean());
    }
}

} // namespace

TEST_P(StopSweepTest, AnUpdateEndsInItsOwnOrderWheneverItIsAsked) {
    ASSERT_TRUE(updateStoppedAt(0));
    const std::uint32_t all = moments.passed;
    const std::uint32_t count = numberFromEnvironment("KV_STOP_MOMENTS", 60);
    const std::uint32_t seed = numberFromEnvironment("KV_SWEEP_SEED", 1);
    std::mt19937 random(seed);
    std::uint32_t stopped = 0;
    for (std::uint32_t number = 0; number < count && !HasFailure(); ++number) {
        const auto moment = static_cast<std::uint32_t>(1 + random() % all);
        SCOPED_TRACE("moment " + std::to_string(moment));
        const bool succeeded = updateStoppedAt(moment);
        stopped += succeeded ? 0 : 1;
        EXPECT_TRUE(moments.isAsked);
        expectNothingNewBegan();
        expectConsistentOutcome(succeeded);
        expectNextUpdateCompletes();
    }
    EXPECT_GT(stopped, count / 4);
    std::cout << count << " of " << all << " moments, seed " << seed << ": " << stopped << " updates stopped\n";
}

INSTANTIATE_TEST_SUITE_P(Rungs, StopSweepTest, testing::Values(KvEStop::finishBegun, KvEStop::giveUp),
                         [](const auto& tested) { return tested.param == KvEStop::giveUp ? "GiveUp" : "FinishBegun"; });
