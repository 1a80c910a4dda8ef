#include "OwnedErrorList.h"

#include "KvEmulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>
#include <vector>

namespace {

std::uint32_t listsHeld() {
    return KvEmulation::ledger().errorLists;
}

/// At the end nothing may be held, and nothing may have been released twice.
class OwnedErrorListTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_TRUE(KvEmulation::ledger().isClean()); }
};

/// A record that owns two lists, as those of the update elements do.
struct TwoLists {
    KvCOwnedErrorList first = KvCOwnedErrorList::create();
    KvCOwnedErrorList second = KvCOwnedErrorList::create();
};

} // namespace

static_assert(std::is_nothrow_move_constructible_v<KvCOwnedErrorList>);
static_assert(std::is_nothrow_move_assignable_v<KvCOwnedErrorList>);

TEST_F(OwnedErrorListTest, OwnsNothingAtFirst) {
    const KvCOwnedErrorList errors;
    EXPECT_EQ(errors.get(), nullptr); // NOLINT(bugprone-use-after-move): what is left of it is the test
    EXPECT_EQ(listsHeld(), 0U);
}

TEST_F(OwnedErrorListTest, CreatesAnEmptyListAndGivesItBackAtTheEnd) {
    {
        const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
        ASSERT_NE(errors.get(), nullptr);
        EXPECT_EQ(errors->getErrorCount(), 0U);
        EXPECT_EQ(&*errors, errors.get());
        EXPECT_EQ(listsHeld(), 1U);
    }
    EXPECT_EQ(listsHeld(), 0U);
}

TEST_F(OwnedErrorListTest, ACopyOwnsNothing) {
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    const KvCOwnedErrorList copy(errors); // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy.get(), nullptr);
    EXPECT_NE(errors.get(), nullptr);
    EXPECT_EQ(listsHeld(), 1U);
}

TEST_F(OwnedErrorListTest, ACopyThatCreatesAListOwnsItsOwn) {
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvCOwnedErrorList copy(errors);
    copy = KvCOwnedErrorList::create();
    EXPECT_NE(copy.get(), errors.get());
    EXPECT_EQ(listsHeld(), 2U);
}

TEST_F(OwnedErrorListTest, WhatIsAssignedACopyGivesItsListBack) {
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvCOwnedErrorList assigned = KvCOwnedErrorList::create();
    assigned = errors;
    EXPECT_EQ(assigned.get(), nullptr);
    EXPECT_NE(errors.get(), nullptr);
    EXPECT_EQ(listsHeld(), 1U);
}

TEST_F(OwnedErrorListTest, AssigningItToItselfChangesNothing) {
    KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvCErrorList* const list = errors.get();
    KvCOwnedErrorList& same = errors;
    errors = same;
    EXPECT_EQ(errors.get(), list);
    errors = std::move(same);
    EXPECT_EQ(errors.get(), list);
    EXPECT_EQ(listsHeld(), 1U);
}

TEST_F(OwnedErrorListTest, MovingHandsTheListOver) {
    KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvCErrorList* const list = errors.get();
    const KvCOwnedErrorList moved(std::move(errors));
    EXPECT_EQ(moved.get(), list);
    EXPECT_EQ(errors.get(), nullptr); // NOLINT(bugprone-use-after-move): what is left of it is the test
    EXPECT_EQ(listsHeld(), 1U);
}

TEST_F(OwnedErrorListTest, WhatIsMovedToGivesItsFormerListBackAtOnce) {
    KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvCOwnedErrorList assigned = KvCOwnedErrorList::create();
    KvCErrorList* const list = errors.get();
    assigned = std::move(errors);
    EXPECT_EQ(assigned.get(), list);
    EXPECT_EQ(errors.get(), nullptr); // NOLINT(bugprone-use-after-move): what is left of it is the test
    EXPECT_EQ(listsHeld(), 1U);
}

TEST_F(OwnedErrorListTest, MovingFromWhatOwnsNothingGivesTheListBack) {
    KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    errors = KvCOwnedErrorList();
    EXPECT_EQ(errors.get(), nullptr); // NOLINT(bugprone-use-after-move): what is left of it is the test
    EXPECT_EQ(listsHeld(), 0U);
}

TEST_F(OwnedErrorListTest, RecordsInAGrowingListKeepTheirLists) {
    std::vector<TwoLists> records(3);
    const KvCErrorList* const first = records.front().first.get();
    records.reserve(100);
    records.emplace(records.begin());
    EXPECT_EQ(records[1].first.get(), first);
    EXPECT_EQ(listsHeld(), 8U);
    std::rotate(records.begin(), records.begin() + 1, records.end());
    EXPECT_EQ(records[0].first.get(), first);
    records.erase(records.begin() + 1, records.end());
    EXPECT_EQ(listsHeld(), 2U);
}

TEST_F(OwnedErrorListTest, ACopiedRecordLeavesTheListsToTheOriginal) {
    const TwoLists original;
    {
        const TwoLists copy(original);
        EXPECT_EQ(copy.second.get(), nullptr);
        EXPECT_EQ(listsHeld(), 2U);
    }
    EXPECT_EQ(original.first->getErrorCount(), 0U);
    EXPECT_EQ(listsHeld(), 2U);
}
