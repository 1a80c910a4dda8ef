#include "ExpectedDocuments.h"
#include "JournalLines.h"
#include "KvDocuments.h"
#include "KvRunDocuments.h"
#include "RunRecords.h"
#include "SampleValues.h"
#include "SavedPlans.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

// The documents of runs and the lines of a journal as a whole.

namespace {

using namespace KvNReflasher;

constexpr const char* firstRun = "20261122T101500123Z-0a1b2c3d";
constexpr const char* secondRun = "20261122T113000456Z-4e5f6a7b";
constexpr const char* thirdRun = "20261122T113000457Z-8c9d0e1f";
constexpr const char* time = "2026-11-22T11:30:00.456Z";

/// It broke off, and another one has gone on with it.
KvTRun brokenRun() {
    KvTRun run;
    run.id = firstRun;
    run.state = KvERunState::brokenOff;
    run.command = "update";
    run.toolVersion = "1.1";
    run.begin = "2026-11-22T10:15:00.123Z";
    run.user = "pr\u00FCfer";
    run.computer = "bench-3";
    run.target = "rack-7";
    run.targetAddress = "127.0.0.1";
    run.nodeSerialNumbers = {2815, 2816};
    run.places = {"/racks/seven"};
    run.archiveFolder = "/archives/release";
    run.archive = sampleContent().identity;
    run.verdict = {.failure = KvEFailure::errors, .message = "the run broke off"};
    run.resumedBy = secondRun;
    run.fault = "line 12 does not follow the one before: the file was changed";
    return run;
}

/// It has gone on with the other one, and an element has failed.
KvTRun endedRun() {
    KvTRun run = brokenRun();
    run.id = secondRun;
    run.state = KvERunState::complete;
    run.begin = time;
    run.end = "2026-11-22T11:31:00.000Z";
    run.verdict = {.failure = KvEFailure::elements, .message = "An element failed."};
    run.exitCode = 1;
    run.planId = sampleSavedPlan().id;
    run.resumes = firstRun;
    run.resumedBy.clear();
    run.fault.clear();
    return run;
}

KvTRun stoppedReboot() {
    KvTRun run = endedRun();
    run.id = thirdRun;
    run.state = KvERunState::stopped;
    run.command = "reboot";
    run.archiveFolder.clear();
    run.archive.reset();
    run.verdict = {.failure = KvEFailure::stopped, .message = "ended on request"};
    run.exitCode = 7;
    run.planId.clear();
    run.resumes.clear();
    return run;
}

KvTRunRecord sampleRun() {
    KvTRunRecord record;
    record.run = endedRun();
    record.plan = sampleSavedPlan();
    record.progress = {KvEElementProgress::failed, KvEElementProgress::notPlanned, KvEElementProgress::done,
                       KvEElementProgress::untouched};
    record.outcome = sampleOutcome();
    record.verification = sampleVerification();
    return record;
}

std::string history() {
    return historyDocument({.runs = {brokenRun(), endedRun(), stoppedReboot()}, .faults = {"the run x cannot be read"}},
                           {});
}

std::string run() {
    const KvTRunRecord record = sampleRun();
    return runDocument(&record, {});
}

std::string runNotFound() {
    return runDocument(nullptr, {.failure = KvEFailure::selection, .message = "there is no run 'x'"});
}

/// Who runs the test, and where, is not part of what is expected.
std::string ofAnn(const std::string& record) {
    static const std::regex account(R"("user":"[^"]*","computer":"[^"]*")");
    return std::regex_replace(record, account, R"("user":"ann","computer":"bench-3")");
}

KvTJournalOptions journalOptions() {
    KvTJournalOptions options;
    options.places = {"/racks/seven"};
    options.resumes = firstRun;
    return options;
}

/// One of each; the end of a file that the inventory lists, of one that was written, and of one that was not.
std::vector<std::string> recordsOfAllKinds() {
    const KvTSavedPlan plan = sampleSavedPlan();
    const KvTPlannedElement& element = plan.plan.elements.at(0);
    const KvTPlannedElement& file = plan.plan.elements.at(2);
    const std::string digest(64, 'd');
    const std::string written = elementEndEvent(time, file, true, KvEResult::updated, "");
    const std::string failed = elementEndEvent(time, file, false, KvEResult::failed, "no space");
    const KvTVerification verification = sampleVerification();
    return {ofAnn(beginRecord(time, journalOptions(), plan)),
            planRecord(time, plan.plan),
            lockedEvent(time),
            intentRecord(time, 0, plan.plan),
            phaseEvent(time, 0),
            transferEvent(time, "netz-\u00FC.ini", 0, true),
            elementStartEvent(time, element),
            elementErrorEvent(time, element, "it broke"),
            elementEndEvent(time, element, false, KvEResult::failed, "it broke"),
            withWrittenFile(written, file.targetPath, digest),
            withWrittenFile(failed, file.targetPath, ""),
            unlockedEvent(time, true),
            withVerifiedElements(verifyEvent(time, verification, {}), verification),
            rebootRecord(time, true),
            runEndEvent(time, {.failure = KvEFailure::elements, .message = "An element failed."}, 1)};
}

std::string journal() {
    KvCLineChain chain;
    std::string text;
    for (const std::string& record : recordsOfAllKinds()) {
        chain.addTo(text, record);
    }
    return text;
}

TEST(RunDocuments, AreThoseOfTheExpectedFiles) {
    expectDocuments(KV_EXPECTED_DOCUMENTS, {{"history.json", history},
                                            {"run.json", run},
                                            {"run.not-found.json", runNotFound},
                                            {"journal.jsonl", journal}});
}

} // namespace
