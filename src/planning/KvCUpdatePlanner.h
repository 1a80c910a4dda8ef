#pragma once

#include "KvCFirmwareArchive.h"
#include "KvCTargetInventory.h"
#include "KvTOptions.h"

#include <cstdint>

/// Decides which archive entry updates which element of the target, what is out of date, and in which phase each
/// update runs. The results are written into the plans of the elements. Prints nothing.
class KvCUpdatePlanner {
public:
    /// All must outlive the planner.
    KvCUpdatePlanner(const KvNReflasher::KvTOptions& options, KvCFirmwareArchive& archive,
                     KvCTargetInventory& inventory)
        : options_(options), archive_(archive), inventory_(inventory) {}

    /// Plans the update, once the archive was read and the target scanned.
    void plan();

    /// Phases are numbered from 0.
    [[nodiscard]] std::uint32_t phaseCount() const { return phaseCount_; }

private:
    void matchElements();
    void cloneFileSystemElements();
    void applyElementRules();
    void decideUpToDate();
    void formPhases();

    const KvNReflasher::KvTOptions& options_;
    KvCFirmwareArchive& archive_;
    KvCTargetInventory& inventory_;
    std::uint32_t phaseCount_ = 0;
};
