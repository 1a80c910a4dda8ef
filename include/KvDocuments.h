#pragma once

#include "KvIArchive.h"
#include "KvISession.h"
#include "KvTComparison.h"
#include "KvTOutcome.h"
#include "KvTPlan.h"
#include "KvTSettings.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// JSON documents of sessions, archives and settings: UTF-8, indented, with a line end. Each begins with its format and
// states the verdict. Values that are not there (null pointers) leave out what depends on them. Then the lines of
// events. All are described in docs/documents.md and have schemas in docs/schemas. Bytes that are not UTF-8 are
// replaced by U+FFFD. All functions throw std::bad_alloc when memory is exhausted.

namespace KvNReflasher {

/// Plan, outcome and verification of a session, for its documents.
struct KvTSessionRecord {
    /// The verdict of the whole command, which may say more than the session's own.
    KvTVerdict verdict;
    /// Null if the target was not scanned.
    const KvTPlan* plan = nullptr;
    /// Null if there is none.
    const KvTOutcome* outcome = nullptr;
    /// Of the elements of `plan`; null if nothing was verified.
    const KvTVerification* verification = nullptr;
    /// The accepted entries of the archive; null: none.
    const std::vector<KvTArchiveEntry>* entries = nullptr;
};

/// Facts about the run of a session, for its document.
struct KvTReportFacts {
    /// "plan", "update", "verify" or "reboot"; part of the format's name.
    std::string command;
    /// Version of the program that writes the document.
    std::string toolVersion;
    /// RFC 3339. The end is empty of a run that has not come to its end.
    /// @{
    std::string begin;
    std::string end;
    /// @}
    /// As given.
    std::string target;
    /// Empty if the session reads no archive.
    std::string archiveFolder;
    /// The exit code of the program.
    int exitCode = 0;
    /// The messages of the session.
    std::string messages;
};

/// A target of a matrix.
struct KvTMatrixTarget {
    /// Its folder, as given.
    std::string folder;
    /// Empty: none.
    std::string address;
    /// Why it could not be planned for.
    KvTVerdict verdict;
    /// Nothing if the target was not scanned.
    std::optional<KvTPlan> plan;
};

/// The plan of an element in one word.
enum class KvEOutlook : std::uint8_t { wouldUpdate, upToDate, noEntry, disabled };
inline constexpr std::size_t outlookCount = 4;
[[nodiscard]] KV_REFLASH_API KvEOutlook outlookOf(const KvTPlannedElement& element);

/// Of an archive that was refused: the verdict alone.
[[nodiscard]] KV_REFLASH_API std::string contentDocument(const KvTArchiveContent& content, const KvTVerdict& verdict);
[[nodiscard]] KV_REFLASH_API std::string elementsDocument(const KvTPlan* plan, const KvTVerdict& verdict);
/// The explained elements, in the order of `explanations`, whose indices are those of elements of `plan`.
[[nodiscard]] KV_REFLASH_API std::string explainDocument(const KvTPlan* plan,
                                                         const std::vector<KvTExplanation>& explanations,
                                                         const std::vector<KvTHiddenElement>& hidden,
                                                         const KvTVerdict& verdict);
[[nodiscard]] KV_REFLASH_API std::string matrixDocument(const KvTArchiveContent& content,
                                                        const std::vector<KvTMatrixTarget>& targets,
                                                        const KvTVerdict& verdict);
/// `file`: path of the description.
[[nodiscard]] KV_REFLASH_API std::string checkDocument(const std::vector<KvTFinding>& findings, const std::string& file,
                                                       const KvTVerdict& verdict);
/// Two archives side by side, and the plans that a target's elements have with each; null: no target was asked.
[[nodiscard]] KV_REFLASH_API std::string compareDocument(const KvTComparison& comparison, const KvTPlan* before,
                                                         const KvTPlan* after, const KvTVerdict& verdict);
/// What is in force, and where each value comes from.
[[nodiscard]] KV_REFLASH_API std::string settingsDocument(const KvTSettings& settings, const KvTVerdict& verdict);
/// The document of plan, update, verify or reboot, and their report: the plan, and what came of it.
[[nodiscard]] KV_REFLASH_API std::string reportDocument(const KvTSessionRecord& session, const KvTReportFacts& facts);

/// The entries that no element of any target takes, in their order. Empty if no target has a plan.
[[nodiscard]] KV_REFLASH_API std::vector<KvTArchiveEntry> unmatchedEntries(const KvTArchiveContent& content,
                                                                           const std::vector<KvTMatrixTarget>& targets);

// The lines of events: JSON on one line, with a line end. `time` is RFC 3339 in UTC with milliseconds, such as
// "2026-03-01T12:34:56.789Z".

/// A command begins. Of the facts it states command, version of the program, target and archive folder.
[[nodiscard]] KV_REFLASH_API std::string runBeginEvent(const std::string& time, const KvTReportFacts& facts);
/// The plan is made.
[[nodiscard]] KV_REFLASH_API std::string planEvent(const std::string& time, const KvTPlan& plan);
/// The target is locked.
[[nodiscard]] KV_REFLASH_API std::string lockedEvent(const std::string& time);
/// The phase `number` begins; 0xFFFFFFFF: the last one is over.
[[nodiscard]] KV_REFLASH_API std::string phaseEvent(const std::string& time, std::uint32_t number);
/// The running phase has come so far.
[[nodiscard]] KV_REFLASH_API std::string progressEvent(const std::string& time, std::uint32_t percent);
/// An update file was transferred for this phase, or could not be.
[[nodiscard]] KV_REFLASH_API std::string transferEvent(const std::string& time, const std::string& fileName,
                                                       std::uint32_t phase, bool succeeded);
/// The update of an element begins.
[[nodiscard]] KV_REFLASH_API std::string elementStartEvent(const std::string& time, const KvTPlannedElement& element);
/// The update of an element has failed; `reason` as of KvTElementOutcome.
[[nodiscard]] KV_REFLASH_API std::string elementErrorEvent(const std::string& time, const KvTPlannedElement& element,
                                                           const std::string& reason);
/// The update of an element has ended; `reason` as of KvTElementOutcome.
[[nodiscard]] KV_REFLASH_API std::string elementEndEvent(const std::string& time, const KvTPlannedElement& element,
                                                         bool succeeded, KvEResult result, const std::string& reason);
/// The lock was given back, or could not be.
[[nodiscard]] KV_REFLASH_API std::string unlockedEvent(const std::string& time, bool succeeded);
/// The line of an event that a session with this plan notifies of. `phase`: the number of the phase that goes on;
/// `outcome`: that of the element that the event is about. Empty if the event has no line.
[[nodiscard]] KV_REFLASH_API std::string notifiedEvent(const std::string& time, const KvTEvent& event,
                                                       std::uint32_t phase, const KvTPlan& plan,
                                                       const KvTElementOutcome& outcome);
/// The target was looked at and judged.
[[nodiscard]] KV_REFLASH_API std::string verifyEvent(const std::string& time, const KvTVerification& verification,
                                                     const KvTVerdict& verdict);
/// The command ends.
[[nodiscard]] KV_REFLASH_API std::string runEndEvent(const std::string& time, const KvTVerdict& verdict, int exitCode);

/// Returns the exit code of a program that ends with this failure, as the console tool does; docs/commands.md has them.
[[nodiscard]] KV_REFLASH_API int exitCodeOf(KvEFailure failure);

// The words for values: stable codes of the documents, with hyphens. Documents write null for a failure, failed test or
// failed call of `none`.

[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEFailure failure);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEEntryMode mode);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEReason reason);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEMatchTest test);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEHiddenBy reason);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEResult result);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEVerified result);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEStage stage);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEFailedCall call);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEOutlook outlook);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvESeverity severity);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvESeal seal);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEChange change);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvESettingSource source);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvESettingsFile state);

} // namespace KvNReflasher
