#include "KvCErrorManager.h"

#include "KvEmulation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace {

KvCErrorManager& manager() {
    return *KvCErrorManager::getInstance();
}

KvCErrorList* createList() {
    return manager().createErrorList(0, 1, 20, 5, 300);
}

KvTErrorEntry entryOf(std::uint32_t code, std::string text = "text") {
    KvTErrorEntry entry;
    entry.code = code;
    entry.text = std::move(text);
    return entry;
}

} // namespace

/// With a list of its own and the ledger as it was before.
class ErrorListTest : public testing::Test {
public:
    ErrorListTest(const ErrorListTest&) = delete;
    ErrorListTest(ErrorListTest&&) = delete;
    ErrorListTest& operator=(const ErrorListTest&) = delete;
    ErrorListTest& operator=(ErrorListTest&&) = delete;

protected:
    ErrorListTest() : before_(KvEmulation::ledger()), list_(createList()) {}
    ~ErrorListTest() override { manager().deleteErrorList(list_); }

    KvCErrorList& list() { return *list_; }
    [[nodiscard]] const KvEmulation::KvTLedger& before() const { return before_; }

private:
    KvEmulation::KvTLedger before_;
    KvCErrorList* list_;
};

TEST(ErrorManager, IsOneForTheProcess) {
    EXPECT_NE(KvCErrorManager::getInstance(), nullptr);
    EXPECT_EQ(KvCErrorManager::getInstance(), KvCErrorManager::getInstance());
    EXPECT_EQ(&manager().getMasterErrorList(), &manager().getMasterErrorList());
}

TEST(ErrorManager, OneTickIsOneMicrosecond) {
    EXPECT_DOUBLE_EQ(manager().getTimeStampTickDuration(), 1.0e-6);
}

TEST(ErrorManager, TheMasterListIsNotInTheLedger) {
    const std::uint32_t before = KvEmulation::ledger().errorLists;
    manager().getMasterErrorList().addError(entryOf(1));
    EXPECT_EQ(manager().getMasterErrorList().getErrorCount(), 1U);
    manager().getMasterErrorList().reset();
    EXPECT_EQ(manager().getMasterErrorList().getErrorCount(), 0U);
    EXPECT_EQ(KvEmulation::ledger().errorLists, before);
}

TEST(ErrorManager, ListsAreCountedUntilTheyAreDeleted) {
    const KvEmulation::KvTLedger before = KvEmulation::ledger();
    KvCErrorList* const first = createList();
    KvCErrorList* const second = createList();
    EXPECT_NE(first, second);
    EXPECT_EQ(KvEmulation::ledger().errorLists, before.errorLists + 2);
    manager().deleteErrorList(first);
    manager().deleteErrorList(second);
    EXPECT_EQ(KvEmulation::ledger().errorLists, before.errorLists);
    EXPECT_EQ(KvEmulation::ledger().badReleases, before.badReleases);
}

TEST(ErrorManager, DeletingNoListDoesNothing) {
    const KvEmulation::KvTLedger before = KvEmulation::ledger();
    manager().deleteErrorList(nullptr);
    EXPECT_EQ(KvEmulation::ledger().errorLists, before.errorLists);
    EXPECT_EQ(KvEmulation::ledger().badReleases, before.badReleases);
}

TEST(ErrorManager, DeletingAListTwiceIsABadRelease) {
    const KvEmulation::KvTLedger before = KvEmulation::ledger();
    KvCErrorList* const list = createList();
    manager().deleteErrorList(list);
    manager().deleteErrorList(list);
    EXPECT_EQ(KvEmulation::ledger().errorLists, before.errorLists);
    EXPECT_EQ(KvEmulation::ledger().badReleases, before.badReleases + 1);
}

