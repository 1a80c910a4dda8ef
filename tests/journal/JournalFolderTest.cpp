#include "JournalFolder.h"

#include "KvCRunJournal.h"
#include "RunRecords.h"
#include "SavedPlans.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

using namespace KvNReflasher;
using std::chrono::days;
using std::chrono::system_clock;

namespace {

class JournalFolderTest : public testing::Test {
protected:
    [[nodiscard]] std::wstring folder() const { return folder_.path().wstring(); }

    /// A run of this age; `end` is its last record, if it has one.
    std::string addRun(days age, const std::string& end, const std::string& resumes = {}) {
        KvTJournalOptions options;
        options.folder = folder();
        options.resumes = resumes;
        std::string id = newRunId(system_clock::now() - age);
        KvCLineChain chain;
        std::string text;
        chain.addTo(text, beginRecord("2026-11-22T10:15:00.000Z", options, sampleSavedPlan()));
        if (!end.empty()) {
            chain.addTo(text, end);
        }
        folder_.write(id + ".jsonl", text);
        return id;
    }
    [[nodiscard]] bool has(const std::string& id) const { return folder_.has(id + ".jsonl"); }

    const std::string success_ = "{\"event\":\"runEnd\",\"failure\":null,\"exitCode\":0}\n";
    const std::string stopped_ = "{\"event\":\"runEnd\",\"failure\":\"stopped\",\"exitCode\":7}\n";
    ScratchFolder folder_;
};

TEST_F(JournalFolderTest, RunsThatAreTooOldGoUnlessSomethingIsLeftOfThem) {
    const std::string old = addRun(days(401), success_);
    const std::string broken = addRun(days(401), {});
    const std::string stopped = addRun(days(402), stopped_);
    const std::string resumed = addRun(days(403), stopped_);
    const std::string young = addRun(days(399), success_, resumed);
    folder_.write("other.txt", "");
    removeOldRuns(folder(), system_clock::now());
    EXPECT_FALSE(has(old));
    EXPECT_TRUE(has(broken));
    EXPECT_TRUE(has(stopped));
    EXPECT_FALSE(has(resumed));
    EXPECT_TRUE(has(young));
    EXPECT_TRUE(folder_.has("other.txt"));
}

TEST_F(JournalFolderTest, RunsBeyondTheNewestThousandGo) {
    const std::string oldest = addRun(days(3), success_);
    const std::string broken = addRun(days(3), {});
    for (int number = 0; number < 1000; ++number) {
        addRun(days(1), success_);
    }
    removeOldRuns(folder(), system_clock::now());
    EXPECT_FALSE(has(oldest));
    EXPECT_TRUE(has(broken));
    EXPECT_EQ(runIdsIn(folder()).size(), 1001U);
}

TEST_F(JournalFolderTest, IdsSortByTimeAndLeadToNoOtherFolder) {
    const auto now = system_clock::now();
    EXPECT_LT(newRunId(now - std::chrono::milliseconds(1)), newRunId(now));
    EXPECT_TRUE(isRunId(newRunId(now)));
    EXPECT_NE(newRunId(now), newRunId(now));
    for (const char* id : {"", "../secret", "20261122T101500123Z-0a1b2c3/", "20261122T101500123Z-0a1b2c3dd"}) {
        EXPECT_FALSE(isRunId(id)) << id;
    }
}

TEST_F(JournalFolderTest, ARunThatHasWrittenNothingLeavesNoFile) {
    KvTJournalOptions options;
    options.folder = folder();
    std::string reason;
    { const auto journal = KvCRunJournal::create(options, reason); }
    EXPECT_TRUE(runIdsIn(folder()).empty()) << reason;
}

TEST_F(JournalFolderTest, WhatOneRunHoldsNoOtherCanHold) {
    KvTJournalOptions options;
    options.folder = folder();
    std::string reason;
    const auto first = KvCRunJournal::create(options, reason);
    auto second = KvCRunJournal::create(options, reason);
    ASSERT_TRUE(first && second) << reason;
    const std::string plan = newRunId(system_clock::now());
    EXPECT_TRUE(first->hold(plan, reason));
    EXPECT_FALSE(second->hold(plan, reason));
    EXPECT_EQ(reason, "");
    EXPECT_TRUE(second->hold(newRunId(system_clock::now()), reason));
}

TEST_F(JournalFolderTest, WhatIsNotAnIdIsNotHeld) {
    KvTJournalOptions options;
    options.folder = folder();
    std::string reason;
    const auto journal = KvCRunJournal::create(options, reason);
    ASSERT_TRUE(journal) << reason;
    EXPECT_FALSE(journal->hold("../../elsewhere", reason));
    EXPECT_EQ(reason, "'../../elsewhere' is not an id");
}

TEST_F(JournalFolderTest, FoldersAreMadeAndAFileInTheirPlaceIsNamed) {
    KvTJournalOptions options;
    options.folder = folder() + L"/a/b";
    std::string reason;
    EXPECT_TRUE(KvCRunJournal::create(options, reason)) << reason;
    folder_.write("file", "");
    options.folder = folder() + L"/file";
    EXPECT_FALSE(KvCRunJournal::create(options, reason));
    EXPECT_NE(reason, "");
    options.folder = folder() + L"/file/below";
    EXPECT_FALSE(KvCRunJournal::create(options, reason));
}

} // namespace
