#pragma once

#include "KvCFirmwareArchive.h"
#include "KvCTargetAccess.h"
#include "KvCTargetInventory.h"
#include "KvCUpdatePlanner.h"
#include "KvTOptions.h"
#include "KvTOutcome.h"
#include "KvTPlan.h"
#include "ReleasedReading.h"

#include <cstdint>
#include <optional>
#include <string>

class KvCConsoleWriter;

/// Results of preparing a session; the values are part of the interface.
enum KvEPrepareStatus : std::uint32_t { prepareReady = 0, prepareFailed = 1, prepareTargetNotSupported = 2 };

/// What a session knows before it runs: the archive, the target and the plan that brings them together.
class KvCPreparation {
public:
    /// All must outlive the object; `errors` receives the errors of the session.
    KvCPreparation(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options, KvCErrorListPool& errors)
        : writer_(writer), options_(options), errors_(errors) {}

    /// Reads the archive, finds and scans the target, and plans, as far as the options' mode asks for it; prints what
    /// fails.
    [[nodiscard]] KvEPrepareStatus prepare();

    /// Lets prepare() ask what vouches for the archive. If memory is exhausted, prepare() fails.
    void setRelease(const KvNReflasher::KvTReleaseOptions& options);
    /// The release record of the archive; nothing unless it was asked for and the archive was accepted.
    [[nodiscard]] std::optional<KvNReflasher::KvTRelease> release() const;

    /// The part of prepare() that finds and scans the target, whatever the mode; prints why that failed.
    [[nodiscard]] bool connect();

    /// Forgets what was found on the target, and the plan.
    void forgetTarget();

    /// How far prepare() came.
    [[nodiscard]] KvNReflasher::KvEStage stage() const { return stage_; }
    /// Why prepare() or connect() has failed.
    [[nodiscard]] const KvNReflasher::KvTVerdict& verdict() const { return verdict_; }
    /// The plan of the target, or the list of what was found in modes that do not plan; nothing unless a target was
    /// scanned.
    [[nodiscard]] const std::optional<KvNReflasher::KvTPlan>& plan() const { return plan_; }
    /// Takes an element out of the update. An index past the end changes nothing.
    void disableElement(std::uint32_t index, KvNReflasher::KvEReason reason = KvNReflasher::KvEReason::disabled);

    /// Adds a reason for the update of an element.
    void addReason(std::uint32_t index, KvNReflasher::KvEReason reason);

    [[nodiscard]] const KvCTargetAccess& targetAccess() const { return targetAccess_; }
    [[nodiscard]] KvCFirmwareArchive& archive() { return archive_; }
    [[nodiscard]] const KvCFirmwareArchive& archive() const { return archive_; }
    [[nodiscard]] KvCTargetInventory& inventory() { return inventory_; }
    [[nodiscard]] const KvCTargetInventory& inventory() const { return inventory_; }
    [[nodiscard]] const KvCUpdatePlanner& planner() const { return planner_; }

private:
    void printBanner() const;
    [[nodiscard]] bool refuse(KvNReflasher::KvEFailure failure, std::string message);
    [[nodiscard]] bool readArchive();
    [[nodiscard]] bool readReleasedArchive();
    [[nodiscard]] bool prepareTarget();
    [[nodiscard]] bool checkSupport();

    const KvCConsoleWriter& writer_;
    const KvNReflasher::KvTOptions& options_;
    KvCErrorListPool& errors_;
    KvCTargetAccess targetAccess_{writer_, options_, errors_};
    KvCFirmwareArchive archive_{writer_, options_};
    bool isReleaseAsked_ = false;
    std::optional<KvNReflasher::KvTReleaseOptions> releaseOptions_;
    /// Holds the copy that the archive may have been read from.
    std::optional<KvCReleasedReading> releasedReading_;
    KvCTargetInventory inventory_{writer_, options_, errors_};
    KvCUpdatePlanner planner_{options_, archive_, inventory_};
    KvNReflasher::KvEStage stage_ = KvNReflasher::KvEStage::created;
    KvNReflasher::KvTVerdict verdict_;
    std::optional<KvNReflasher::KvTPlan> plan_;
};
