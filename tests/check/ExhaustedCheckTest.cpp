#include "CheckFixture.h"
#include "FailingMemory.h"
#include "KvCArchive.h"
#include "UpdateFiles.h"

#include <cstddef>
#include <new>
#include <optional>
#include <string>

namespace {

/// Lets one allocation after the other fail.
class ExhaustedCheck : public CheckTest {
protected:
    ExhaustedCheck() {
        folder().write("image.bin", firmwareImage(KvCVersion("2.1"), 77));
        const std::string path = "\"sub/../../a rather long path that leads out of the archive folder.bin\"";
        folder().write(
            "archive.json",
            ArchiveBuilder()
                .entry(R"({"featureLevel": 3})")
                .entry(goodEntry().set("name", "\"image.bin\"").remove("checksumCrc32"))
                .entry(goodEntry().set("id", "6").set("name", path).set("a key \\u0041 that is not known", "[[[{}]]]"))
                .entry(entryWithBoards(R"({"boardType": ["QB", "QC"], "id": 1}, {"boardType": "QB", "id": 2})"))
                .entry(goodEntry().set("mode", "\"wrong\""))
                .text());
    }

    /// For each allocation that fails `operation` throws, or does without it and gives what `text` shows as `expected`.
    /// Nothing is left behind.
    template <typename Operation, typename Text>
    void sweep(Operation&& operation, Text&& text, const std::string& expected) {
        using Result = decltype(operation());
        EXPECT_EQ(text(operation()), expected); // what is made once is made
        std::size_t number = 0;
        for (bool hasStruck = true; hasStruck; ++number) {
            const std::ptrdiff_t blocksBefore = FailingMemory::blocksInUse();
            std::optional<Result> result;
            {
                const FailingMemory failing(number + 1);
                try {
                    result.emplace(operation());
                } catch (const std::bad_alloc&) {
                    result.reset();
                }
                hasStruck = FailingMemory::hasStruck();
            }
            ASSERT_TRUE(hasStruck || result) << "allocation " << number;
            ASSERT_EQ(result ? text(*result) : expected, expected) << "allocation " << number;
            result.reset();
            ASSERT_EQ(blocksBefore, FailingMemory::blocksInUse()) << "allocation " << number;
        }
        EXPECT_GT(number, 20U);
    }

    KvCArchive archive{options().archiveFolder, options().descriptionFileName};
};

TEST_F(ExhaustedCheck, FindingsAreCompleteOrThrow) {
    sweep([this] { return archive.findings(); }, codesOf,
          "entry-skipped version-mismatch outside-archive unknown-key unreachable-board mode-unknown");
}

TEST_F(ExhaustedCheck, TheContentIsCompleteOrThrows) {
    sweep([this] { return archive.content(); },
          [](const KvNReflasher::KvTArchiveContent& content) {
              return std::to_string(content.entries.size()) + " " + content.verdict.message;
          },
          "3 File entry 4 is invalid. Property \"mode\" is invalid.");
}

} // namespace
