#include "UpdateCommand.h"

#include "FindingText.h"
#include "KvNRtosAbstraction.h"
#include "PathTexts.h"
#include "SessionResult.h"
#include "Streams.h"
#include "Texts.h"
#include "ToolOutput.h"

using namespace KvNReflasher;

namespace {

constexpr std::uint32_t microsecondsPerSecond = 1000000;

/// Warns of each path that leads out of the archive's folder or out of the target's root: an archive from who knows
/// where must not do that unnoticed.
void warnOfForeignPaths(const KvISession& session) {
    for (const KvTForeignPath& path : session.foreignPaths()) {
        std::string sentence("warning: file entry ");
        sentence.append(std::to_string(path.descriptionIndex)).append(path.isRead ? " reads \"" : " writes \"");
        sentence.append(path.path).append("\", which is outside the ");
        say(sentence.append(path.isRead ? "archive folder" : "target's file system"));
    }
}

/// The one session of an update, from its preparation to its report.
class UpdateSession {
public:
    explicit UpdateSession(UpdateCommand& command)
        : steps_(command.steps), report_(command.report), json_(command.json), archive_(command.archive),
          session_(command.request(performUpdate)) {
        if (steps_.isStrict) {
            session_->keepDescription();
        }
    }

    [[nodiscard]] ExitCode updateAndReport() {
        if (opensFiles() && prepares() && mayRun()) {
            updateAndReboot();
        }
        result_.verdict.add(session_.verdict());
        lookAgain();
        return result_.conclude(json_);
    }

private:
    /// Nothing is done if it cannot be recorded.
    [[nodiscard]] bool opensFiles() {
        result_.openReport(report_);
        if (result_.verdict.isSuccess()) {
            result_.verdict = session_.openEvents();
        }
        return result_.verdict.isSuccess();
    }

    /// What is found in the archive refuses the update even if the target cannot be had.
    [[nodiscard]] bool prepares() {
        const bool isPrepared = session_.prepare();
        session_.remarkOnRelease();
        if (isPrepared && steps_.verifies) {
            session_->watchFiles(); // before anything else looks at them
        }
        const bool isRead = isPrepared || session_->outcome().stage != KvEStage::created;
        return (!steps_.isStrict || !isRead || passesCheck()) && isPrepared;
    }

    /// Whether there is nothing to be said about the archive that the session has read.
    [[nodiscard]] bool passesCheck() {
        const std::vector<KvTFinding> findings = session_->findings();
        for (const KvTFinding& finding : findings) {
            session_.remark("check: " + findingLine(finding, archive_.folder, archive_.description));
        }
        if (!findings.empty()) {
            const std::string file = quotedPath(archivePath(archive_.folder + "/" + archive_.description));
            result_.verdict.add({KvEFailure::archive, "nothing was touched: " + file + " has " +
                                                          findingCounts(findings) + ", which --strict refuses"});
        }
        return findings.empty();
    }

    /// Whether the prepared session is to run.
    [[nodiscard]] bool mayRun() {
        result_.verdict.add(session_.select());
        warnOfForeignPaths(session_.get());
        return result_.verdict.isSuccess() && (!steps_.hasPreflight || passesPreflight()) &&
               goesOn("nothing was touched");
    }

    /// Whether the user lets what comes next begin; `what` has not happened otherwise.
    [[nodiscard]] bool goesOn(const char* what) {
        if (session_.isStopRequested()) {
            result_.verdict.add({KvEFailure::stopped, std::string("ended on request: ") + what});
        }
        return !session_.isStopRequested();
    }

    [[nodiscard]] bool passesPreflight() {
        const std::vector<std::string> findings = session_->preflight();
        for (const std::string& finding : findings) {
            session_.remark("preflight: " + finding);
        }
        if (!findings.empty()) {
            result_.verdict.add({session_.verdict().failure,
                                 "nothing was touched: the preflight has found " + counted(findings.size(), "fault")});
        }
        return findings.empty();
    }

    void updateAndReboot() {
        succeeded_ = session_.run();
        if (succeeded_ && steps_.reboots) {
            succeeded_ = goesOn("the target was not rebooted") && session_->reboot();
        }
    }

