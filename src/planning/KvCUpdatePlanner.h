#pragma once

#include "KvCFirmwareArchive.h"
#include "KvCTargetInventory.h"
#include "KvTOptions.h"

#include <cstdint>

class KvCConsoleWriter;

/// Decides which archive entry updates which element of the target, what is out of date, and in which phase each
/// update runs. The results are written into the elements.
class KvCUpdatePlanner {
public:
    /// All must outlive the planner.
    KvCUpdatePlanner(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                     KvCFirmwareArchive& archive, KvCTargetInventory& inventory)
        : writer_(writer), options_(options), archive_(archive), inventory_(inventory) {}

    /// Plans the update, once the archive was read and the target scanned.
    void plan();

    /// Prints the table of the plan; nothing when the target has no elements.
    void printUpdatePlan() const;
    /// Prints the enabled elements that no archive entry matches.
    void printUnsupportedElements() const;
    /// Prints the elements that are up to date, unless the update is forced.
    void printUpToDateElements() const;

    [[nodiscard]] KvCFirmwareArchive& archive() const { return archive_; }
    [[nodiscard]] KvCTargetInventory& inventory() const { return inventory_; }
    /// Phases are numbered from 0.
    [[nodiscard]] std::uint32_t phaseCount() const { return phaseCount_; }

private:
    void matchElements();
    void cloneFileSystemElements();
    void applyElementRules();
    void decideUpToDate();
    void formPhases();

    const KvCConsoleWriter& writer_;
    const KvNReflasher::KvTOptions& options_;
    KvCFirmwareArchive& archive_;
    KvCTargetInventory& inventory_;
    std::uint32_t phaseCount_ = 0;
};
