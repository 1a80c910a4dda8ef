#include "SessionResult.h"

#include "ExitCodes.h"
#include "PathTexts.h"
#include "SessionMessages.h"
#include "Texts.h"
#include "TimeText.h"
#include "ToolOutput.h"
#include "VerificationText.h"

#include <chrono>

using namespace KvNReflasher;

void SessionResult::showVerification() {
    writeText(session.request().textStream, verificationText(*session->plan(), *verification));
    if (verdict.isSuccess()) {
        verdict = verdictOf(*verification);
    }
}

void SessionResult::writeReport(const ReportOption* option) {
    if (option != nullptr && option->file && !writeReportFile(report(), *option->file)) {
        verdict.add({KvEFailure::output, "cannot write " + quotedPath(*option->file)});
    }
}

ExitCode SessionResult::conclude(const ReportOption* reportOption, const JsonOption& json) {
    end_ = timeText(std::chrono::system_clock::now());
    verdict.add(verdictOfStandardOutput());
    writeReport(reportOption);
    if (json.isWanted) {
        writeText(stdout, documentOf(report()));
        if (const KvTVerdict loss = verdictOfStandardOutput(); !loss.isSuccess()) {
            verdict.add(loss);
            writeReport(reportOption); // what it says of success does not hold any more
        }
    }
    if (const KvTVerdict loss = session.endEvents(verdict); !loss.isSuccess()) {
        verdict.add(loss);
        writeReport(reportOption);
    }
    return ::conclude(verdict);
}

ReportData SessionResult::report() const {
    const KvTOptions& options = session.request().options;
    ReportData report;
    report.facts = {.command = command,
                    .toolVersion = KvISession::version(),
                    .begin = timeText(session.begin()),
                    .end = end_,
                    .target = utf8Of(options.target),
                    .archiveFolder = utf8Of(options.archiveFolder),
                    .exitCode = exitCodeOf(verdict.failure),
                    .messages = {}};
    report.verdict = verdict;
    report.plan = session->plan();
    report.outcome = session->outcome();
    report.verification = verification ? &*verification : nullptr;
    report.entries = session->archiveEntries();
    report.facts.messages = session.remarks() + reportedMessages(session.messages(), report);
    return report;
}

SessionResult resultOfPlan(const char* command, ToolSession& session, const ReportOption& option) {
    SessionResult result{command, session, option.verdictOnFile(), {}};
    if (result.verdict.isSuccess()) {
        result.verdict = session.prepareAndRun();
    }
    if (session->plan() != nullptr) {
        result.verdict.add(verdictOf(*session->plan()));
    }
    return result;
}
