#include "SessionResult.h"

#include "PathTexts.h"
#include "SessionMessages.h"
#include "Texts.h"
#include "TimeText.h"
#include "ToolOutput.h"
#include "UserFiles.h"
#include "VerificationText.h"

#include <chrono>

using namespace KvNReflasher;

void SessionResult::openReport(const ReportOption& option) {
    if (!option.file) {
        return;
    }
    reportPath_ = *option.file;
    if (const int error = reportFile_.open(filePath(reportPath_)); error != 0) {
        verdict.add({KvEFailure::output, fileFailure("cannot write", reportPath_, error)});
    }
}

void SessionResult::showVerification() {
    writeText(session_.request().textStream, verificationText(*session_->plan(), *verification));
    if (verdict.isSuccess()) {
        verdict = verdictOf(*verification);
    }
}

ExitCode SessionResult::conclude(const JsonOption& json) {
    end_ = timeText(std::chrono::system_clock::now());
    verdict.add(verdictOfStandardOutput());
    if (json.isWanted) {
        writeText(stdout, documentOf(report()));
        verdict.add(verdictOfStandardOutput());
    }
    verdict.add(session_.closeJournal(verdict));
    verdict.add(session_.endEvents(verdict));
    writeReport();
    return ::conclude(verdict);
}

void SessionResult::writeReport() {
    if (!reportFile_.isOpen()) {
        return;
    }
    if (const int error = reportFile_.commit(reportFor(report(), reportPath_)); error != 0) {
        verdict.add({KvEFailure::output, fileFailure("cannot write", reportPath_, error)});
    }
}

ReportData SessionResult::report() const {
    const KvTOptions& options = session_.request().options;
    ReportData report;
    report.facts = {.command = command_,
                    .toolVersion = KvISession::version(),
                    .begin = timeText(session_.begin()),
                    .end = end_,
                    .target = utf8Of(options.target),
                    .archiveFolder = utf8Of(options.archiveFolder),
                    .exitCode = exitCodeOf(verdict.failure),
                    .messages = {}};
    report.verdict = verdict;
    report.plan = session_->plan();
    report.outcome = session_->outcome();
    report.verification = verification ? &*verification : nullptr;
    report.entries = session_->archiveEntries();
    report.facts.messages = session_.remarks() + reportedMessages(session_.messages(), report);
    return report;
}

void showPlan(SessionResult& result, ToolSession& session, const ReportOption& option) {
    result.openReport(option);
    if (result.verdict.isSuccess()) {
        result.verdict = session.prepareAndRun();
    }
    if (session->plan() != nullptr) {
        result.verdict.add(verdictOf(*session->plan()));
    }
}
