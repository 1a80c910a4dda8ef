#include "ElementReasons.h"
#include "ErrorEntries.h"
#include "KvCReflasher.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

using namespace KvNReflasher;

namespace {

/// What became of an element that was planned. Nothing else decides that.
KvEResult resultOf(const KvTUpdateElement& element) {
    switch (element.updateState) {
    case notToBeUpdated:
        return element.failure.fileMissing ? KvEResult::fileMissing : KvEResult::notStarted;
    case toBeUpdated:
        return KvEResult::notStarted;
    case updateStarted:
        return KvEResult::inProgress;
    case updateFailed:
        return KvEResult::failed;
    case updateCancelled:
        return KvEResult::cancelled;
    case updateFinished:
        break;
    }
    if (element.hasErrors()) {
        return KvEResult::failed;
    }
    // A file is in its place; of an update the target may still have errors to report.
    return element.isFileSystemElement || element.errorsCollected ? KvEResult::updated : KvEResult::inProgress;
}

KvTElementOutcome recordedOutcome(const KvTUpdateElement& element) {
    KvTElementOutcome outcome;
    outcome.result = resultOf(element);
    outcome.failedCall = element.failure.call;
    if (element.targetAnswer) {
        outcome.state = element.targetAnswer->state;
    }
    outcome.fileChanged = element.fileChanged;
    outcome.message = element.failure.message;
    outcome.errors = element.failure.writeErrors;
    for (const KvCOwnedErrorList& list : element.errorLists) {
        std::vector<KvTErrorInfo> errors = errorEntriesOf(*list);
        std::move(errors.begin(), errors.end(), std::back_inserter(outcome.errors));
    }
    return outcome;
}

/// "1 element", "2 elements".
std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

} // namespace

/// Takes down what has failed in a run.
void KvCReflasher::concludeRun(bool succeeded) {
    const KvTUpdateRun& update = driver_.lastRun();
    otherErrors_ = errorEntriesOf(errors_, 0, update.elementErrorsBegin);
    std::vector<KvTErrorInfo> later = errorEntriesOf(errors_, update.elementErrorsEnd);
    std::move(later.begin(), later.end(), std::back_inserter(otherErrors_));
    if (succeeded) {
        return;
    }
    if (options_.mode == performUpdate && update.hasBegun) {
        verdict_.add(verdictOfUpdate());
    }
    if (!otherErrors_.empty()) {
        verdict_.add({KvEFailure::errors, counted(otherErrors_.size(), "error") + " reported"});
    }
}

KvTVerdict KvCReflasher::verdictOfUpdate() const {
    const KvTUpdateRun& update = driver_.lastRun();
    if (!update.hasNode) {
        return {KvEFailure::target, "the target has no processor node that can be locked"};
    }
    if (!update.wasLocked) {
        return {KvEFailure::locked, "the target could not be locked" +
                                        (otherErrors_.empty() ? std::string() : ": " + otherErrors_.back().text)};
    }
    if (journal_.forbidsMore()) {
        return verdictOfUnfinished(journal_.verdict().message.c_str(), KvEFailure::output);
    }
    if (control_.isStopRequested()) {
        const KvTVerdict verdict = verdictOfUnfinished("ended on request", KvEFailure::stopped);
        return verdict.isSuccess() ? verdictOfElements() : verdict;
    }
    if (control_.isStalled()) {
        return verdictOfUnfinished("nothing changed any more", KvEFailure::elements);
    }
    return verdictOfElements();
}

/// Of an update that has not ended everything that was planned; success if it has.
KvTVerdict KvCReflasher::verdictOfUnfinished(const char* why, KvEFailure failure) const {
    std::size_t notStarted = 0;
    std::size_t inProgress = 0;
    std::string names;
    std::size_t index = 0;
    for (const KvTElementOutcome& element : elementOutcomes()) {
        const std::string& name = preparation_.plan()->elements[index++].displayName;
        notStarted += element.result == KvEResult::notStarted ? 1 : 0;
        if (element.result == KvEResult::inProgress) {
            ++inProgress;
            names.append(names.empty() ? " ('" : ", '").append(name).append("'");
        }
    }
    if (notStarted + inProgress == 0) {
        return {};
    }
    std::string message(why);
    message.append(": ").append(counted(notStarted, "element")).append(" not started");
    if (inProgress != 0) {
        message.append(", ").append(counted(inProgress, "element")).append(" still in progress").append(names + ")");
    }
    return {failure, std::move(message)};
}

