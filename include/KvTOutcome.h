#pragma once

#include "KvTPlan.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The outcome of a session: a value that says how far the session came and what became of each element. Texts are
// UTF-8.

namespace KvNReflasher {

/// Class of a failure; the first one counts if several apply.
enum class KvEFailure : std::uint8_t {
    /// The archive was refused.
    archive,
    /// The target was not reached, is not exactly one, cannot be scanned or has no node to lock.
    target,
    /// A saved plan does not hold any more.
    stale,
    /// The archive does not support the target.
    unsupported,
    /// A filter lets no element through, or an element that was named does not exist.
    selection,
    /// The target could not be locked.
    locked,
    /// Ended on request.
    stopped,
    /// An element or file failed, or its update file was missing.
    elements,
    /// Errors were reported.
    errors,
    /// The target was not rebooted.
    reboot,
    /// The target does not report what it should, or could not be looked at after the update.
    verification,
    /// Something could not be written.
    output,
    none
};

/// Whether and why something failed.
struct KvTVerdict {
    /// The class of the failure.
    KvEFailure failure = KvEFailure::none;
    /// Why, in one line without end; empty if nothing failed.
    std::string message;

    /// True if nothing failed.
    [[nodiscard]] bool isSuccess() const { return failure == KvEFailure::none; }
    /// The same may succeed if it is tried again.
    [[nodiscard]] bool isRetryable() const {
        return failure == KvEFailure::target || failure == KvEFailure::locked || failure == KvEFailure::stopped;
    }
    /// Takes another verdict in: the failure that comes first in KvEFailure counts, of equal ones the earlier.
    void add(KvTVerdict other) {
        if (other.failure < failure) {
            *this = std::move(other);
        }
    }
};

/// An error that the device access libraries have reported.
struct KvTErrorInfo {
    /// Number of the error.
    std::uint32_t code = 0;
    /// The error in words; UTF-8.
    std::string text;
    /// 0: the error arose on the host; otherwise the serial number of the node that reported it.
    std::uint32_t originNode = 0;
    /// Seconds since the time base of the error manager; 0: not known.
    double seconds = 0;
    /// The software module that reported it; 0: not known.
    /// @{
    std::uint32_t mainModule = 0;
    std::uint32_t subModule = 0;
    /// @}
    /// Empty: not known.
    std::string function;
    /// 0: not known.
    std::uint32_t line = 0;
};

/// How far a session came. Each value includes those before it.
enum class KvEStage : std::uint8_t {
    created,
    archiveRead,
    targetFound,
    targetScanned,
    /// prepare() has returned 0.
    prepared,
    /// run() has locked the target.
    locked,
    /// All phases of the update have run.
    phasesRun,
    /// run() has ended.
    ended,
    rebooted
};

/// Result of a session for one element or update file.
enum class KvEResult : std::uint8_t {
    notPlanned,
    notStarted,
    /// Its update file was missing when its phase began.
    fileMissing,
    /// An earlier update on the same board has failed.
    cancelled,
    failed,
    /// Installed, transferred or written, as far as the target has reported no error.
    updated,
    /// The session ended while it was under way.
    inProgress
};

/// The call that made an element or file fail.
enum class KvEFailedCall : std::uint8_t {
    none,
    transferFile,
    update2,
    /// The status query failed, or the target reported a failed state.
    updateStatus2,
    /// The target reported errors of the finished update, or could not be asked for them.
    updateErrors2,
    /// A file could not be written into the target's file system.
    writeFile
};

/// Outcome of a session for one element.
struct KvTElementOutcome {
    /// Its result.
    KvEResult result = KvEResult::notPlanned;
    /// The call that failed.
    KvEFailedCall failedCall = KvEFailedCall::none;
    /// What the target answered to the last status query: 1 running, 2 succeeded, anything else failed; nothing if it
    /// did not answer any.
    std::optional<std::uint32_t> state;
    /// Its update file was watched, KvISession::watchFiles(), and was not the same any more before or after its
    /// transfer.
    bool fileChanged = false;
    /// The session's message about a file that could not be written, without line end.
    std::string message;
    /// The errors of its calls, then those that the target reported for it.
    std::vector<KvTErrorInfo> errors;
    /// Why it failed, was cancelled, is missing or was not started, in one sentence; empty otherwise.
    std::string reason;
};

/// Outcome of one phase for one update file.
struct KvTFileOutcome {
    /// Position among the accepted entries.
    std::uint32_t fileIndex = 0;
    /// Name of the update file, relative to the archive folder.
    std::string fileName;
    /// The phase, from 0.
    std::uint32_t phase = 0;
    /// Path in the target's file system for a file that is written there; empty for one that is transferred for an
    /// update.
    std::string targetPath;
    /// Its result.
    KvEResult result = KvEResult::notStarted;
};

/// The reports of the target at one moment.
struct KvTLook {
    /// False: the target could not be reached or scanned.
    bool succeeded = false;
    /// Why not, in one line.
    std::string message;
    /// Of each element of the plan, by its index; nothing if the target does not list it.
    std::vector<std::optional<KvTInstalled>> elements;
    /// The errors that the look collected.
    std::vector<KvTErrorInfo> errors;
};

/// How what the target reports of an element fits the plan. The first that holds counts.
enum class KvEVerified : std::uint8_t {
    /// It is a file that the inventory does not list.
    notListed,
    /// The target does not list it any more.
    gone,
    /// The target has reported what was planned.
    asExpected,
    /// Neither its version nor its checksum can be compared.
    notJudged,
    /// It reports exactly what it reported before the update. It may change at a reboot.
    unchanged,
    /// It reports something else than planned, or its update file changed while it was used.
    differs
};
inline constexpr std::size_t verifiedCount = 6;

/// An element beside what the target reports of it.
struct KvTVerifiedElement {
    /// The element of the plan.
    std::uint32_t index = 0;
    /// How it fits the plan.
    KvEVerified result = KvEVerified::notJudged;
    /// Nothing if the target does not list it.
    std::optional<KvTInstalled> found;
    /// The element reports the checksum 0 and differs: a plan takes that for up to date and leaves the element; a
    /// forced update does not.
    bool leftByPlan = false;
    /// Its update file changed while it was used: nobody knows what was installed.
    bool fileChanged = false;
};

/// The reports of the target beside the plan.
struct KvTVerification {
    /// The reports of the target.
    KvTLook look;
    /// In the order of the plan: those that the session updated or, without an update, those that have an entry and are
    /// not left out.
    std::vector<KvTVerifiedElement> elements;

    /// The number of elements with this result.
    [[nodiscard]] std::size_t count(KvEVerified result) const {
        return static_cast<std::size_t>(
            std::count_if(elements.begin(), elements.end(),
                          [result](const KvTVerifiedElement& element) { return element.result == result; }));
    }
};

/// The outcome of a session.
struct KvTOutcome {
    /// How far the session came.
    KvEStage stage = KvEStage::created;
    /// Whether it succeeded, and why not.
    KvTVerdict verdict;
    /// Of each element of the plan, by its index; empty without a plan.
    std::vector<KvTElementOutcome> elements;
    /// In the order in which they were transferred or written; those that were never begun follow.
    std::vector<KvTFileOutcome> files;
    /// The errors of the session that belong to no element.
    std::vector<KvTErrorInfo> errors;
};

} // namespace KvNReflasher
