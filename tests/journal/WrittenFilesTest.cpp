#include "WrittenFiles.h"

#include "JournalFolder.h"
#include "JournalLines.h"
#include "KvDocuments.h"
#include "RunRecords.h"
#include "SavedPlans.h"
#include "ScratchFolder.h"

#include <gmock/gmock.h>

#include <chrono>

using namespace KvNReflasher;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

constexpr const char* moment = "2026-11-22T10:15:00.000Z";

/// Runs that write one file to a target.
class WrittenFilesTest : public testing::Test {
protected:
    WrittenFilesTest() {
        plan_ = sampleSavedPlan();
        plan_.plan.elements.resize(1);
        KvTPlannedElement& element = plan_.plan.elements.front();
        element.index = 0;
        element.address.clear();
        element.targetPath = "cfg/network.ini";
        element.decision.update = true;
        element.phase = 0;
    }

    /// A run that has begun to write the file; `end`: it has ended that, and holds then what `digest` says.
    void addRun(bool end, bool succeeded, const std::string& digest) {
        KvCLineChain chain;
        std::string text;
        chain.addTo(text, beginRecord(moment, options_, plan_));
        chain.addTo(text, planRecord(moment, plan_.plan));
        chain.addTo(text, intentRecord(moment, 0, plan_.plan));
        if (end) {
            const std::string event =
                elementEndEvent(moment, plan_.plan.elements.front(), succeeded, KvEResult::updated, "");
            chain.addTo(text, withWrittenFile(event, "cfg/network.ini", digest));
        }
        number_ += std::chrono::seconds(1);
        folder_.write(newRunId(std::chrono::system_clock::now() + number_) + ".jsonl", text + more_);
    }
    [[nodiscard]] std::map<std::string, std::string> written() const {
        return filesWrittenTo(folder_.path().wstring(),
                              {plan_.plan.targetAddress, plan_.plan.nodeSerialNumbers, options_.places});
    }

    ScratchFolder folder_;
    KvTSavedPlan plan_;
    KvTJournalOptions options_;
    std::string more_;
    std::chrono::seconds number_{0};
};

TEST_F(WrittenFilesTest, TheLastContentCounts) {
    EXPECT_THAT(written(), IsEmpty());
    addRun(true, true, "aa");
    EXPECT_THAT(written(), ElementsAre(Pair("cfg/network.ini", "aa")));
    addRun(true, true, "bb");
    EXPECT_THAT(written(), ElementsAre(Pair("cfg/network.ini", "bb")));
}

TEST_F(WrittenFilesTest, AWriteThatWasNotEndedLeavesNothingKnown) {
    addRun(true, true, "aa");
    addRun(false, false, "");
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(WrittenFilesTest, AWriteThatFailedLeavesNothingKnown) {
    addRun(true, true, "aa");
    addRun(true, false, "");
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(WrittenFilesTest, ARunThatWasChangedLeavesNothingKnown) {
    addRun(true, true, "aa");
    more_ = "{}\n";
    addRun(true, true, "bb");
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(WrittenFilesTest, OtherTargetsDoNotCount) {
    addRun(true, true, "aa");
    options_.places = {"/racks/other"};
    EXPECT_THAT(written(), IsEmpty());
    options_.places.clear();
    plan_.plan.nodeSerialNumbers = {1};
    EXPECT_THAT(written(), IsEmpty());
}

} // namespace