    /// Looks at what the target reports, as far as that is judged or reported. Whatever a report alone needs is not
    /// worth to wait for a target that comes up.
    void lookAgain() {
        const bool isDown = steps_.reboots && succeeded_;
        if (!session_.hasRun() || (!steps_.verifies && (!report_.file || isDown))) {
            return;
        }
        result_.verification = steps_.verifies && isDown ? lookAfterReboot() : look(isDown);
        if (steps_.verifies) {
            session_.writeVerification(*result_.verification);
            result_.showVerification();
        }
    }

    [[nodiscard]] KvTVerification look(bool wasRebooted) {
        return verifyUpdate(*session_->plan(), session_->outcome(), session_->look(), wasRebooted);
    }

    /// The target may still answer for a moment, and its boards come up one after the other: it is looked at once a
    /// second until it reports what it should or the time is over; then its last answer counts.
    [[nodiscard]] KvTVerification lookAfterReboot() {
        writeText(session_.request().textStream, "Waiting for the target to answer after its reboot (at most " +
                                                     std::to_string(steps_.waitSeconds) + " s) ...\n");
        for (std::uint32_t second = 0;; ++second) {
            KvTVerification verification = look(true);
            if (second >= steps_.waitSeconds || verdictOf(verification).isSuccess() ||
                !goesOn("the target was not awaited")) {
                return verification;
            }
            KvNRtosAbstraction::usleep(microsecondsPerSecond);
        }
    }

    const UpdateSteps& steps_;
    const ReportOption& report_;
    const JsonOption& json_;
    const ArchiveOptions& archive_;
    ToolSession session_;
    SessionResult result_{"update", session_};
    /// run() and what follows it went well.
    bool succeeded_ = false;
};

} // namespace

void ProgressOptions::addTo(CommandSyntax& syntax) {
    using enum ProgressStyle;
    syntax.addOption("--progress", "HOW",
                     "How progress is shown: auto (line on a terminal, plain elsewhere), line, plain (a line for every "
                     "tenth) or none "
                     "(default: auto)",
                     [this](const std::string& word) {
                         progress = meaningOf<ProgressStyle>(
                             "--progress", word,
                             {{"auto", automatic}, {"line", line}, {"plain", plain}, {"none", none}});
                         if (isOff && progress != none) {
                             refuse("--no-progress contradicts --progress " + word);
                         }
                     });
    syntax.addSwitch("--no-progress", isOff, "The same as --progress none");
}

void ProgressOptions::applyTo(SessionRequest& request) const {
    const ProgressStyle fitting = isTerminal(stdout) ? ProgressStyle::line : ProgressStyle::plain;
    const ProgressStyle style = isOff ? ProgressStyle::none : progress == ProgressStyle::automatic ? fitting : progress;
    request.showsPlainProgress = style == ProgressStyle::plain;
    request.options.noProgress = style != ProgressStyle::line;
}

void UpdateSteps::addTo(CommandSyntax& syntax) {
    syntax.addSwitch("--reboot", reboots, "Reboot the target after a successful update");
    syntax.addSwitch("--preflight", hasPreflight, "Check every update file of the plan before the target is touched");
    syntax.addSwitch("--strict", isStrict, "Refuse an archive that check has errors or warnings for");
    syntax.addSwitch("--verify", verifies,
                     "Look at the target again after the update and judge by what it reports then");
    syntax.addOption("--wait", "SECONDS",
                     "With --verify and --reboot: how many seconds the target has to show the update (default: 300)",
                     [this](const std::string& text) {
                         waitSeconds = decimalNumber("--wait", text);
                         if (!verifies || !reboots) {
                             refuse("--wait needs --verify and --reboot");
                         }
                     });
    syntax.addOption("--stall-limit", "SECONDS",
                     "Give up waiting when the elements of a phase have shown nothing new for so many seconds "
                     "(default: none)",
                     [this](const std::string& text) {
                         stallLimit = decimalNumber("--stall-limit", text);
                         if (stallLimit == 0) {
                             refuse("--stall-limit: '0' must be at least 1");
                         }
                     });
}

void UpdateSteps::applyTo(SessionRequest& request) const {
    request.stallLimit = stallLimit;
}

void EventsOption::addTo(CommandSyntax& syntax) {
    syntax.addOption("--events", "FILE",
                     "Write notifications to FILE as JSON lines; -: to standard error (default: nowhere)",
                     keptIn(file));
}

void EventsOption::applyTo(SessionRequest& request) const {
    request.eventsFile = file;
}

ExitCode UpdateCommand::run() {
    return UpdateSession(*this).updateAndReport();
}