KvTVerdict KvCReflasher::verdictOfElements() const {
    std::size_t failed = 0;
    std::size_t missing = 0;
    std::string first;
    std::size_t index = 0;
    for (const KvTElementOutcome& element : elementOutcomes()) {
        const std::string& name = preparation_.plan()->elements[index++].displayName;
        const bool isMissing = element.result == KvEResult::fileMissing;
        if (isMissing || element.result == KvEResult::failed || element.result == KvEResult::cancelled ||
            element.result == KvEResult::inProgress || element.result == KvEResult::notStarted) {
            ++(isMissing ? missing : failed);
            first = first.empty() ? name : first;
        }
    }
    if (failed + missing == 0) {
        return {};
    }
    std::string message = failed != 0 ? counted(failed, "element") + " failed" : "";
    if (missing != 0) {
        message += (message.empty() ? "" : ", ") + counted(missing, "update file") + " missing";
    }
    return {KvEFailure::elements, message + "; the first is '" + first + "'"};
}

/// Of each element of the plan.
std::vector<KvTElementOutcome> KvCReflasher::elementOutcomes() const {
    std::vector<KvTElementOutcome> outcomes;
    if (!preparation_.plan()) {
        return outcomes;
    }
    const std::vector<KvTPlannedElement>& planned = preparation_.plan()->elements;
    outcomes.reserve(planned.size());
    auto element = preparation_.inventory().elements().begin();
    for (const KvTPlannedElement& one : planned) {
        outcomes.push_back(plannedOutcome(one, *element));
        ++element;
    }
    return outcomes;
}

KvTElementOutcome KvCReflasher::plannedOutcome(const KvTPlannedElement& planned,
                                               const KvTUpdateElement& element) const {
    if (!planned.decision.update) {
        return {};
    }
    KvTElementOutcome outcome = recordedOutcome(element);
    outcome.reason = reasonFor(outcome, planned,
                               {.wasStopped = control_.isStopRequested(),
                                .hasStalled = control_.isStalled(),
                                .pollFailures = element.pollFailures});
    return outcome;
}

KvTElementOutcome KvCReflasher::outcomeOf(std::uint32_t index) const {
    return withoutException(KvTElementOutcome(), [this, index] {
        const bool exists = plan() != nullptr && index < plan()->elements.size();
        return exists ? plannedOutcome(plan()->elements[index], preparation_.inventory().element(index))
                      : KvTElementOutcome();
    });
}

std::vector<KvTFileOutcome> KvCReflasher::fileOutcomes() const {
    std::vector<KvTFileOutcome> outcomes;
    std::set<std::pair<std::uint32_t, std::uint32_t>> begun;
    for (const KvTTransfer& transfer : driver_.transfers()) {
        begun.emplace(transfer.phase, transfer.fileIndex);
        outcomes.push_back({.fileIndex = transfer.fileIndex,
                            .fileName = std::string(preparation_.archive().files()[transfer.fileIndex].name.view()),
                            .phase = transfer.phase,
                            .targetPath = {},
                            .result = transfer.result});
    }
    if (!preparation_.plan()) {
        return outcomes;
    }
    auto element = preparation_.inventory().elements().begin();
    for (const KvTPlannedElement& one : preparation_.plan()->elements) {
        const KvTUpdateElement& record = *element++;
        if (!one.decision.update) {
            continue;
        }
        if (one.isFileSystemElement || begun.emplace(*one.phase, one.entry->fileIndex).second) {
            outcomes.push_back({.fileIndex = one.entry->fileIndex,
                                .fileName = one.entry->fileName,
                                .phase = *one.phase,
                                .targetPath = one.isFileSystemElement ? one.targetPath : std::string(),
                                .result = resultOf(record)});
        }
    }
    return outcomes;
}

KvTOutcome KvCReflasher::makeOutcome() const {
    KvTOutcome outcome;
    outcome.stage = stage();
    outcome.verdict = verdict_;
    outcome.elements = elementOutcomes();
    outcome.files = fileOutcomes();
    outcome.errors = stage_ ? otherErrors_ : errorEntriesOf(errors_);
    return outcome;
}

/// How far the session came; while a run goes on, how far that is.
KvEStage KvCReflasher::stage() const {
    const KvTUpdateRun& update = driver_.lastRun();
    if (stage_) {
        return *stage_;
    }
    if (update.wasLocked) {
        return update.phasesRun ? KvEStage::phasesRun : KvEStage::locked;
    }
    return preparation_.stage();
}

KvTOutcome KvCReflasher::outcome() const {
    KvTOutcome exhausted;
    exhausted.verdict.failure = KvEFailure::errors;
    return withoutException(std::move(exhausted), [this] { return makeOutcome(); });
}
