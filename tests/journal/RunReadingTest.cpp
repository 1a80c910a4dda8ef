#include "JournalFolder.h"
#include "KvCRunJournal.h"
#include "KvDocuments.h"
#include "RunRecords.h"
#include "SampleValues.h"
#include "SavedPlans.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace KvNReflasher;
using enum KvEElementProgress;

namespace {

constexpr const char* time0 = "2026-11-22T10:15:00.000Z";
constexpr std::uint32_t afterLastPhase = 0xFFFFFFFF;

/// A run of three elements, two in phase 0 and one in phase 1, of which each has another end.
class RunReadingTest : public testing::Test {
protected:
    RunReadingTest() {
        plan_ = sampleSavedPlan();
        plan_.plan.elements.resize(4, plan_.plan.elements.front());
        for (std::uint32_t index = 0; index < 4; ++index) {
            KvTPlannedElement& element = plan_.plan.elements[index];
            element.index = index;
            element.decision.update = index != 3;
            element.phase = index == 3 ? std::nullopt : std::optional<std::uint32_t>(index == 2 ? 1 : 0);
            element.address = "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[" + std::to_string(index + 1) + "]";
        }
        options_.folder = folder_.path().wstring();
    }

    std::vector<std::string> records() {
        const auto& elements = plan_.plan.elements;
        return {beginRecord(time0, options_, plan_),
                planRecord(time0, plan_.plan),
                lockedEvent(time0),
                intentRecord(time0, 0, plan_.plan),
                phaseEvent(time0, 0),
                transferEvent(time0, "one.kfw", 0, true),
                elementStartEvent(time0, elements[0]),
                elementStartEvent(time0, elements[1]),
                elementEndEvent(time0, elements[0], true, KvEResult::updated, ""),
                elementErrorEvent(time0, elements[1], "it broke"),
                elementEndEvent(time0, elements[1], false, KvEResult::failed, "it broke"),
                intentRecord(time0, 1, plan_.plan),
                phaseEvent(time0, 1),
                phaseEvent(time0, afterLastPhase),
                unlockedEvent(time0, true),
                runEndEvent(time0, {KvEFailure::elements, "1 element failed"}, 1)};
    }
    /// The run as it is read after so many records.
    KvTRunRecord readAfter(std::size_t count) {
        KvCLineChain chain;
        std::string text;
        for (const std::string& record : records()) {
            if (count-- == 0) {
                break;
            }
            chain.addTo(text, record);
        }
        return readText(text);
    }
    KvTRunRecord readText(const std::string& text) {
        folder_.write(id_ + ".jsonl", text);
        std::string reason;
        std::optional<KvTRunRecord> run = readRun(folder_.path().wstring(), id_, reason);
        EXPECT_TRUE(run) << reason;
        return run.value_or(KvTRunRecord());
    }

