#include "CallJudgement.h"

#include "KvEmulation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

void addError(KvCErrorListPool& errors) {
    KvTErrorEntry entry;
    entry.code = 1;
    errors.addError(entry);
}

std::uint32_t countLocks() {
    return KvEmulation::ledger().countLocks;
}

/// With two lists; at the end nothing may be held.
class CallJudgementTest : public testing::Test {
public:
    CallJudgementTest(const CallJudgementTest&) = delete;
    CallJudgementTest(CallJudgementTest&&) = delete;
    CallJudgementTest& operator=(const CallJudgementTest&) = delete;
    CallJudgementTest& operator=(CallJudgementTest&&) = delete;

protected:
    CallJudgementTest() = default;
    ~CallJudgementTest() override {
        EXPECT_EQ(countLocks(), 0U);
        KvCErrorManager::getInstance()->deleteErrorList(list_);
        KvCErrorManager::getInstance()->deleteErrorList(other_);
        EXPECT_TRUE(KvEmulation::ledger().isClean());
    }

    KvCErrorList& list() { return *list_; }
    KvCErrorList& other() { return *other_; }

private:
    static KvCErrorList* create() { return KvCErrorManager::getInstance()->createErrorList(0, 1, 20, 5, 300); }

    KvCErrorList* list_ = create();
    KvCErrorList* other_ = create();
};

} // namespace

TEST_F(CallJudgementTest, ACallThatAddsNoErrorSucceeds) {
    bool called = false;
    EXPECT_TRUE(callSucceeds(list(), [&] { called = true; }));
    EXPECT_TRUE(called);
}

TEST_F(CallJudgementTest, ACallThatAddsAnErrorFails) {
    EXPECT_FALSE(callSucceeds(list(), [&] { addError(list()); }));
    EXPECT_EQ(list().getErrorCount(), 1U);
}

TEST_F(CallJudgementTest, ErrorsOfEarlierCallsDoNotCount) {
    addError(list());
    EXPECT_TRUE(callSucceeds(list(), [] {}));
    EXPECT_FALSE(callSucceeds(list(), [&] { addError(list()); }));
    EXPECT_TRUE(callSucceeds(list(), [] {}));
}

TEST_F(CallJudgementTest, ErrorsOfAnotherListDoNotCount) {
    EXPECT_TRUE(callSucceeds(list(), [&] { addError(other()); }));
}

TEST_F(CallJudgementTest, AnyChangeOfTheCountIsAFailure) {
    addError(list());
    EXPECT_FALSE(callSucceeds(list(), [&] { list().reset(); }));
}

TEST_F(CallJudgementTest, WhatTheCallReturnsDoesNotMatter) {
    EXPECT_TRUE(callSucceeds(list(), [] { return 1; }));
    EXPECT_TRUE(callSucceeds(list(), [] { return false; }));
    EXPECT_FALSE(callSucceeds(list(), [&] {
        addError(list());
        return true;
    }));
}

TEST_F(CallJudgementTest, TheListIsLockedDuringTheCallOnly) {
    EXPECT_EQ(countLocks(), 0U);
    EXPECT_TRUE(callSucceeds(list(), [] { EXPECT_EQ(countLocks(), 1U); }));
    EXPECT_EQ(countLocks(), 0U);
}

TEST_F(CallJudgementTest, ErrorsOfOtherThreadsWaitForTheEndOfTheCall) {
    std::atomic<bool> begins{false};
    std::thread thread;
    EXPECT_TRUE(callSucceeds(list(), [&] {
        thread = std::thread([&] {
            begins = true;
            addError(list());
        });
        while (!begins) {
            std::this_thread::yield();
        }
        for (int round = 0; round < 1000; ++round) {
            std::this_thread::yield();
        }
    }));
    thread.join();
    EXPECT_EQ(list().getErrorCount(), 1U);
}

TEST_F(CallJudgementTest, AnExceptionOfTheCallUnlocksTheListAndGoesOn) {
    EXPECT_THROW(static_cast<void>(callSucceeds(list(),
                                                [&] {
                                                    addError(list());
                                                    throw std::runtime_error("thrown");
                                                })),
                 std::runtime_error);
    EXPECT_EQ(countLocks(), 0U);
    EXPECT_EQ(list().getErrorCount(), 1U);
}

TEST_F(CallJudgementTest, CallsMayBeNested) {
    EXPECT_FALSE(callSucceeds(list(), [&] {
        EXPECT_TRUE(callSucceeds(list(), [] { EXPECT_EQ(countLocks(), 2U); }));
        EXPECT_FALSE(callSucceeds(list(), [&] { addError(list()); }));
        EXPECT_EQ(countLocks(), 1U);
    }));
}

TEST_F(CallJudgementTest, ACallNeedNotBeCopyable) {
    auto value = std::make_unique<int>(0);
    EXPECT_TRUE(callSucceeds(list(), [owned = std::move(value)]() mutable { ++*owned; }));
}

TEST_F(CallJudgementTest, AGuardThatIsNotAskedUnlocksTheList) {
    {
        const KvCErrorCountGuard guard(list());
        EXPECT_EQ(countLocks(), 1U);
    }
    EXPECT_EQ(countLocks(), 0U);
}

TEST_F(CallJudgementTest, AGuardThatIsAskedUnlocksTheListAtOnceAndOnce) {
    {
        KvCErrorCountGuard guard(list());
        addError(list());
        EXPECT_FALSE(guard.unchanged());
        EXPECT_EQ(countLocks(), 0U);
    }
    EXPECT_EQ(KvEmulation::ledger().badReleases, 0U);
}
