#include "ExpectedDocuments.h"
#include "SampleValues.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

// The documents as a whole.

namespace {

using namespace KvNReflasher;

const KvTVerdict success;
const KvTVerdict noTarget = {.failure = KvEFailure::target, .message = "The target system is inaccessible!"};
const KvTVerdict noSupport = {.failure = KvEFailure::unsupported, .message = "No entry for \"I/O router\"."};

KvTArchiveContent refusedContent() {
    KvTArchiveContent content = sampleContent();
    content.verdict = {.failure = KvEFailure::archive, .message = "Failed to read firmware archive."};
    return content;
}

KvTMatrixTarget plannedTarget() {
    return {.folder = "racks/one", .address = "127.0.0.1", .verdict = success, .plan = samplePlan()};
}

KvTMatrixTarget failedTarget() {
    return {.folder = "racks/two", .address = "", .verdict = noTarget, .plan = std::nullopt};
}

/// In the modes without an archive.
KvTPlan planWithoutArchive() {
    KvTPlan plan = samplePlan();
    plan.archive.reset();
    plan.release.reset();
    plan.supported = true;
    plan.unsupportedElements.clear();
    plan.phaseCount = 0;
    for (KvTPlannedElement& element : plan.elements) {
        element.entry.reset();
        element.decision = {};
        element.phase.reset();
    }
    return plan;
}

std::string elements() {
    return elementsDocument(std::make_unique<KvTPlan>(planWithoutArchive()).get(), success);
}

std::string explain() {
    return explainDocument(std::make_unique<KvTPlan>(samplePlan()).get(), sampleExplanations(), sampleHiddenElements(),
                           success);
}

/// Nothing was updated.
KvTOutcome untouched(KvEStage stage) {
    KvTOutcome outcome;
    outcome.stage = stage;
    outcome.elements.resize(samplePlan().elements.size());
    return outcome;
}

std::string plan() {
    const KvTPlan plan = samplePlan();
    KvTOutcome outcome = untouched(KvEStage::ended);
    outcome.elements[0].result = KvEResult::notStarted;
    outcome.elements[2].result = KvEResult::notStarted;
    const std::vector<KvTArchiveEntry> entries = sampleContent().entries;
    return reportDocument({.verdict = noSupport, .plan = &plan, .outcome = &outcome, .entries = &entries},
                          sampleFacts("plan", 2));
}

std::string planWithoutTarget() {
    const KvTOutcome outcome;
    const std::vector<KvTArchiveEntry> entries = sampleContent().entries;
    return reportDocument({.verdict = noTarget, .outcome = &outcome, .entries = &entries}, sampleFacts("plan", 4));
}

std::string verified(const std::string& command, const KvTOutcome& outcome, const KvTVerdict& verdict, int exitCode) {
    const KvTPlan plan = samplePlan();
    const KvTVerification verification = sampleVerification();
    const std::vector<KvTArchiveEntry> entries = sampleContent().entries;
    return reportDocument(
        {.verdict = verdict, .plan = &plan, .outcome = &outcome, .verification = &verification, .entries = &entries},
        sampleFacts(command, exitCode));
}

std::string update() {
    return verified("update", sampleOutcome(), {.failure = KvEFailure::elements, .message = "An element failed."}, 1);
}

std::string updateWithoutPlan() {
    return reportDocument({.verdict = {.failure = KvEFailure::output, .message = "cannot write 'r.html'"}},
                          sampleFacts("update", 1));
}

std::string updateThatBrokeOff() {
    KvTReportFacts facts = sampleFacts("update", 1);
    facts.end.clear();
    return reportDocument({.verdict = {.failure = KvEFailure::errors, .message = "the run broke off"}}, facts);
}

std::string verify() {
    return verified("verify", untouched(KvEStage::ended),
                    {.failure = KvEFailure::verification, .message = "1 different"}, 6);
}

std::string reboot() {
    const KvTPlan plan = planWithoutArchive();
    const KvTOutcome outcome = untouched(KvEStage::rebooted);
    KvTReportFacts facts = sampleFacts("reboot", 0);
    facts.archiveFolder.clear();
    return reportDocument({.verdict = success, .plan = &plan, .outcome = &outcome}, facts);
}

std::string compareForATarget() {
    const KvTPlan plan = samplePlan();
    return compareDocument(sampleComparison(), &plan, &plan, success);
}

std::string compareRefused() {
    KvTComparison comparison = sampleComparison();
    comparison.verdict = refusedContent().verdict;
    return compareDocument(comparison, nullptr, nullptr, comparison.verdict);
}

/// One value from each place.
KvTSettings sampleSettings() {
    return {.file = "/etc/kvreflash/kvreflash.ini",
            .fileState = KvESettingsFile::read,
            .requirePlan = {true, KvESettingSource::settingsFile},
            .trust = {"pr\u00FCfer/trust", KvESettingSource::commandLine},
            .journal = {"/var/lib/kvreflash", KvESettingSource::builtIn}};
}

KvTSettings settingsWithoutFolders() {
    KvTSettings settings = sampleSettings();
    settings.fileState = KvESettingsFile::absent;
    settings.requirePlan = {};
    settings.trust = {};
    settings.journal = {std::nullopt, KvESettingSource::commandLine};
    return settings;
}

/// One of each.
std::string events() {
    const std::string time = "2026-03-01T12:34:56.789Z";
    const KvTPlan plan = samplePlan();
    const KvTPlannedElement& element = plan.elements.front();
    const std::string reason = sampleOutcome().elements.front().reason;
    const KvTVerdict verdict = {.failure = KvEFailure::elements, .message = "An element failed."};
    return runBeginEvent(time, sampleFacts("update", 1)) + planEvent(time, plan) + lockedEvent(time) +
           phaseEvent(time, 0) + progressEvent(time, 100) + transferEvent(time, "netz-\u00FC.ini", 0, true) +
           elementStartEvent(time, element) + elementErrorEvent(time, element, reason) +
           elementEndEvent(time, element, false, KvEResult::failed, reason) + unlockedEvent(time, true) +
           verifyEvent(time, sampleVerification(), {.failure = KvEFailure::verification, .message = "1 different"}) +
           runEndEvent(time, verdict, 1);
}

const std::vector<DocumentRow>& documentRows() {
    static const std::vector<DocumentRow> all = {
        {"content.json", [] { return contentDocument(sampleContent(), success); }},
        {"content.refused.json", [] { return contentDocument(refusedContent(), refusedContent().verdict); }},
        {"check.json",
         [] { return checkDocument(sampleFindings(), "archive/archive.json", refusedContent().verdict); }},
        {"check.nothing.json", [] { return checkDocument({}, "archive/archive.json", success); }},
        {"elements.json", elements},
        {"elements.no-plan.json", [] { return elementsDocument(nullptr, noTarget); }},
        {"explain.json", explain},
        {"explain.no-plan.json", [] { return explainDocument(nullptr, {}, {}, noTarget); }},
        {"matrix.json",
         [] {
             return matrixDocument(sampleContent(), {plannedTarget(), failedTarget()}, noTarget);
         }},
        {"matrix.refused.json", [] { return matrixDocument(refusedContent(), {}, refusedContent().verdict); }},
        {"compare.json", [] { return compareDocument(sampleComparison(), nullptr, nullptr, success); }},
        {"compare.target.json", compareForATarget},
        {"compare.refused.json", compareRefused},
        {"settings.json", [] { return settingsDocument(sampleSettings(), success); }},
        {"settings.no-folders.json", [] { return settingsDocument(settingsWithoutFolders(), success); }},
        {"plan.json", plan},
        {"plan.no-target.json", planWithoutTarget},
        {"update.json", update},
        {"update.no-plan.json", updateWithoutPlan},
        {"update.broken-off.json", updateThatBrokeOff},
        {"verify.json", verify},
        {"reboot.json", reboot},
        {"events.jsonl", events}};
    return all;
}

TEST(WholeDocuments, AreThoseOfTheExpectedFiles) {
    expectDocuments(KV_EXPECTED_DOCUMENTS, documentRows());
}

} // namespace
