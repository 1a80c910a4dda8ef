#include "UpdateRun.h"

#include "FindingText.h"
#include "KvNRtosAbstraction.h"
#include "PathTexts.h"
#include "RunTexts.h"
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

} // namespace

UpdateRun::UpdateRun(const UpdateTask& task) : task_(task), session_(task.request) {
    if (task_.steps.isStrict) {
        session_->keepDescription();
    }
}

ExitCode UpdateRun::updateAndReport() {
    if (opensFiles() && prepares() && mayRun()) {
        updateAndReboot();
        judgeDoubt();
    }
    result_.verdict.add(session_.verdict());
    lookAgain();
    return result_.conclude(task_.json);
}

/// Nothing is done if it cannot be recorded.
bool UpdateRun::opensFiles() {
    result_.openReport(task_.report);
    if (result_.verdict.isSuccess()) {
        result_.verdict = session_.openEvents();
    }
    result_.verdict.add(task_.fault);
    if (result_.verdict.isSuccess()) {
        result_.verdict =
            session_.openJournal("update", planId(), task_.resumed ? task_.resumed->run.id : std::string());
    }
    if (result_.verdict.isSuccess() && task_.plan && !session_.keepsJournal()) {
        session_.remark("warning: without a journal nobody knows whether this plan was run before");
    }
    return result_.verdict.isSuccess();
}

/// Of the saved plan that the update, or the run that it goes on with, has run; empty: none.
std::string UpdateRun::planId() const {
    if (task_.plan) {
        return task_.plan->id;
    }
    return task_.resumed ? task_.resumed->run.planId : std::string();
}

/// What is found in the archive refuses the update even if the target cannot be had.
bool UpdateRun::prepares() {
    const bool isPrepared = session_.prepare();
    session_.remarkOnRelease();
    if (isPrepared && task_.steps.verifies) {
        session_->watchFiles(); // before anything else looks at them
    }
    const bool isRead = isPrepared || session_->outcome().stage != KvEStage::created;
    return (!task_.steps.isStrict || !isRead || passesCheck()) && isPrepared;
}

/// Whether there is nothing to be said about the archive that the session has read.
bool UpdateRun::passesCheck() {
    const std::string folder = utf8Of(task_.request.options.archiveFolder);
    const std::string description = utf8Of(task_.request.options.descriptionFileName);
    const std::vector<KvTFinding> findings = session_->findings();
    for (const KvTFinding& finding : findings) {
        session_.remark("check: " + findingLine(finding, folder, description));
    }
    if (!findings.empty()) {
        const std::string file = quotedPath(archivePath(folder + "/" + description));
        result_.verdict.add({KvEFailure::archive, "nothing was touched: " + file + " has " + findingCounts(findings) +
                                                      ", which --strict refuses"});
    }
    return findings.empty();
}

/// Whether the prepared session is to run.
bool UpdateRun::mayRun() {
    result_.verdict.add(choose());
    warnOfForeignPaths(session_.get());
    return result_.verdict.isSuccess() && (!task_.steps.hasPreflight || passesPreflight()) &&
           goesOn("nothing was touched");
}

/// Decides which elements are updated.
KvTVerdict UpdateRun::choose() {
    if (task_.plan) {
        return holdToPlan();
    }
    return task_.resumed ? goOnWithRun() : session_.select();
}

KvTVerdict UpdateRun::holdToPlan() {
    sayDifferences("plan: ", session_->holdTo(*task_.plan, session_.journal()));
    session_.showSelection();
    KvTVerdict verdict = session_.verdict();
    if (verdict.failure == KvEFailure::stale) {
        verdict.message.insert(0, "nothing was touched: ");
    }
    return verdict;
}

KvTVerdict UpdateRun::goOnWithRun() {
    const KvTResumption resumption = session_->resume(*task_.resumed, task_.redoesDoubtful);
    sayDifferences("run: ", resumption.differences);
    session_.showSelection();
    KvTVerdict verdict = session_.verdict();
    if (verdict.failure == KvEFailure::stale) {
        verdict.message.insert(0, "nothing was touched: ");
        return verdict;
    }
    writeText(session_.request().textStream,
              resumptionText(task_.resumed->run, *session_->plan(), resumption.elements));
    for (const KvTResumedElement& element : resumption.elements) {
        if (session_->plan()->elements[element.index].decision.has(KvEReason::inDoubt)) {
            ++doubtfulCount_;
        }
    }
    return verdict;
}

void UpdateRun::sayDifferences(const char* what, const std::vector<std::string>& differences) {
    for (const std::string& difference : differences) {
        session_.remark(what + difference);
    }
}

/// Whether the user lets what comes next begin; `what` has not happened otherwise.
bool UpdateRun::goesOn(const char* what) {
    if (session_.isStopRequested()) {
        result_.verdict.add({KvEFailure::stopped, std::string("ended on request: ") + what});
    }
    return !session_.isStopRequested();
}

bool UpdateRun::passesPreflight() {
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

void UpdateRun::updateAndReboot() {
    succeeded_ = session_.run();
    if (succeeded_ && task_.steps.reboots) {
        succeeded_ = goesOn("the target was not rebooted") && session_->reboot();
    }
}

/// A run is not done with elements of which nobody knows what they hold. This one, or without a journal the one that it
/// has gone on with, knows which they are.
void UpdateRun::judgeDoubt() {
    if (doubtfulCount_ != 0) {
        const std::string run = session_->runId().empty() ? task_.resumed->run.id : session_->runId();
        result_.verdict.add({KvEFailure::elements, counted(doubtfulCount_, "element") + " in doubt: 'resume " + run +
                                                       " --redo' updates what was in progress and reports neither "
                                                       "version nor checksum"});
    }
}

/// Looks at what the target reports, as far as that is judged or reported. Whatever a report alone needs is not worth
/// to wait for a target that comes up.
void UpdateRun::lookAgain() {
    const bool isDown = task_.steps.reboots && succeeded_;
    if (!session_.hasRun() || (!task_.steps.verifies && (!task_.report.file || isDown))) {
        return;
    }
    result_.verification = task_.steps.verifies && isDown ? lookAfterReboot() : look(isDown);
    if (task_.steps.verifies) {
        session_.writeVerification(*result_.verification);
        result_.showVerification();
    }
}

KvTVerification UpdateRun::look(bool wasRebooted) {
    return verifyUpdate(*session_->plan(), session_->outcome(), session_->look(), wasRebooted);
}

/// The target may still answer for a moment, and its boards come up one after the other: it is looked at once a second
/// until it reports what it should or the time is over; then its last answer counts.
KvTVerification UpdateRun::lookAfterReboot() {
    writeText(session_.request().textStream, "Waiting for the target to answer after its reboot (at most " +
                                                 std::to_string(task_.steps.waitSeconds) + " s) ...\n");
    for (std::uint32_t second = 0;; ++second) {
        KvTVerification verification = look(true);
        if (second >= task_.steps.waitSeconds || verdictOf(verification).isSuccess() ||
            !goesOn("the target was not awaited")) {
            return verification;
        }
        KvNRtosAbstraction::usleep(microsecondsPerSecond);
    }
}
