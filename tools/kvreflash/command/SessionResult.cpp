#include "SessionResult.h"

#include "ExitCodes.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UserFiles.h"
#include "VerificationText.h"

#include <chrono>

using namespace KvNReflasher;

void SessionResult::showVerification() {
    writeText(session.request().textStream, verificationText(*session->plan(), *verification));
    if (verdict.isSuccess()) {
        verdict = verdictOf(*verification);
    }
}

void SessionResult::openReport(const ReportOption& option) {
    if (!option.file) {
        return;
    }
    if (const int error = reportFile.open(filePath(*option.file)); error != 0) {
        verdict.add({KvEFailure::output, fileFailure("cannot write", *option.file, error)});
    }
}

void SessionResult::writeReport(const ReportOption& option) {
    if (!option.file || !reportFile.isOpen()) {
        return;
    }
    if (const int error = reportFile.commit(reportFor(report(), *option.file)); error != 0) {
        verdict.add({KvEFailure::output, fileFailure("cannot write", *option.file, error)});
    }
}

ReportData SessionResult::report() const {
    const KvTOptions& options = session.request().options;
    ReportData report;
    report.facts = {.command = command,
                    .toolVersion = KvISession::version(),
                    .begin = timeText(session.begin()),
                    .end = timeText(std::chrono::system_clock::now()),
                    .target = utf8Of(options.target),
                    .archiveFolder = utf8Of(options.archiveFolder),
                    .exitCode = exitCodeOf(verdict.failure),
                    .messages = session.remarks() + withoutOverwritten(session.messages())};
    report.verdict = verdict;
    report.plan = session->plan();
    report.outcome = session->outcome();
    report.verification = verification ? &*verification : nullptr;
    report.entries = session->archiveEntries();
    return report;
}

SessionResult resultOfPlan(const char* command, ToolSession& session, const ReportOption& option) {
    SessionResult result{command, session, {}, {}};
    result.openReport(option);
    if (result.verdict.isSuccess()) {
        result.verdict = session.prepareAndRun();
    }
    if (session->plan() != nullptr) {
        result.verdict.add(verdictOf(*session->plan()));
    }
    return result;
}