TEST_F(ErrorListTest, SendingLeavesTheListAsItIs) {
    list().addError(entryOf(7));
    manager().sendErrorList(&list(), 1);
    manager().sendErrorList(nullptr, 1);
    ASSERT_EQ(list().getErrorCount(), 1U);
    EXPECT_EQ(list().getErrorCode(0), 7U);
    EXPECT_EQ(KvEmulation::ledger().errorLists, before().errorLists + 1);
}

TEST_F(ErrorListTest, IsEmptyAtFirst) {
    EXPECT_EQ(list().getErrorCount(), 0U);
    EXPECT_EQ(list().getNumberOfUsedEntries(), 0U);
}

TEST_F(ErrorListTest, KeepsAnEntryAsItIsGiven) {
    KvTErrorEntry entry;
    entry.code = 0x2FFF;
    entry.text = "Fault at scan.";
    entry.originNode = 4711;
    entry.timeStamp = 0x123456789ABCDEFULL;
    entry.mainModule = 8;
    entry.subModule = 9;
    entry.function = "scan";
    entry.line = 77;
    list().addError(entryOf(1));
    list().addError(entry);
    ASSERT_EQ(list().getNumberOfUsedEntries(), 2U);
    EXPECT_EQ(list().getErrorCode(1), 0x2FFFU);
    EXPECT_STREQ(list().getErrorText(1), "Fault at scan.");
    EXPECT_EQ(list().getOriginNode(1), 4711U);
    EXPECT_EQ(list().getTimeStamp(1), 0x123456789ABCDEFULL);
    EXPECT_EQ(list().getMainModuleNumber(1), 8U);
    EXPECT_EQ(list().getSubModuleNumber(1), 9U);
    EXPECT_STREQ(list().getFunctionName(1), "scan");
    EXPECT_EQ(list().getLineNumber(1), 77U);
}

TEST_F(ErrorListTest, WhatAnEntryDoesNotStateIsZeroOrEmpty) {
    list().addError(entryOf(1, ""));
    EXPECT_STREQ(list().getErrorText(0), "");
    EXPECT_EQ(list().getOriginNode(0), 0U);
    EXPECT_EQ(list().getTimeStamp(0), 0U);
    EXPECT_EQ(list().getMainModuleNumber(0), 0U);
    EXPECT_EQ(list().getSubModuleNumber(0), 0U);
    EXPECT_EQ(list().getFunctionName(0), nullptr);
    EXPECT_EQ(list().getLineNumber(0), 0U);
}

TEST_F(ErrorListTest, AnEntryThatDoesNotExistIsZeroOrEmpty) {
    list().addError(entryOf(1));
    EXPECT_EQ(list().getErrorCode(1), 0U);
    EXPECT_STREQ(list().getErrorText(4294967295U), "");
    EXPECT_EQ(list().getFunctionName(1), nullptr);
}

TEST_F(ErrorListTest, HasNoCapacityLimit) {
    constexpr std::uint32_t count = 5000;
    for (std::uint32_t code = 0; code < count; ++code) {
        list().addError(entryOf(code, std::string(400, 'x')));
    }
    ASSERT_EQ(list().getErrorCount(), count);
    EXPECT_EQ(list().getErrorCode(count - 1), count - 1);
    EXPECT_EQ(std::string(list().getErrorText(0)).size(), 400U);
}

TEST_F(ErrorListTest, ResetRemovesAllEntries) {
    list().addError(entryOf(1));
    list().reset();
    EXPECT_EQ(list().getErrorCount(), 0U);
}

TEST_F(ErrorListTest, TakesCopiesOfAllEntriesOfAnother) {
    KvCErrorList* const other = createList();
    other->addError(entryOf(2, "two"));
    other->addError(entryOf(3, "three"));
    list().addError(entryOf(1, "one"));
    list() += *other;
    EXPECT_EQ(other->getErrorCount(), 2U);
    manager().deleteErrorList(other);
    ASSERT_EQ(list().getErrorCount(), 3U);
    EXPECT_EQ(list().getErrorCode(0), 1U);
    EXPECT_STREQ(list().getErrorText(1), "two");
    EXPECT_STREQ(list().getErrorText(2), "three");
}

