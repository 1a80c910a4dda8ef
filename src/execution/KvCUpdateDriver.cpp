#include "KvCUpdateDriver.h"

#include "ArchivePaths.h"
#include "CallJudgement.h"
#include "ExhaustedMemory.h"
#include "Files.h"
#include "KvCConsoleWriter.h"
#include "OwnedErrorList.h"

namespace {

constexpr std::uint32_t lockFlags = 0x10003;
/// What the phase callback is told after the last phase.
constexpr std::uint32_t afterLastPhase = 0xFFFFFFFF;

} // namespace

/// Gives the target back when exhausted memory ends a run early.
class KvCUpdateDriver::LockRelease {
public:
    LockRelease(KvCUpdateDriver& driver, KvCErrorListPool& errors) : driver_(driver), errors_(errors) {}
    LockRelease(const LockRelease&) = delete;
    LockRelease& operator=(const LockRelease&) = delete;
    ~LockRelease() {
        if (!armed_) {
            return;
        }
        attempt([this] { driver_.deleteRemoteFiles(errors_); });
        attempt([this] { driver_.finishUpdate(); });
        attempt([this] { KvCInventoryManager::getInstance()->unlock(errors_, driver_.lockHandle_); });
        driver_.lockHandle_ = nullptr;
    }

    void disarm() { armed_ = false; }

private:
    KvCUpdateDriver& driver_;
    KvCErrorListPool& errors_;
    bool armed_ = true;
};

bool KvCUpdateDriver::run(KvCErrorListPool& errors) {
    begin();
    if (!lockTarget(errors)) {
        return false;
    }
    run_.wasLocked = true;
    LockRelease release(*this, errors);
    callbacks_.notifyEvent({KvNReflasher::KvEEvent::locked});
    planner_.printUnsupportedElements();
    planner_.printUpToDateElements();
    runPhases(errors);
    run_.phasesRun = true;
    callbacks_.notifyPhase(afterLastPhase);
    finishUpdate();
    release.disarm(); // a target is unlocked once, whatever comes of it
    unlockTarget(errors);
    return printResults(errors);
}

/// Empties the bookkeeping of files and marks the elements to be updated.
void KvCUpdateDriver::begin() {
    const std::size_t fileCount = planner_.archive().files().size();
    forgetRun();
    transferOfFile_.assign(fileCount, 0);
    filesOnTarget_.clear();
    filesOnTarget_.reserve(fileCount);
    elementsOfBoards_.clear();
    phases_.assign(planner_.phaseCount(), {});
    for (KvTUpdateElement& element : planner_.inventory().elements()) {
        const bool planned = !element.disabled && element.hasArchiveFile();
        element.updateState = planned ? toBeUpdated : notToBeUpdated;
        element.pollFailures = 0;
        element.targetState.reset();
        element.errorsCollected = false;
        element.failure = {};
        if (planned && element.phase < phases_.size()) {
            phases_[element.phase].push_back(&element);
        }
    }
}

void KvCUpdateDriver::runPhases(KvCErrorListPool& errors) {
    for (phase_ = 0; phase_ < planner_.phaseCount(); ++phase_) {
        callbacks_.notifyPhase(phase_);
        const PhaseList list = collectPhase(phase_);
        run_.filesMissing = checkFiles(list) || run_.filesMissing;
        transferFiles(list);
        startUpdates(list);
        pollUpdates(list);
        collectErrors(list);
        deleteRemoteFiles(errors);
    }
}

bool KvCUpdateDriver::lockTarget(KvCErrorListPool& errors) {
    const KvCInventoryAddress* address = planner_.inventory().systemAddress();
    run_.hasNode = address != nullptr;
    if (address == nullptr) {
        if (options_.verbose) {
            writer_.print(L"ERROR: Cannot lock target system! No HCN or CN found!\n");
        }
        return false;
    }
    const bool locked = callSucceeds(errors, [&] {
        KvCInventoryManager::getInstance()->lock(errors, rootHandle(), *address, lockFlags, lockHandle_);
    });
    if (!locked && options_.verbose) {
        writer_.print(L"ERROR: Cannot lock target system (%hs)!\n", address->toString().c_str());
    }
    return locked;
}

/// Closes the update session on both nodes. What goes wrong here is of no interest to anybody.
void KvCUpdateDriver::finishUpdate() {
    const OwnedErrorList dropped = OwnedErrorList::create();
    for (const KvCInventoryAddress* address : {planner_.inventory().cnAddress(), planner_.inventory().hcnAddress()}) {
        if (address != nullptr) {
            KvCInventoryManager::getInstance()->updateFinish(*dropped, rootHandle(), *address, lockHandle_);
        }
    }
}

void KvCUpdateDriver::unlockTarget(KvCErrorListPool& errors) {
    const bool unlocked =
        callSucceeds(errors, [&] { KvCInventoryManager::getInstance()->unlock(errors, lockHandle_); });
    callbacks_.notifyEvent({KvNReflasher::KvEEvent::unlocked, 0, unlocked});
    if (unlocked) {
        lockHandle_ = nullptr;
    } else if (options_.verbose) {
        writer_.print(L"ERROR: Cannot unlock target system!\n");
    }
}

/// An element that failed or was cancelled in an earlier phase is not taken.
KvCUpdateDriver::PhaseList KvCUpdateDriver::collectPhase(std::uint32_t phase) const {
    PhaseList list;
    for (KvTUpdateElement* element : phases_[phase]) {
        if (element->updateState == toBeUpdated) {
            list.push_back(element);
        }
    }
    return list;
}

/// Takes elements whose update file is missing out of the run; true when there are any.
bool KvCUpdateDriver::checkFiles(const PhaseList& list) {
    bool missing = false;
    for (KvTUpdateElement* element : list) {
        KvTArchiveFile& file = fileOf(*element);
        if (hasFileAttributes(updateFilePath(options_, file.name))) {
            continue;
        }
        missing = true;
        file.fileMissing = true;
        element->failure.fileMissing = true;
        element->updateState = notToBeUpdated;
        writer_.print(L"\n%hs cannot be updated. Update file %s not found!\n", element->displayName.c_str(),
                      toWide(file.name).c_str());
    }
    return missing;
}

void KvCUpdateDriver::fail(KvTUpdateElement& element, KvNReflasher::KvEFailedCall call) {
    element.updateState = updateFailed;
    element.failure.call = call;
    callbacks_.notifyElementError(element.index);
}

void KvCUpdateDriver::notifyEnd(const KvTUpdateElement& element, bool succeeded) const {
    callbacks_.notifyEvent({KvNReflasher::KvEEvent::elementEnd, element.index, succeeded});
}

KvTArchiveFile& KvCUpdateDriver::fileOf(const KvTUpdateElement& element) const {
    return planner_.archive().files()[element.archiveFileIndex];
}
