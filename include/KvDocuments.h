#pragma once

#include "KvIArchive.h"
#include "KvTOutcome.h"
#include "KvTPlan.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// JSON documents of sessions and archives: UTF-8, indented, with a line end. Each begins with its format and states the
// verdict. docs/documents.md describes them, docs/schemas has their schemas. Values that are not there (null pointers)
// leave out what depends on them. Bytes that are not UTF-8 are replaced by U+FFFD. All functions throw std::bad_alloc
// when memory is exhausted.

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
    /// The accepted entries of the archive; null if the session reads none.
    const std::vector<KvTArchiveEntry>* entries = nullptr;
};

/// Facts about the run of a session, for its report.
struct KvTReportFacts {
    /// "plan", "update", "verify" or "reboot"; part of the format's name.
    std::string command;
    /// Version of the program that writes the report.
    std::string toolVersion;
    /// RFC 3339.
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
[[nodiscard]] KV_REFLASH_API std::string planDocument(const KvTPlan* plan, const std::vector<KvTArchiveEntry>& entries,
                                                      const KvTVerdict& verdict);
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
/// Everything that a plan's document has, and what came of it.
[[nodiscard]] KV_REFLASH_API std::string reportDocument(const KvTSessionRecord& session, const KvTReportFacts& facts);

/// The entries that no element of any target takes, in their order. Empty if no target has a plan.
[[nodiscard]] KV_REFLASH_API std::vector<KvTArchiveEntry> unmatchedEntries(const KvTArchiveContent& content,
                                                                           const std::vector<KvTMatrixTarget>& targets);

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

} // namespace KvNReflasher
