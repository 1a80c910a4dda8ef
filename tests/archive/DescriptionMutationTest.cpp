#include "ArchiveFixture.h"
#include "CollectingFindings.h"
#include "RandomDescriptions.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

std::size_t occurrences(std::wstring_view text, std::wstring_view word) {
    std::size_t count = 0;
    for (std::size_t place = text.find(word); place != std::wstring_view::npos; place = text.find(word, place + 1)) {
        ++count;
    }
    return count;
}

/// Reads descriptions of any shape twice: as the library does, and as a checking tool does that goes on after errors.
class DescriptionMutation : public ArchiveTest {
protected:
    /// True when both readings fit together.
    bool readingsFit(const std::string& text) {
        SCOPED_TRACE(text);
        const bool isAccepted = readDescription(text);
        const std::wstring read = messages();
        const std::size_t filesRead = archive().files().size();

        KvCFirmwareArchive checked(writer(), options());
        CollectingFindings findings(writer());
        forgetMessages();
        EXPECT_EQ(isAccepted, checked.parseDescription(pathOf(L"archive.json"), findings));
        EXPECT_EQ(isAccepted, findings.errors().empty());
        EXPECT_EQ(findings.errors().size(), findings.errorCount());
        EXPECT_EQ(findings.errors().size(), occurrences(messages(), L"ERROR: "));
        EXPECT_EQ(findings.warnings().size(), occurrences(messages(), L"WARNING: "));
        EXPECT_EQ(findings.warnings().size(), checked.ignoredEntryCount());
        EXPECT_EQ(isAccepted ? 0U : 1U, occurrences(read, L"ERROR: "));
        EXPECT_EQ(read, messages().substr(0, read.size()));
        EXPECT_LE(filesRead, checked.files().size());
        if (isAccepted) {
            EXPECT_EQ(read, messages());
            EXPECT_EQ(filesRead, checked.files().size());
        }
        mostErrors_ = std::max(mostErrors_, findings.errors().size());
        accepted_ += isAccepted ? 1U : 0U;
        return !HasFailure();
    }

    [[nodiscard]] std::size_t mostErrors() const { return mostErrors_; }
    [[nodiscard]] unsigned accepted() const { return accepted_; }

private:
    std::size_t mostErrors_ = 0;
    unsigned accepted_ = 0;
};

TEST_F(DescriptionMutation, ValuesAnywhereMayBeOfAnyShape) {
    RandomDescriptions random(4711);
    for (unsigned round = 0; round < 1500; ++round) {
        JsonModel description = random.description(4);
        for (std::size_t count = random.below(6); count > 0; --count) {
            random.mutate(description);
        }
        ASSERT_TRUE(readingsFit(description.write()));
    }
    EXPECT_GT(mostErrors(), 5U);
    EXPECT_GT(accepted(), 100U);
}

TEST_F(DescriptionMutation, BytesAnywhereMayBeWrong) {
    RandomDescriptions random(1234);
    for (unsigned round = 0; round < 1000; ++round) {
        std::string text = random.description(3).write();
        random.scramble(text);
        ASSERT_TRUE(readingsFit(text));
    }
    EXPECT_GT(accepted(), 20U);
}

TEST_F(DescriptionMutation, ADescriptionMayEndAnywhere) {
    const std::string text = ArchiveBuilder().entry(goodEntry()).entry(entryWithBoards(goodBoard().text())).text();
    for (std::size_t size = 0; size < text.size(); ++size) {
        ASSERT_TRUE(readingsFit(text.substr(0, size)));
    }
    EXPECT_EQ(0U, accepted());
}

} // namespace
