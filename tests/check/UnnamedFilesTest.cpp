#include "CheckFixture.h"
#include "FolderFiles.h"
#include "MessageCapture.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

using KvNReflasher::KvESeverity;
using KvNReflasher::KvTFinding;
using testing::ElementsAre;
using testing::IsEmpty;

/// The folder has "a.bin", which goodEntry() names.
class UnnamedFiles : public CheckTest {
protected:
    std::string codesOfFolder(const std::string& description) { return codesOf(checkFolder(description)); }
    static std::string goodDescription() { return ArchiveBuilder().entry(goodEntry()).text(); }
};

TEST_F(UnnamedFiles, AFileThatNoEntryNamesIsAWarningAtTheEntries) {
    EXPECT_EQ("", codesOfFolder(goodDescription()));
    folder().write("left.bin", "content");
    folder().write("another.bin", "content");
    const std::vector<KvTFinding> findings = checkFolder(goodDescription());
    ASSERT_EQ("unnamed-file unnamed-file", codesOf(findings));
    EXPECT_EQ(KvESeverity::warning, findings[0].severity);
    EXPECT_EQ("$.files", findings[0].path);
    EXPECT_EQ("No entry names the file \"another.bin\" of the archive folder.", findings[0].message);
    EXPECT_EQ("No entry names the file \"left.bin\" of the archive folder.", findings[1].message);
}

TEST_F(UnnamedFiles, NamesOfEntriesThatAreRefusedOrSkippedCount) {
    folder().write("new.bin", "content");
    folder().write("wrong.bin", "content");
    EXPECT_EQ("entry-skipped mode-unknown",
              codesOfFolder(ArchiveBuilder()
                                .entry(goodEntry())
                                .entry(R"({"featureLevel": 3, "name": "new.bin"})")
                                .entry(goodEntry().set("name", "\"wrong.bin\"").set("id", "7").set("mode", "\"x\""))
                                .text()));
}

TEST_F(UnnamedFiles, AnotherDescriptionOfTheFolderNeedsNoName) {
    folder().write("summer.json", ArchiveBuilder().text());
    folder().write("WINTER.JSON", R"({"files": []})");
    EXPECT_EQ("", codesOfFolder(goodDescription()));
    for (const char* content : {"", "{}", "[]", R"({"files": {}})", R"({"files": [})", "text"}) {
        folder().write("summer.json", content);
        EXPECT_EQ("unnamed-file", codesOfFolder(goodDescription())) << content;
    }
    folder().write("summer.json", R"({"files": []})");
    folder().write("summer.txt", R"({"files": []})");
    EXPECT_EQ("unnamed-file", codesOfFolder(goodDescription()));
}

TEST_F(UnnamedFiles, FoldersAreNotLookedInto) {
    std::filesystem::create_directory(folder().path() / "notes");
    folder().write("notes/left.bin", "content");
    EXPECT_EQ("", codesOfFolder(goodDescription()));
}

TEST_F(UnnamedFiles, AFileThatAnEntryNamesByAPathIsNamed) {
    EXPECT_EQ("name-with-separator",
              codesOfFolder(ArchiveBuilder().entry(goodEntry().set("name", "\"./a.bin\"")).text()));
}

TEST_F(UnnamedFiles, WithoutEntriesNothingIsSaidOfFiles) {
    EXPECT_EQ("files-missing", codesOfFolder(ArchiveBuilder().withoutRoot("files").text()));
    EXPECT_EQ("invalid-json", codesOfFolder("{"));
    EXPECT_EQ("empty-array unnamed-file", codesOfFolder(ArchiveBuilder().text()));
}

TEST_F(UnnamedFiles, ANameInAnotherCaseNamesAFileUnlessItsOwnIsThere) {
    folder().write("b.bin", "content");
    const ObjectText entry = goodEntry().set("name", "\"B.bin\"").set("id", "7");
    const std::string text = ArchiveBuilder().entry(goodEntry()).entry(entry).text();
    EXPECT_EQ(std::string::npos, codesOfFolder(text).find("unnamed-file"));
    folder().write("B.bin", "content");
    const bool areTwo = std::distance(std::filesystem::directory_iterator(folder().path()), {}) == 4;
    EXPECT_EQ(areTwo ? "unnamed-file" : "", codesOfFolder(text));
}

