#include "KvDocuments.h"
#include "KvRuns.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

namespace {

using namespace KvNReflasher;

/// Every value of an enumeration, up to its last one, has a word of its own.
template <typename Enumeration>
void expectOwnWords(Enumeration last) {
    const std::size_t count = static_cast<std::size_t>(last) + 1;
    std::set<std::string> words;
    for (std::size_t index = 0; index < count; ++index) {
        const std::string word = codeOf(static_cast<Enumeration>(index));
        EXPECT_TRUE(std::regex_match(word, std::regex("[a-z]+(-[a-z]+)*"))) << word;
        words.insert(word);
    }
    EXPECT_EQ(count, words.size());
}

TEST(Codes, EveryValueHasAWordOfItsOwn) {
    expectOwnWords(KvEFailure::none);
    expectOwnWords(KvEEntryMode::upgrade);
    expectOwnWords(KvEReason::inDoubt);
    expectOwnWords(KvEMatchTest::none);
    expectOwnWords(KvEHiddenBy::configuration);
    expectOwnWords(KvEResult::inProgress);
    expectOwnWords(KvEVerified::differs);
    expectOwnWords(KvEStage::rebooted);
    expectOwnWords(KvEFailedCall::writeFile);
    expectOwnWords(KvEOutlook::disabled);
    expectOwnWords(KvESeverity::warning);
    expectOwnWords(KvESettingSource::builtIn);
    expectOwnWords(KvESettingsFile::ignored);
    expectOwnWords(KvEUnlistedFiles::never);
    expectOwnWords(KvERunState::brokenOff);
    expectOwnWords(KvEElementProgress::inProgress);
}

struct CodeRow {
    const char* word;
    const char* code;
};

const CodeRow codeRows[] = {{"archive", codeOf(KvEFailure::archive)},
                            {"target", codeOf(KvEFailure::target)},
                            {"stale", codeOf(KvEFailure::stale)},
                            {"unsupported", codeOf(KvEFailure::unsupported)},
                            {"selection", codeOf(KvEFailure::selection)},
                            {"locked", codeOf(KvEFailure::locked)},
                            {"stopped", codeOf(KvEFailure::stopped)},
                            {"elements", codeOf(KvEFailure::elements)},
                            {"errors", codeOf(KvEFailure::errors)},
                            {"reboot", codeOf(KvEFailure::reboot)},
                            {"verification", codeOf(KvEFailure::verification)},
                            {"output", codeOf(KvEFailure::output)},
                            {"standard", codeOf(KvEEntryMode::standard)},
                            {"upgrade", codeOf(KvEEntryMode::upgrade)},
                            {"version-differs", codeOf(KvEReason::versionDiffers)},
                            {"checksum-differs", codeOf(KvEReason::checksumDiffers)},
                            {"invalid", codeOf(KvEReason::invalid)},
                            {"inactive", codeOf(KvEReason::inactive)},
                            {"forced", codeOf(KvEReason::forced)},
                            {"up-to-date", codeOf(KvEReason::upToDate)},
                            {"newer-installed", codeOf(KvEReason::newerInstalled)},
                            {"no-entry", codeOf(KvEReason::noEntry)},
                            {"feature-level", codeOf(KvEReason::featureLevel)},
                            {"custom-left-out", codeOf(KvEReason::customLeftOut)},
                            {"disabled", codeOf(KvEReason::disabled)},
                            {"carrier-board-missing", codeOf(KvEReason::carrierBoardMissing)},
                            {"downgrade-left-out", codeOf(KvEReason::downgradeLeftOut)},
                            {"content-differs", codeOf(KvEReason::contentDiffers)},
                            {"unlisted-left-out", codeOf(KvEReason::unlistedLeftOut)},
                            {"written-before", codeOf(KvEReason::writtenBefore)},
                            {"done-before", codeOf(KvEReason::doneBefore)},
                            {"in-doubt", codeOf(KvEReason::inDoubt)},
                            {"board-type", codeOf(KvEMatchTest::boardType)},
                            {"board-variant", codeOf(KvEMatchTest::boardVariant)},
                            {"board-id", codeOf(KvEMatchTest::boardId)},
                            {"addressing", codeOf(KvEMatchTest::addressing)},
                            {"id", codeOf(KvEMatchTest::id)},
                            {"target-path", codeOf(KvEMatchTest::targetPath)},
                            {"hw-compatibility-id", codeOf(KvEMatchTest::hwCompatibilityId)},
                            {"sw-compatibility-id", codeOf(KvEMatchTest::swCompatibilityId)},
                            {"board-type-filter", codeOf(KvEHiddenBy::boardTypeFilter)},
                            {"serial-number-filter", codeOf(KvEHiddenBy::serialNumberFilter)},
                            {"element-name-filter", codeOf(KvEHiddenBy::elementNameFilter)},
                            {"configuration", codeOf(KvEHiddenBy::configuration)},
                            {"not-planned", codeOf(KvEResult::notPlanned)},
                            {"not-started", codeOf(KvEResult::notStarted)},
                            {"file-missing", codeOf(KvEResult::fileMissing)},
                            {"cancelled", codeOf(KvEResult::cancelled)},
                            {"failed", codeOf(KvEResult::failed)},
                            {"updated", codeOf(KvEResult::updated)},
                            {"in-progress", codeOf(KvEResult::inProgress)},
                            {"not-listed", codeOf(KvEVerified::notListed)},
                            {"gone", codeOf(KvEVerified::gone)},
                            {"as-expected", codeOf(KvEVerified::asExpected)},
                            {"not-judged", codeOf(KvEVerified::notJudged)},
                            {"unchanged", codeOf(KvEVerified::unchanged)},
                            {"differs", codeOf(KvEVerified::differs)},
                            {"created", codeOf(KvEStage::created)},
                            {"archive-read", codeOf(KvEStage::archiveRead)},
                            {"target-found", codeOf(KvEStage::targetFound)},
                            {"target-scanned", codeOf(KvEStage::targetScanned)},
                            {"prepared", codeOf(KvEStage::prepared)},
                            {"locked", codeOf(KvEStage::locked)},
                            {"phases-run", codeOf(KvEStage::phasesRun)},
                            {"ended", codeOf(KvEStage::ended)},
                            {"rebooted", codeOf(KvEStage::rebooted)},
                            {"transfer-file", codeOf(KvEFailedCall::transferFile)},
                            {"update", codeOf(KvEFailedCall::update2)},
                            {"update-status", codeOf(KvEFailedCall::updateStatus2)},
                            {"update-errors", codeOf(KvEFailedCall::updateErrors2)},
                            {"write-file", codeOf(KvEFailedCall::writeFile)},
                            {"would-update", codeOf(KvEOutlook::wouldUpdate)},
                            {"up-to-date", codeOf(KvEOutlook::upToDate)},
                            {"no-entry", codeOf(KvEOutlook::noEntry)},
                            {"disabled", codeOf(KvEOutlook::disabled)},
                            {"error", codeOf(KvESeverity::error)},
                            {"warning", codeOf(KvESeverity::warning)},
                            {"command-line", codeOf(KvESettingSource::commandLine)},
                            {"settings-file", codeOf(KvESettingSource::settingsFile)},
                            {"default", codeOf(KvESettingSource::builtIn)},
                            {"read", codeOf(KvESettingsFile::read)},
                            {"absent", codeOf(KvESettingsFile::absent)},
                            {"ignored", codeOf(KvESettingsFile::ignored)},
                            {"always", codeOf(KvEUnlistedFiles::always)},
                            {"changed", codeOf(KvEUnlistedFiles::changed)},
                            {"never", codeOf(KvEUnlistedFiles::never)},
                            {"running", codeOf(KvERunState::running)},
                            {"complete", codeOf(KvERunState::complete)},
                            {"stopped", codeOf(KvERunState::stopped)},
                            {"broken-off", codeOf(KvERunState::brokenOff)},
                            {"not-planned", codeOf(KvEElementProgress::notPlanned)},
                            {"untouched", codeOf(KvEElementProgress::untouched)},
                            {"done", codeOf(KvEElementProgress::done)},
                            {"failed", codeOf(KvEElementProgress::failed)},
                            {"in-progress", codeOf(KvEElementProgress::inProgress)}};

TEST(Codes, WordsNameTheirValues) {
    for (const CodeRow& row : codeRows) {
        EXPECT_STREQ(row.word, row.code);
    }
}

} // namespace