    ScratchFolder folder_;
    KvTSavedPlan plan_;
    KvTJournalOptions options_;
    const std::string id_ = "20261122T101500123Z-0a1b2c3d";
};

using Progress = std::vector<KvEElementProgress>;

TEST_F(RunReadingTest, EachRecordSaysHowFarTheElementsCame) {
    const std::pair<std::size_t, Progress> moments[] = {
        {2, {untouched, untouched, untouched, notPlanned}},   {3, {untouched, untouched, untouched, notPlanned}},
        {4, {inProgress, inProgress, untouched, notPlanned}}, {8, {inProgress, inProgress, untouched, notPlanned}},
        {9, {done, inProgress, untouched, notPlanned}},       {10, {done, failed, untouched, notPlanned}},
        {12, {done, failed, inProgress, notPlanned}},         {14, {done, failed, untouched, notPlanned}},
        {16, {done, failed, untouched, notPlanned}}};
    for (const auto& [count, progress] : moments) {
        EXPECT_EQ(readAfter(count).progress, progress) << count;
    }
}

TEST_F(RunReadingTest, ARunWithoutItsEndBrokeOff) {
    for (std::size_t count = 2; count < records().size(); ++count) {
        const KvTRunRecord run = readAfter(count);
        EXPECT_EQ(run.run.state, KvERunState::brokenOff) << count;
        EXPECT_EQ(run.run.verdict.failure, KvEFailure::errors) << count;
        EXPECT_TRUE(run.run.isOpen()) << count;
    }
    const KvTRunRecord run = readAfter(records().size());
    EXPECT_EQ(run.run.state, KvERunState::complete);
    EXPECT_EQ(run.run.verdict.message, "1 element failed");
    EXPECT_EQ(run.run.exitCode, 1);
    EXPECT_FALSE(run.run.isOpen());
}

TEST_F(RunReadingTest, ReturnsWhatTheRunWasMadeOf) {
    options_.command = "update";
    options_.places = {"/racks/7"};
    options_.resumes = "20261121T101500123Z-0a1b2c3d";
    const KvTRun run = readAfter(records().size()).run;
    EXPECT_EQ(run.id, id_);
    EXPECT_EQ(run.command, "update");
    EXPECT_EQ(run.target, "rack-7");
    EXPECT_EQ(run.targetAddress, plan_.plan.targetAddress);
    EXPECT_EQ(run.nodeSerialNumbers, (std::vector<std::uint32_t>{2815, 2816}));
    EXPECT_EQ(run.places, options_.places);
    EXPECT_EQ(run.archiveFolder, "/archives/release");
    EXPECT_EQ(run.planId, plan_.id);
    EXPECT_EQ(run.resumes, options_.resumes);
    EXPECT_NE(run.user, "");
    EXPECT_NE(run.computer, "");
    EXPECT_EQ(run.begin, time0);
    EXPECT_EQ(run.end, time0);
}

TEST_F(RunReadingTest, AFileThatIsCutAnywhereIsReadAndNeverSaysMoreThanItHas) {
    KvCLineChain chain;
    std::string text;
    for (const std::string& record : records()) {
        chain.addTo(text, record);
    }
    const std::size_t endOfFirst = text.find(R"("event":"elementEnd")");
    for (std::size_t size = text.find('\n') + 1; size <= text.size(); ++size) {
        const KvTRunRecord run = readText(text.substr(0, size));
        EXPECT_EQ(run.run.fault, "") << size;
        EXPECT_EQ(run.run.state == KvERunState::complete, size == text.size()) << size;
        const bool isDone = !run.progress.empty() && run.progress[0] == done;
        ASSERT_EQ(isDone, size > text.find('\n', endOfFirst)) << size;
    }
}

TEST_F(RunReadingTest, AFileWithoutAWholeLineIsNotARun) {
    std::string reason;
    for (const char* text : {"", "{\"number\":0", "x\n"}) {
        folder_.write(id_ + ".jsonl", text);
        EXPECT_FALSE(readRun(folder_.path().wstring(), id_, reason)) << text;
        EXPECT_TRUE(listRuns(folder_.path().wstring()).runs.empty()) << text;
    }
    EXPECT_EQ(listRuns(folder_.path().wstring()).faults.size(), 1U);
    EXPECT_FALSE(readRun(folder_.path().wstring(), "../" + id_, reason));
    EXPECT_EQ(reason, "there is no run '../" + id_ + "' that can be read");
}

TEST_F(RunReadingTest, WhatFollowsABrokenLinkDoesNotCount) {
    KvCLineChain chain;
    std::string text;
    for (const std::string& record : records()) {
        chain.addTo(text, record);
    }
    text.replace(text.find("it broke"), 8, "it is ok");
    const KvTRunRecord run = readText(text);
    EXPECT_EQ(run.run.fault, "line 11 does not follow the one before: the file was changed");
    EXPECT_EQ(run.run.state, KvERunState::brokenOff);
    EXPECT_EQ(run.progress, (Progress{done, failed, untouched, notPlanned}));
}

TEST_F(RunReadingTest, ALastLineThatIsNotARecordIsAFault) {
    KvCLineChain chain;
    std::string text;
    chain.addTo(text, records()[0]);
    chain.addTo(text, records()[1]);
    chain.addTo(text, "{\"event\":\n");
    EXPECT_EQ(readText(text).run.fault, "line 3 is not a record");
    EXPECT_EQ(listRuns(options_.folder).runs.front().fault, "line 3 is not a record");
}

TEST_F(RunReadingTest, ARunThatIsHeldGoesOn) {
    std::string reason;
    auto journal = KvCRunJournal::create(options_, reason);
    ASSERT_TRUE(journal) << reason;
    ASSERT_TRUE(journal->write(records().front()) && journal->write(records()[1]) && journal->flush());
    const KvTRunList runs = listRuns(options_.folder);
    ASSERT_EQ(runs.runs.size(), 1U);
    EXPECT_EQ(runs.runs.front().state, KvERunState::running);
    journal.reset();
    EXPECT_EQ(listRuns(options_.folder).runs.front().state, KvERunState::brokenOff);
}

TEST_F(RunReadingTest, ARunThatAnotherHasGoneOnWithIsNotOpen) {
    const std::string earlier = "20261121T101500123Z-0a1b2c3d";
    KvCLineChain chain;
    std::string text;
    chain.addTo(text, records().front());
    folder_.write(earlier + ".jsonl", text);
    options_.resumes = earlier;
    (void)readAfter(16);
    const KvTRunList list = listRuns(folder_.path().wstring());
    ASSERT_EQ(list.runs.size(), 2U);
    EXPECT_EQ(list.runs[0].resumedBy, id_);
    EXPECT_FALSE(list.runs[0].isOpen());
    std::string reason;
    const std::optional<KvTRunRecord> alone = readRun(folder_.path().wstring(), earlier, reason);
    ASSERT_TRUE(alone) << reason;
    EXPECT_EQ(alone->run.resumedBy, id_);
}

TEST_F(RunReadingTest, ASecondPlanDoesNotCount) {
    KvCLineChain chain;
    std::string text;
    chain.addTo(text, beginRecord(time0, options_, plan_));
    chain.addTo(text, planRecord(time0, plan_.plan));
    chain.addTo(text, planRecord(time0, KvTPlan()));
    const KvTRunRecord run = readText(text);
    EXPECT_EQ(run.plan.plan.elements.size(), plan_.plan.elements.size());
    EXPECT_EQ(run.progress.size(), plan_.plan.elements.size());
    EXPECT_EQ(run.outcome.elements.size(), plan_.plan.elements.size());
}

TEST_F(RunReadingTest, AVerificationIsRead) {
    KvCLineChain chain;
    std::string text;
    chain.addTo(text, beginRecord(time0, options_, plan_));
    chain.addTo(text, planRecord(time0, plan_.plan));
    KvTVerification verification;
    verification.look.succeeded = true;
    verification.elements.resize(2);
    verification.elements[0].index = 2;
    verification.elements[1].index = 99; // not one of the plan
    verification.elements[0].result = KvEVerified::asExpected;
    verification.elements[0].found.emplace().checksumCrc32 = 77;
    chain.addTo(text, withVerifiedElements(verifyEvent(time0, verification, {}), verification));
    const KvTRunRecord run = readText(text);
    ASSERT_TRUE(run.verification);
    ASSERT_EQ(run.verification->elements.size(), 1U);
    EXPECT_EQ(run.verification->elements[0].result, KvEVerified::asExpected);
    EXPECT_TRUE(run.verification->look.succeeded);
    EXPECT_EQ(run.verification->look.elements.at(2)->checksumCrc32, 77U);
}

} // namespace
