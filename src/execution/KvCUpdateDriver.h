#pragma once

#include "KvCDirectFileWriter.h"
#include "KvCUpdatePlanner.h"
#include "PhaseRun.h"
#include "TransferredFiles.h"
#include "UpdateContext.h"

#include <cstdint>
#include <deque>
#include <vector>

class KvCTargetAccess;

/// What a run has done, beside what the elements say.
struct KvTUpdateRun {
    bool hasBegun = false;
    /// The target has a node that can be locked.
    bool hasNode = false;
    bool wasLocked = false;
    bool phasesRun = false;
    /// The errors of elements are in the session's list from this number on, up to the other.
    std::uint32_t elementErrorsBegin = 0;
    std::uint32_t elementErrorsEnd = 0;
};

/// Carries out a plan: locks the target, and phase by phase transfers the update files, starts the updates, polls them,
/// collects what the target reports, and deletes the files; then unlocks the target and prints the results.
class KvCUpdateDriver {
public:
    /// All, also what the context refers to, must outlive the driver.
    KvCUpdateDriver(const KvTUpdateContext& context, const KvCUpdatePlanner& planner,
                    const KvCTargetAccess& targetAccess)
        : context_(context), planner_(planner), directWriter_(context.options, targetAccess) {}

    /// Performs the update. True only when all updates succeeded; false too when the target could not be locked, in
    /// which case nothing was done.
    [[nodiscard]] bool run();

    /// Forgets the last run. What it says of transfers is about the archive that was read for it.
    void forgetRun() {
        run_ = {};
        transfers_.clear();
    }

    /// Of the last run.
    [[nodiscard]] const KvTUpdateRun& lastRun() const { return run_; }
    [[nodiscard]] const std::deque<KvTTransfer>& transfers() const { return transfers_; }

private:
    void begin();
    [[nodiscard]] bool runPhases(const KvCTargetLock& lock);
    [[nodiscard]] KvTPhaseList collectPhase(std::uint32_t phase) const;
    void addElementErrors();

    const KvTUpdateContext context_;
    const KvCUpdatePlanner& planner_;
    KvCDirectFileWriter directWriter_;
    /// The elements of each phase as planned.
    std::vector<KvTPhaseList> phases_;
    KvTUpdateRun run_;
    std::deque<KvTTransfer> transfers_;
};
