#include "KvDocuments.h"
#include "KvRuns.h"

#include <array>
#include <cstddef>

namespace KvNReflasher {

namespace {

/// The words of an enumeration, in its order; `last` is its last value.
template <auto last, typename... Word>
consteval auto wordsUpTo(Word... word) {
    static_assert(sizeof...(word) == static_cast<std::size_t>(last) + 1, "each value has one word");
    return std::array<const char*, sizeof...(word)>{word...};
}

constexpr auto failureWords =
    wordsUpTo<KvEFailure::none>("archive", "target", "stale", "unsupported", "selection", "locked", "stopped",
                                "elements", "errors", "reboot", "verification", "output", "none");
constexpr auto entryModeWords = wordsUpTo<KvEEntryMode::upgrade>("standard", "upgrade");
constexpr auto reasonWords = wordsUpTo<KvEReason::inDoubt>(
    "version-differs", "checksum-differs", "invalid", "inactive", "forced", "up-to-date", "newer-installed", "no-entry",
    "feature-level", "custom-left-out", "disabled", "carrier-board-missing", "downgrade-left-out", "content-differs",
    "unlisted-left-out", "written-before", "done-before", "in-doubt");
constexpr auto matchTestWords =
    wordsUpTo<KvEMatchTest::none>("board-type", "board-variant", "board-id", "addressing", "id", "target-path",
                                  "hw-compatibility-id", "sw-compatibility-id", "none");
constexpr auto hiddenByWords = wordsUpTo<KvEHiddenBy::configuration>("board-type-filter", "serial-number-filter",
                                                                     "element-name-filter", "configuration");
constexpr auto resultWords = wordsUpTo<KvEResult::inProgress>("not-planned", "not-started", "file-missing", "cancelled",
                                                              "failed", "updated", "in-progress");
constexpr auto verifiedWords =
    wordsUpTo<KvEVerified::differs>("not-listed", "gone", "as-expected", "not-judged", "unchanged", "differs");
static_assert(verifiedWords.size() == verifiedCount);
constexpr auto stageWords = wordsUpTo<KvEStage::rebooted>("created", "archive-read", "target-found", "target-scanned",
                                                          "prepared", "locked", "phases-run", "ended", "rebooted");
constexpr auto failedCallWords = wordsUpTo<KvEFailedCall::writeFile>("none", "transfer-file", "update", "update-status",
                                                                     "update-errors", "write-file");
constexpr auto outlookWords = wordsUpTo<KvEOutlook::disabled>("would-update", "up-to-date", "no-entry", "disabled");
static_assert(outlookWords.size() == outlookCount);
constexpr auto severityWords = wordsUpTo<KvESeverity::warning>("error", "warning");
constexpr auto changeWords = wordsUpTo<KvEChange::changed>("same", "added", "removed", "up", "down", "changed");
constexpr auto settingSourceWords = wordsUpTo<KvESettingSource::builtIn>("command-line", "settings-file", "default");
constexpr auto settingsFileWords = wordsUpTo<KvESettingsFile::ignored>("read", "absent", "ignored");
constexpr auto sealWords = wordsUpTo<KvESeal::trusted>("unsealed", "sealed", "signed-by-stranger", "trusted");

constexpr auto unlistedFilesWords = wordsUpTo<KvEUnlistedFiles::never>("always", "changed", "never");
constexpr auto runStateWords = wordsUpTo<KvERunState::brokenOff>("running", "complete", "stopped", "broken-off");
constexpr auto progressWords =
    wordsUpTo<KvEElementProgress::inProgress>("not-planned", "untouched", "done", "failed", "in-progress");

template <typename Words, typename Value>
const char* wordOf(const Words& words, Value value) {
    return words.at(static_cast<std::size_t>(value));
}

} // namespace

int exitCodeOf(KvEFailure failure) {
    using enum KvEFailure;
    enum ExitCode : int {
        success = 0,
        failed = 1,
        targetNotSupported = 2,
        archiveRefused = 3,
        noTarget = 4,
        targetLocked = 5,
        notVerified = 6,
        endedOnRequest = 7,
        wrongSelection = 8,
        notAsPlanned = 9
    };
    switch (failure) {
    case none:
        return success;
    case archive:
        return archiveRefused;
    case target:
        return noTarget;
    case stale:
        return notAsPlanned;
    case unsupported:
        return targetNotSupported;
    case selection:
        return wrongSelection;
    case locked:
        return targetLocked;
    case stopped:
        return endedOnRequest;
    case verification:
        return notVerified;
    case elements:
    case errors:
    case reboot:
    case output:
        return failed;
    }
    return failed;
}

const char* codeOf(KvEFailure failure) {
    return wordOf(failureWords, failure);
}

const char* codeOf(KvEEntryMode mode) {
    return wordOf(entryModeWords, mode);
}

const char* codeOf(KvEReason reason) {
    return wordOf(reasonWords, reason);
}

const char* codeOf(KvEMatchTest test) {
    return wordOf(matchTestWords, test);
}

const char* codeOf(KvEHiddenBy reason) {
    return wordOf(hiddenByWords, reason);
}

const char* codeOf(KvEResult result) {
    return wordOf(resultWords, result);
}

const char* codeOf(KvEVerified result) {
    return wordOf(verifiedWords, result);
}

const char* codeOf(KvEStage stage) {
    return wordOf(stageWords, stage);
}

const char* codeOf(KvEFailedCall call) {
    return wordOf(failedCallWords, call);
}

const char* codeOf(KvEOutlook outlook) {
    return wordOf(outlookWords, outlook);
}

const char* codeOf(KvESeverity severity) {
    return wordOf(severityWords, severity);
}

const char* codeOf(KvEChange change) {
    return wordOf(changeWords, change);
}

const char* codeOf(KvESeal seal) {
    return wordOf(sealWords, seal);
}

const char* codeOf(KvEUnlistedFiles which) {
    return wordOf(unlistedFilesWords, which);
}

const char* codeOf(KvERunState state) {
    return wordOf(runStateWords, state);
}

const char* codeOf(KvEElementProgress progress) {
    return wordOf(progressWords, progress);
}

const char* codeOf(KvESettingSource source) {
    return wordOf(settingSourceWords, source);
}

const char* codeOf(KvESettingsFile state) {
    return wordOf(settingsFileWords, state);
}

} // namespace KvNReflasher
