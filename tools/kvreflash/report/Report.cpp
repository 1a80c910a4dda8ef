#include "Report.h"

#include "ExitCodes.h"
#include "ReasonTexts.h"

#include <algorithm>
#include <array>

using namespace KvNReflasher;

std::string ReportData::wordFor(const KvTPlannedElement& element) const {
    if (!element.decision.update) {
        return shortTextOf(element.decision);
    }
    std::string word = "planned";
    if (isUpdate() && element.index < outcome.elements.size()) {
        word = codeOf(outcome.elements[element.index].result);
        std::replace(word.begin(), word.end(), '-', ' ');
    }
    return word.append(element.isDowngrade ? " (downgrade)" : "");
}

const char* ReportData::styleOf(const KvTPlannedElement& element) const {
    if (!element.decision.update) {
        return "";
    }
    if (!isUpdate() || element.index >= outcome.elements.size()) {
        return "planned";
    }
    switch (outcome.elements[element.index].result) {
    case KvEResult::updated:
        return "updated";
    case KvEResult::failed:
    case KvEResult::cancelled:
    case KvEResult::fileMissing:
        return "failed";
    case KvEResult::notPlanned:
    case KvEResult::notStarted:
    case KvEResult::inProgress:
        return "uncertain";
    }
    return "";
}

const KvTVerifiedElement* ReportData::verificationOf(const KvTPlannedElement& element) const {
    if (verification == nullptr) {
        return nullptr;
    }
    const auto& verified = verification->elements;
    const auto found =
        std::lower_bound(verified.begin(), verified.end(), element.index,
                         [](const KvTVerifiedElement& one, std::uint32_t index) { return one.index < index; });
    return found != verified.end() && found->index == element.index ? &*found : nullptr;
}

std::string documentOf(const ReportData& report) {
    const KvTSessionRecord session{.verdict = report.verdict,
                                   .plan = report.plan,
                                   .outcome = &report.outcome,
                                   .verification = report.verification,
                                   .entries = &report.entries};
    return reportDocument(session, report.facts);
}

std::string reportFor(const ReportData& report, const std::string& path) {
    return path.ends_with(".json") ? documentOf(report) : reportPage(report);
}

ReportData reportOf(const KvTSavedPlan& plan) {
    ReportData report;
    report.facts = {.command = "plan",
                    .toolVersion = plan.toolVersion,
                    .begin = plan.time,
                    .end = plan.time,
                    .target = plan.target,
                    .archiveFolder = plan.archiveFolder,
                    .exitCode = 0,
                    .messages = {}};
    report.plan = &plan.plan;
    return report;
}

ReportData reportOf(const KvTRunRecord& run) {
    ReportData report = reportOf(run.plan);
    report.facts.command = run.run.command;
    report.facts.toolVersion = run.run.toolVersion;
    report.facts.begin = run.run.begin;
    report.facts.end = run.run.end;
    report.facts.exitCode = run.run.end.empty() ? exitCodeOf(run.run.verdict.failure) : run.run.exitCode;
    report.verdict = run.run.verdict;
    report.outcome = run.outcome;
    report.verification = run.verification ? &*run.verification : nullptr;
    return report;
}
