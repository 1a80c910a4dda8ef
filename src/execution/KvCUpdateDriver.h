#pragma once

#include "KvCDirectFileWriter.h"
#include "KvCErrorManager.h"
#include "KvCInventoryManager.h"
#include "KvCUpdatePlanner.h"
#include "KvTCallbacks.h"
#include "KvTOptions.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

class KvCConsoleWriter;
class KvCTargetAccess;

/// What a run has done, beside what the elements say.
struct KvTUpdateRun {
    /// The target has a node that can be locked.
    bool hasNode = false;
    bool wasLocked = false;
    bool phasesRun = false;
    bool filesMissing = false;
    /// The errors of elements are in the session's list from this number on, up to the other.
    std::uint32_t elementErrorsBegin = 0;
    std::uint32_t elementErrorsEnd = 0;
};

/// A transfer of an update file in one phase.
struct KvTTransfer {
    std::uint32_t fileIndex = 0;
    std::uint32_t phase = 0;
    KvNReflasher::KvEResult result = KvNReflasher::KvEResult::inProgress;
    /// The target's name of the file.
    KvNInventoryManager::KvSRemoteFileHandle remoteFile;
};

/// Carries out a plan: locks the target, and phase by phase transfers the update files, starts the updates, polls them,
/// collects what the target reports, and deletes the files; then unlocks the target and prints the results.
class KvCUpdateDriver {
public:
    /// All must outlive the driver.
    KvCUpdateDriver(const KvCConsoleWriter& writer, const KvTCallbacks& callbacks,
                    const KvNReflasher::KvTOptions& options, KvCUpdatePlanner& planner,
                    const KvCTargetAccess& targetAccess)
        : writer_(writer), callbacks_(callbacks), options_(options), planner_(planner),
          directWriter_(options, targetAccess) {}

    /// Performs the update. `errors` collects the errors of the session. True only when all updates succeeded; false
    /// too when the target could not be locked, in which case nothing was done.
    [[nodiscard]] bool run(KvCErrorListPool& errors);

    /// Forgets the last run. What it says of transfers is about the archive that was read for it.
    void forgetRun() {
        run_ = {};
        transfers_.clear();
    }

    /// Of the last run.
    [[nodiscard]] const KvTUpdateRun& lastRun() const { return run_; }
    [[nodiscard]] const std::vector<KvTTransfer>& transfers() const { return transfers_; }

private:
    /// The elements of one phase that are to be updated, in the order of the element list.
    using PhaseList = std::vector<KvTUpdateElement*>;
    class LockRelease;
    struct AddressHash {
        [[nodiscard]] std::size_t operator()(const KvCInventoryAddress& address) const;
    };

    // The driver and the target lock.
    void begin();
    void runPhases(KvCErrorListPool& errors);
    [[nodiscard]] bool lockTarget(KvCErrorListPool& errors);
    void finishUpdate();
    void unlockTarget(KvCErrorListPool& errors);
    [[nodiscard]] PhaseList collectPhase(std::uint32_t phase) const;
    [[nodiscard]] bool checkFiles(const PhaseList& list);

    // Transfer of the update files.
    void transferFiles(const PhaseList& list);
    void transferFile(KvTUpdateElement& element, const KvCInventoryAddress& system);
    void deleteRemoteFiles(KvCErrorListPool& errors);

    // Execution of a phase.
    void startUpdates(const PhaseList& list);
    void writeDirectly(KvTUpdateElement& element);
    void startUpdate(KvTUpdateElement& element);
    void pollUpdates(const PhaseList& list);
    struct PollRound;
    [[nodiscard]] PollRound pollOnce(const PhaseList& list);
    [[nodiscard]] std::uint32_t pollElement(KvTUpdateElement& element);
    void failStatus(KvTUpdateElement& element);

    // Errors and results.
    void collectErrors(const PhaseList& list);
    [[nodiscard]] bool succeeded(KvTUpdateElement& element);
    void cancelLaterUpdates(const KvCInventoryAddress& boardAddress, std::uint32_t fromPhase);
    [[nodiscard]] bool printResults(KvCErrorListPool& errors);

    void fail(KvTUpdateElement& element, KvNReflasher::KvEFailedCall call);
    void notifyEnd(const KvTUpdateElement& element, bool succeeded) const;
    [[nodiscard]] const KvNInventoryManager::KvSRemoteFileHandle& remoteFileOf(const KvTUpdateElement& element) const;
    [[nodiscard]] KvTArchiveFile& fileOf(const KvTUpdateElement& element) const;
    [[nodiscard]] KvCInventoryRootHandle* rootHandle() const { return planner_.inventory().rootHandle(); }

    const KvCConsoleWriter& writer_;
    const KvTCallbacks& callbacks_;
    const KvNReflasher::KvTOptions& options_;
    KvCUpdatePlanner& planner_;
    KvCDirectFileWriter directWriter_;
    /// The elements of each phase as planned.
    std::vector<PhaseList> phases_;
    /// The elements of each board, by its address; filled when an update first fails.
    std::unordered_map<KvCInventoryAddress, PhaseList, AddressHash> elementsOfBoards_;
    KvTUpdateRun run_;
    std::vector<KvTTransfer> transfers_;
    /// Of each archive file that the target holds in the current phase: its number among the transfers, from 1; else 0.
    std::vector<std::size_t> transferOfFile_;
    /// The files that the target holds in the current phase. Has room for all, so that none is ever forgotten.
    std::vector<std::uint32_t> filesOnTarget_;
    std::uint32_t phase_ = 0;
    /// Null when the target is not locked.
    void* lockHandle_ = nullptr;
};
