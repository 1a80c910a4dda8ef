#pragma once

#include "KvTOutcome.h"
#include "KvTSavedPlan.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The journal: a folder with one file for each run, which is written while the run goes on and survives whatever ends
// it. Texts are UTF-8.

namespace KvNReflasher {

/// How a session keeps a journal.
struct KvTJournalOptions {
    /// Folder of the journal; made if it is missing. Its files can be read and written by this user alone.
    std::wstring folder;
    /// The run does not begin, and no phase of it, unless that was written. Otherwise a journal that cannot be written
    /// is given up, and the run goes on.
    bool isRequired = false;
    /// The places that say, beside address and serial numbers, which target it is: the folders of emulated ones.
    std::vector<std::string> places;
    /// "update" or "reboot".
    std::string command = "update";
    /// Id of the saved plan that is to be run; empty: none.
    std::string planId;
    /// Id of the run that goes on; empty: none.
    std::string resumes;
};

/// The state of a run.
enum class KvERunState : std::uint8_t {
    /// Its process goes on.
    running,
    /// It has ended by itself, whatever came of it.
    complete,
    /// It was ended on request.
    stopped,
    /// Its process has ended in the middle.
    brokenOff
};

/// How far the update of an element came, as far as the journal knows.
enum class KvEElementProgress : std::uint8_t {
    /// The plan leaves it.
    notPlanned,
    /// It was to be updated, and was not begun.
    untouched,
    /// Its update has succeeded.
    done,
    /// Its update has failed.
    failed,
    /// It had begun, or may have, and its end was not seen.
    inProgress
};

/// A run, in short.
struct KvTRun {
    /// Begins with its time; runs are sorted by it.
    std::string id;
    /// What has become of it.
    KvERunState state = KvERunState::brokenOff;
    /// "update" or "reboot".
    std::string command;
    /// Version of the library that has run it.
    std::string toolVersion;
    /// RFC 3339, UTC. The end is empty unless the run has written it.
    /// @{
    std::string begin;
    std::string end;
    /// @}
    /// Who has started it, and on which computer.
    /// @{
    std::string user;
    std::string computer;
    /// @}
    /// The target: as given, its IPv4 address, the serial numbers of its processor nodes, and the places of
    /// KvTJournalOptions.
    /// @{
    std::string target;
    std::string targetAddress;
    std::vector<std::uint32_t> nodeSerialNumbers;
    std::vector<std::string> places;
    /// @}
    /// Path of the archive, from the root; empty if the run has read none.
    std::string archiveFolder;
    /// The archive's information about itself; nothing if the run has read none.
    std::optional<KvTArchiveIdentity> archive;
    /// The verdict and the exit code that the run has written at its end.
    /// @{
    KvTVerdict verdict;
    std::int32_t exitCode = 0;
    /// @}
    /// Id of the saved plan that it has run, and of the run that it has gone on with; empty: none.
    /// @{
    std::string planId;
    std::string resumes;
    /// @}
    /// Id of the last run that has gone on with it; empty: none.
    std::string resumedBy;
    /// Why the file of the run is not to be trusted from some line on; empty: it is whole. A last line that is cut is
    /// not a fault.
    std::string fault;

    /// It did not come to its end, and no other run has gone on with it.
    [[nodiscard]] bool isOpen() const {
        return (state == KvERunState::stopped || state == KvERunState::brokenOff) && resumedBy.empty();
    }
};

/// A run with all that its journal knows.
struct KvTRunRecord {
    /// The run in short.
    KvTRun run;
    /// As it was when the run began; its id is that of the saved plan, or empty.
    KvTSavedPlan plan;
    /// Of each element of the plan, by its index.
    std::vector<KvEElementProgress> progress;
    /// The outcome as far as it was written; a run that broke off has the verdict `errors`.
    KvTOutcome outcome;
    /// Nothing if the run did not look at the target in the end.
    std::optional<KvTVerification> verification;
};

/// An element of a run that goes on.
struct KvTResumedElement {
    /// The element of the session's plan.
    std::uint32_t index = 0;
    /// How far the earlier run came with it.
    KvEElementProgress progress = KvEElementProgress::untouched;
    /// The target reports what the earlier run was to install; of a file that the inventory does not list, nobody asks.
    bool isReported = false;
    /// It was in progress and reports neither version nor checksum.
    bool isInDoubt = false;
};

/// What is left of a run.
struct KvTResumption {
    /// Why it cannot go on: everything in which target and archive differ from what they were, a sentence each.
    std::vector<std::string> differences;
    /// The elements that the earlier run was to update, or has left as the one before it had, in the order of the
    /// session's plan.
    std::vector<KvTResumedElement> elements;
};

/// Runs of a journal.
struct KvTRunList {
    /// From the oldest to the newest.
    std::vector<KvTRun> runs;
    /// Files of the folder that cannot be read, a sentence each; if the folder cannot be listed, that alone.
    std::vector<std::string> faults;
};

/// Lists the runs of the journal in `folder`; none if there is no such folder. Throws std::bad_alloc when memory is
/// exhausted, as the following.
[[nodiscard]] KV_REFLASH_API KvTRunList listRuns(const std::wstring& folder);
/// Reads a run. Nothing, with a `reason`, if there is none of this id, or if it cannot be read.
[[nodiscard]] KV_REFLASH_API std::optional<KvTRunRecord> readRun(const std::wstring& folder, const std::string& id,
                                                                 std::string& reason);

/// The words for values: stable codes of the documents, with hyphens.
/// @{
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvERunState state);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEElementProgress progress);
[[nodiscard]] KV_REFLASH_API const char* codeOf(KvEUnlistedFiles which);
/// @}

} // namespace KvNReflasher
