#pragma once

#include "ArchiveBuilder.h"
#include "ArchiveFindingSearch.h"
#include "KvTOptions.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

/// Checks archives in a folder of its own, which has an update file "a.bin" without header.
class CheckTest : public testing::Test {
protected:
    CheckTest();

    /// Everything found in an archive with this description, but for files that it does not name.
    [[nodiscard]] std::vector<KvNReflasher::KvTFinding> check(std::string_view description);
    /// Everything found, files included that it does not name.
    [[nodiscard]] std::vector<KvNReflasher::KvTFinding> checkFolder(std::string_view description);
    /// The one finding of this archive; a test failure when there is another number of them.
    [[nodiscard]] KvNReflasher::KvTFinding onlyFinding(std::string_view description);
    /// The codes of what is found, in order, separated by blanks.
    [[nodiscard]] std::string codes(std::string_view description);

    /// The first error message of the reader itself for the description written last, without its beginning and the
    /// end of its line; empty when it reads the archive. Expects the archive to give it as its refusal.
    [[nodiscard]] std::string readersFirstError() const;

    [[nodiscard]] const ScratchFolder& folder() const { return folder_; }
    [[nodiscard]] const KvNReflasher::KvTOptions& options() const { return options_; }

private:
    ScratchFolder folder_;
    KvNReflasher::KvTOptions options_{};
};

/// The codes of findings, separated by blanks.
[[nodiscard]] std::string codesOf(const std::vector<KvNReflasher::KvTFinding>& findings);
/// Where a finding is: "line:column path".
[[nodiscard]] std::string placeOf(const KvNReflasher::KvTFinding& finding);