TEST_F(ErrorListTest, CanBeAddedToItself) {
    list().addError(entryOf(1));
    list().addError(entryOf(2));
    list() += list();
    ASSERT_EQ(list().getErrorCount(), 4U);
    EXPECT_EQ(list().getErrorCode(2), 1U);
    EXPECT_EQ(list().getErrorCode(3), 2U);
}

TEST_F(ErrorListTest, TheThreadThatLockedItMayGoOnUsingIt) {
    EXPECT_EQ(list().getErrorCountLock(), 0U);
    list().addError(entryOf(1));
    EXPECT_EQ(list().getErrorCount(), 1U);
    EXPECT_EQ(list().getErrorCountLock(), 1U);
    list().addError(entryOf(2));
    EXPECT_EQ(KvEmulation::ledger().countLocks, before().countLocks + 2);
    EXPECT_EQ(list().getErrorCountUnlock(), 2U);
    EXPECT_EQ(list().getErrorCountUnlock(), 2U);
    EXPECT_EQ(KvEmulation::ledger().countLocks, before().countLocks);
    EXPECT_EQ(KvEmulation::ledger().badReleases, before().badReleases);
}

TEST_F(ErrorListTest, OtherThreadsWaitForTheUnlock) {
    const std::uint32_t countBefore = list().getErrorCountLock();
    std::atomic<bool> begins{false};
    std::atomic<bool> isDone{false};
    std::thread other([&] {
        begins = true;
        list().addError(entryOf(2));
        isDone = true;
    });
    while (!begins) {
        std::this_thread::yield();
    }
    list().addError(entryOf(1));
    for (int round = 0; round < 1000; ++round) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(isDone);
    EXPECT_EQ(list().getErrorCountUnlock(), countBefore + 1);
    other.join();
    ASSERT_EQ(list().getErrorCount(), 2U);
    EXPECT_EQ(list().getErrorCode(0), 1U);
    EXPECT_EQ(list().getErrorCode(1), 2U);
}

TEST_F(ErrorListTest, AnUnlockWithoutALockIsABadRelease) {
    list().addError(entryOf(1));
    EXPECT_EQ(list().getErrorCountUnlock(), 1U);
    EXPECT_EQ(KvEmulation::ledger().countLocks, before().countLocks);
    EXPECT_EQ(KvEmulation::ledger().badReleases, before().badReleases + 1);
    // It did not touch the lock: the list can still be locked and used.
    EXPECT_EQ(list().getErrorCountLock(), 1U);
    EXPECT_EQ(list().getErrorCountUnlock(), 1U);
}

TEST_F(ErrorListTest, SeveralThreadsLoseNoEntry) {
    constexpr std::uint32_t perThread = 500;
    const auto work = [this] {
        for (std::uint32_t round = 0; round < perThread; ++round) {
            static_cast<void>(list().getErrorCountLock());
            list().addError(entryOf(round));
            static_cast<void>(list().getErrorCountUnlock());
            manager().deleteErrorList(createList());
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(list().getErrorCount(), 2 * perThread);
    EXPECT_EQ(KvEmulation::ledger().countLocks, before().countLocks);
    EXPECT_EQ(KvEmulation::ledger().errorLists, before().errorLists + 1);
    EXPECT_EQ(KvEmulation::ledger().badReleases, before().badReleases);
}

TEST(ErrorManager, AListDeletedWhileLockedStaysInTheLedgerAsUnbalanced) {
    const KvEmulation::KvTLedger before = KvEmulation::ledger();
    KvCErrorList* const list = createList();
    static_cast<void>(list->getErrorCountLock());
    manager().deleteErrorList(list);
    EXPECT_EQ(KvEmulation::ledger().errorLists, before.errorLists);
    EXPECT_EQ(KvEmulation::ledger().countLocks, before.countLocks + 1);
}
