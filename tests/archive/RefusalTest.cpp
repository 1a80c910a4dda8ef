#include "ArchiveFixture.h"
#include "CollectingFindings.h"

#include <gmock/gmock.h>

#include <string>

namespace {

struct SentenceRow {
    const char* name;
    std::string message;
    std::string sentence;

    friend void PrintTo(const SentenceRow& row, std::ostream* stream) { *stream << row.name; }
};

class SentenceOf : public testing::TestWithParam<SentenceRow> {};

TEST_P(SentenceOf, IsTheMessageWithoutItsBeginningAndItsLineEnd) {
    EXPECT_EQ(sentenceOf(GetParam().message), GetParam().sentence);
}

INSTANTIATE_TEST_SUITE_P(Messages, SentenceOf,
                         testing::Values(SentenceRow{"Error", "ERROR: It is wrong.\n", "It is wrong."},
                                         SentenceRow{"Warning", "WARNING: It is odd.\n", "It is odd."},
                                         SentenceRow{"TwoLines", "ERROR: One.\n       Two.\n", "One. Two."},
                                         SentenceRow{"Plain", "It is.", "It is."}, SentenceRow{"Empty", "", ""}),
                         [](const auto& row) { return row.param.name; });

using Refusal = ArchiveTest;

TEST_F(Refusal, IsEmptyWhenNothingWasReadAndWhenAllIsWell) {
    EXPECT_EQ(archive().refusal(), "");
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(goodEntry()).entry(R"({"featureLevel": 3})")));
    EXPECT_EQ(archive().refusal(), "");
}

TEST_F(Refusal, IsTheFirstErrorOfTheDescription) {
    const ArchiveBuilder description = ArchiveBuilder().entry(R"({"featureLevel": 3})").entry("{}").entry("1");
    const std::string refusal = "File entry 1 is invalid. A mandatory property is missing or invalid.";
    EXPECT_FALSE(readDescription(description));
    EXPECT_EQ(archive().refusal(), refusal);
    EXPECT_FALSE(readArchive(description));
    EXPECT_EQ(archive().refusal(), refusal);
}

TEST_F(Refusal, IsTheFirstErrorOfTheUpdateFiles) {
    writeFile("readme", "text");
    EXPECT_FALSE(readArchive(ArchiveBuilder()
                                 .entry(goodEntry().set("name", "\"readme\"").remove("checksumCrc32"))
                                 .entry(goodEntry().set("name", "\"missing\"").remove("checksumCrc32"))));
    EXPECT_EQ(archive().refusal(), "Cannot read checksum from update file readme.");
}

TEST_F(Refusal, SaysOfAFileThatIsNoRegularOneWhatItIs) {
    makeFolder("folder");
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(goodEntry().set("name", "\"folder\"").remove("checksumCrc32"))));
    EXPECT_EQ(archive().refusal(),
              "Cannot read checksum from update file folder. (it is a folder, not a regular file)");
    options().descriptionFileName = L"folder";
    EXPECT_FALSE(readDescription("text"));
    EXPECT_THAT(archive().refusal(), testing::EndsWith("folder (it is a folder, not a regular file)"));
}

TEST_F(Refusal, HasTwoLinesInOne) {
    EXPECT_FALSE(readDescription(ArchiveBuilder().info("formatVersion", R"("2.0")")));
    EXPECT_EQ(archive().refusal(), "This firmware archive cannot be processed by the update tool. Do not use firmware "
                                   "archives with update tools from different Korvel releases.");
}

TEST_F(Refusal, IsOneLineWhateverNamesItHolds) {
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(goodEntry().set("name", R"("a\r\nb")").remove("checksumCrc32"))));
    EXPECT_THAT(archive().refusal(), testing::EndsWith("a\\r\\nb' not found."));
}

TEST_F(Refusal, ShowsWideAndNarrowNamesAsUtf8) {
    options().descriptionFileName = L"\u00FC.json";
    EXPECT_FALSE(readDescription("text"));
    EXPECT_THAT(archive().refusal(), testing::EndsWith("\\\xC3\xBC.json"));
    options().descriptionFileName = L"archive.json";
    writeFile("\xC3\xBC.bin", "text");
    EXPECT_FALSE(
        readArchive(ArchiveBuilder().entry(goodEntry().set("name", "\"\xC3\xBC.bin\"").remove("checksumCrc32"))));
    EXPECT_EQ(archive().refusal(), "Cannot read checksum from update file \xC3\xBC.bin.");
}

TEST_F(Refusal, IsThatOfTheLastReading) {
    EXPECT_FALSE(readDescription(ArchiveBuilder().entry("1")));
    EXPECT_FALSE(readDescriptionAgain(ArchiveBuilder().entry("{}")));
    EXPECT_EQ(archive().refusal(), "File entry 0 is invalid. A mandatory property is missing or invalid.");
    EXPECT_TRUE(readDescriptionAgain(ArchiveBuilder().entry(goodEntry())));
    EXPECT_EQ(archive().refusal(), "");
}

TEST_F(Refusal, OfFindingsThatGoOnIsTheFirstError) {
    writeFile("archive.json", ArchiveBuilder().entry(R"({"featureLevel": 3})").entry("1").entry("{}").text());
    CollectingFindings findings(writer());
    EXPECT_EQ(findings.firstError(), "");
    EXPECT_FALSE(archive().parseDescription(pathOf(L"archive.json"), findings));
    EXPECT_GT(findings.errorCount(), 1U);
    EXPECT_EQ(findings.firstError(), "File entry 1 is invalid.");
}

class DescriptionText : public ArchiveTest {
protected:
    /// What the reader prints of a description in memory.
    std::wstring messagesOf(const std::optional<std::string>& text) {
        forgetMessages();
        KvCArchiveFindings findings(writer());
        isRead_ = archive().parseDescription(pathOf(L"archive.json"), text, findings);
        return messages();
    }
    [[nodiscard]] bool isRead() const { return isRead_; }

private:
    bool isRead_ = false;
};

TEST_F(DescriptionText, IsJudgedLikeAFileOfThatText) {
    for (const std::string& text :
         {ArchiveBuilder().entry(goodEntry()).text(), ArchiveBuilder().entry("1").text(), std::string("{"),
          std::string(), "\xEF\xBB\xBF" + ArchiveBuilder().entry(goodEntry()).text()}) {
        const bool fileIsRead = readDescription(text);
        const std::wstring messagesOfFile = messages();
        const std::size_t entriesOfFile = archive().files().size();
        EXPECT_EQ(messagesOf(text), messagesOfFile) << text;
        EXPECT_EQ(isRead(), fileIsRead) << text;
        EXPECT_EQ(archive().files().size(), entriesOfFile) << text;
    }
}

TEST_F(DescriptionText, ThatIsNotThereCannotBeOpened) {
    writeFile("archive.json", ArchiveBuilder().entry(goodEntry()).text());
    EXPECT_EQ(messagesOf(std::nullopt), L"ERROR: Cannot open archive description file " + pathOf(L"archive.json\n"));
    EXPECT_FALSE(isRead());
}

} // namespace
