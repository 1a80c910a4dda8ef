#include "KvCUpdateDriver.h"

#include "KvCConsoleWriter.h"
#include "PlanTables.h"
#include "UpdateResults.h"

namespace {

/// What the phase callback is told after the last phase.
constexpr std::uint32_t afterLastPhase = 0xFFFFFFFF;

} // namespace

bool KvCUpdateDriver::run() {
    begin();
    KvCTargetLock lock(context_);
    if (!lock.lockTarget()) {
        return false;
    }
    run_.wasLocked = true;
    context_.callbacks.notifyEvent({KvNReflasher::KvEEvent::locked});
    printUnsupportedElements(context_.writer, context_.inventory);
    printUpToDateElements(context_.writer, context_.options, context_.inventory);
    const bool filesMissing = runPhases(lock);
    run_.phasesRun = true;
    context_.callbacks.notifyPhase(afterLastPhase);
    lock.unlockTarget();
    addElementErrors();
    return printUpdateResults(context_.writer, context_.options, context_.inventory, filesMissing);
}

/// Marks the elements to be updated and lists them by phase.
void KvCUpdateDriver::begin() {
    forgetRun();
    run_.hasBegun = true;
    context_.control.forgetStall();
    directWriter_.readFrom(context_.archive.folder());
    run_.hasNode = context_.inventory.systemAddress() != nullptr;
    phases_.assign(planner_.phaseCount(), {});
    for (const KvTUpdateElement& element : context_.inventory.elements()) {
        const bool isPlanned = !element.disabled && element.hasArchiveFile();
        context_.runOf(element) = {};
        context_.runOf(element).updateState = isPlanned ? toBeUpdated : notToBeUpdated;
        if (isPlanned && element.phase < phases_.size()) {
            phases_[element.phase].push_back(&element);
        }
    }
}

/// True if update files are missing.
bool KvCUpdateDriver::runPhases(const KvCTargetLock& lock) {
    KvCLaterUpdates laterUpdates(context_);
    bool filesMissing = false;
    for (std::uint32_t phase = 0; phase < planner_.phaseCount() && !context_.control.startsNothing(); ++phase) {
        context_.callbacks.notifyPhase(phase);
        KvCPhaseRun run(context_, lock, directWriter_, collectPhase(phase), phase, transfers_);
        filesMissing = run.checkFiles() || filesMissing;
        run.transferFiles();
        run.startUpdates();
        run.pollUpdates();
        run.collectErrors(laterUpdates);
        run.deleteRemoteFiles();
    }
    return filesMissing;
}

/// An element that failed or was cancelled in an earlier phase is not taken.
KvTPhaseList KvCUpdateDriver::collectPhase(std::uint32_t phase) const {
    KvTPhaseList list;
    for (const KvTUpdateElement* element : phases_[phase]) {
        if (element->updateState == toBeUpdated) {
            list.push_back(element);
        }
    }
    return list;
}

/// Adds the errors of all elements of the update to those of the session.
void KvCUpdateDriver::addElementErrors() {
    run_.elementErrorsBegin = context_.errors.getNumberOfUsedEntries();
    for (const KvTUpdateElement& element : context_.inventory.elements()) {
        if (element.updateState != notToBeUpdated) {
            for (const KvCOwnedErrorList& list : element.errorLists) {
                context_.errors += *list;
            }
        }
    }
    run_.elementErrorsEnd = context_.errors.getNumberOfUsedEntries();
}
