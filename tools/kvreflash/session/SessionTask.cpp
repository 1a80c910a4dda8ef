#include "SessionTask.h"

#include "Conclusion.h"
#include "CountedNoun.h"
#include "FilePath.h"
#include "KvDocuments.h"
#include "KvNRtosAbstraction.h"
#include "Remarks.h"
#include "Report.h"
#include "ToolOutput.h"
#include "ToolSession.h"
#include "Utf8.h"
#include "VerificationText.h"
#include "WholeFile.h"

#include <chrono>

using namespace KvNReflasher;

namespace {

constexpr std::uint32_t microsecondsPerSecond = 1000000;

/// One session of the command line, from its preparation to its report.
class SessionTask {
public:
    explicit SessionTask(const KvTCommandLine& line) : line_(line), session_(line) {}

    [[nodiscard]] ExitCode perform() {
        if (opensFiles() && session_.prepare() && mayRun()) {
            runAndReboot();
        }
        addVerdictOfSession();
        verify();
        if (!session_.closeEvents()) {
            verdict_.add({KvEFailure::output, "cannot write '" + line_.eventsFile.value_or("") + "'"});
        }
        writeReport();
        writeDocument();
        return conclude(verdict_);
    }

private:
    [[nodiscard]] bool isUpdate() const { return line_.options.mode == performUpdate; }

    /// Nothing is done if it cannot be recorded.
    [[nodiscard]] bool opensFiles() {
        if (line_.reportFile && !canWriteWholeFile(filePath(*line_.reportFile))) {
            verdict_.add({KvEFailure::output, fileFailure("cannot write", *line_.reportFile)});
        } else if (!session_.openEvents()) {
            verdict_.add({KvEFailure::output, fileFailure("cannot create", *line_.eventsFile)});
        }
        return verdict_.isSuccess();
    }

    /// Whether the prepared session is to run.
    [[nodiscard]] bool mayRun() {
        if (session_->plan() == nullptr) {
            return true;
        }
        verdict_.add(disableElements(session_.get(), line_.disabledElements));
        verdict_.add(verdictOfFilters(*session_->plan(), line_.options));
        if (isUpdate()) {
            warnOfForeignPaths(session_.get());
        }
        // A command that only looks shows what there is.
        if (isUpdate() && !verdict_.isSuccess()) {
            return false;
        }
        return !line_.preflight || passesPreflight();
    }

    [[nodiscard]] bool passesPreflight() {
        const std::vector<std::string> findings = session_->preflight();
        for (const std::string& finding : findings) {
            say("preflight: " + finding);
            ownMessages_.append("preflight: ").append(finding).append("\n");
        }
        if (!findings.empty()) {
            verdict_.add({session_.verdict().failure,
                          "nothing was touched: the preflight has found " + counted(findings.size(), "fault")});
        }
        return findings.empty();
    }

    void runAndReboot() {
        hasRun_ = true;
        succeeded_ = session_.run();
        if (succeeded_ && line_.reboot && verdict_.isSuccess()) {
            succeeded_ = session_->reboot();
        }
    }

    void addVerdictOfSession() {
        verdict_.add(session_.verdict());
        if (line_.options.mode == showUpdatePlan && session_->plan() != nullptr) {
            verdict_.add(verdictOf(*session_->plan()));
        }
    }

    /// Judges what the target reports, as far as that was asked for.
    void verify() {
        if (!hasRun_) {
            return;
        }
        if (line_.verifiesOnly) {
            verification_ = verifyPlan(*session_->plan());
            writeText(line_.json ? stderr : stdout, elementsWithoutEntryText(*session_->plan()));
            sayVerification();
            return;
        }
        const bool isDown = line_.reboot && succeeded_;
        if (!isUpdate() || (!line_.verify && (!line_.reportFile || isDown))) {
            return;
        }
        const bool waits = line_.verify && isDown;
        verification_ = waits ? verifyAfterReboot() : verifyNow(isDown);
        if (line_.verify) {
            sayVerification();
        }
    }

    void sayVerification() {
        writeText(line_.json ? stderr : stdout, verificationText(*session_->plan(), *verification_));
        // Of a command that has failed the class stays.
        if (verdict_.isSuccess()) {
            verdict_ = verdictOf(*verification_);
        }
    }

    [[nodiscard]] KvTVerification verifyNow(bool wasRebooted) {
        return verifyUpdate(*session_->plan(), session_->outcome(), session_->look(), wasRebooted);
    }

    /// The target may still answer for a moment, and its boards come up one after the other: it is looked at once a
    /// second until it reports what it should or the time is over; then its last answer counts.
    [[nodiscard]] KvTVerification verifyAfterReboot() {
        writeText(line_.json ? stderr : stdout, "Waiting for the target to answer after its reboot (at most " +
                                                    std::to_string(line_.waitSeconds) + " s) ...\n");
        for (std::uint32_t second = 0;; ++second) {
            KvTVerification verification = verifyNow(true);
            if (second >= line_.waitSeconds || verdictOf(verification).isSuccess()) {
                return verification;
            }
            KvNRtosAbstraction::usleep(microsecondsPerSecond);
        }
    }

    [[nodiscard]] KvTReport report() {
        KvTReport report;
        report.facts = {.command = line_.command,
                        .toolVersion = KvISession::version(),
                        .begin = timeText(begin_),
                        .end = timeText(std::chrono::system_clock::now()),
                        .target = utf8Of(line_.options.target),
                        .archiveFolder = utf8Of(line_.options.archiveFolder),
                        .exitCode = exitCodeOf(verdict_.failure),
                        .messages = ownMessages_ + withoutOverwritten(session_.messages())};
        report.verdict = verdict_;
        report.plan = session_->plan();
        report.outcome = session_->outcome();
        report.verification = verification_ ? &*verification_ : nullptr;
        report.entries = session_->archiveEntries();
        return report;
    }

    void writeReport() {
        if (line_.reportFile && !writeReportFile(report(), *line_.reportFile)) {
            verdict_.add({KvEFailure::output, "cannot write '" + *line_.reportFile + "'"});
        }
    }

    void writeDocument() {
        if (line_.json) {
            writeText(stdout, document());
        }
    }

    [[nodiscard]] std::string document() {
        if (line_.options.mode == showArchiveContent) {
            return contentDocument(archiveContent(), verdict_);
        }
        if (line_.options.mode == showTargetElements) {
            return elementsDocument(session_->plan(), verdict_);
        }
        const bool isPlan = line_.options.mode == showUpdatePlan && !line_.verifiesOnly;
        return isPlan ? planDocument(session_->plan(), session_->archiveEntries(), verdict_) : documentOf(report());
    }

    [[nodiscard]] KvTArchiveContent archiveContent() const {
        KvTArchiveContent content;
        content.identity = archiveIdentity(session_.get());
        content.entries = session_->archiveEntries();
        content.verdict = session_.verdict();
        return content;
    }

    const KvTCommandLine& line_;
    const std::chrono::system_clock::time_point begin_ = std::chrono::system_clock::now();
    ToolSession session_;
    /// What the tool has said, for a report.
    std::string ownMessages_;
    KvTVerdict verdict_;
    bool hasRun_ = false;
    /// run() and what follows it went well.
    bool succeeded_ = false;
    std::optional<KvTVerification> verification_;
};

} // namespace

ExitCode runSession(const KvTCommandLine& line) {
    return SessionTask(line).perform();
}