/// The folder has "a.bin", which no entry names.
class FolderFiles : public CheckTest {
protected:
    FolderFiles() {
        for (const char* name : {"archive.json", "qb4120-firmware.kfw", "qb7001-firmware.kfw", "named.bin"}) {
            folder().write(name, "content");
        }
    }
    [[nodiscard]] const KvCFirmwareArchive& archive() const { return archive_; }
    [[nodiscard]] const std::wstring& description() const { return options().descriptionFileName; }

private:
    const KvCMessageCapture messages_;
    const KvCFirmwareArchive archive_{messages_.writer(), options()};

protected:
    KvCFolderFiles files{archive(), description(), {"named.bin", "missing.bin"}};
};

TEST_F(FolderFiles, AreThoseThatNothingNamesInOrder) {
    EXPECT_THAT(files.unnamed(), ElementsAre("a.bin", "qb4120-firmware.kfw", "qb7001-firmware.kfw"));
    folder().write("d.bin", "content");
    EXPECT_THAT(files.unnamed(), testing::SizeIs(3)) << "the folder is listed once";
}

TEST_F(FolderFiles, AFolderThatIsMissingHasNone) {
    KvNReflasher::KvTOptions elsewhere = options();
    elsewhere.archiveFolder += L"/missing";
    const KvCMessageCapture messages;
    const KvCFirmwareArchive archive(messages.writer(), elsewhere);
    KvCFolderFiles missing(archive, description(), {});
    EXPECT_THAT(missing.unnamed(), IsEmpty());
    EXPECT_EQ("", missing.nearest("a.bin"));
}

TEST_F(FolderFiles, TheNearestNameIsSuggested) {
    EXPECT_EQ("qb4120-firmware.kfw", files.nearest("qb4120-fimrware.kfw"));
    EXPECT_EQ("qb7001-firmware.kfw", files.nearest("QB7001-Firmware.kfw"));
    EXPECT_EQ("qb7001-firmware.kfw", files.nearest("qb7001-firmware.kwf"));
    EXPECT_EQ("", files.nearest("something-else.cfg"));
    EXPECT_EQ("Did you mean \"qb7001-firmware.kfw\"?", suggestionFor("qb7001-firmware", files));
    EXPECT_EQ("", suggestionFor("something-else.cfg", files));
}

TEST_F(FolderFiles, WhatAnEntryNamesWasNotMeantByAnother) {
    EXPECT_EQ("", files.nearest("namer.bin"));
    EXPECT_EQ("named.bin", KvCFolderFiles(archive(), description(), {"namer.bin"}).nearest("namer.bin"));
}

TEST_F(FolderFiles, AnExtensionMakesShortNamesNoMoreSimilar) {
    EXPECT_EQ("", files.nearest("x.bin"));
    EXPECT_EQ("a.bin", files.nearest("A.bin"));
}

TEST_F(FolderFiles, AfterVeryManyQuestionsNothingIsSuggested) {
    const std::string name = std::string(200, 'x') + ".bin";
    folder().write(name, "content");
    std::string asked = name;
    asked[7] = 'y';
    std::size_t answers = 0;
    while (files.nearest(asked) == name && answers < 10'000) {
        ++answers;
    }
    EXPECT_GT(answers, 1'000U);
    EXPECT_LT(answers, 10'000U);
}

TEST_F(FolderFiles, ALargeFileIsNotLookedInto) {
    folder().write("large.json", R"({"files": []})");
    EXPECT_TRUE(files.isDescription("large.json"));
    std::filesystem::resize_file(folder().path() / "large.json", std::uintmax_t{64} * 1024 * 1024 + 1);
    EXPECT_FALSE(files.isDescription("large.json"));
    EXPECT_FALSE(files.isDescription("a.bin"));
    EXPECT_FALSE(files.isDescription("missing.json"));
}

} // namespace
