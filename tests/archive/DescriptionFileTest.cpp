#include "DescriptionFile.h"
#include "ArchiveFixture.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace {

using DescriptionFile = ArchiveTest;

std::wstring cannotOpen(const std::wstring& path) {
    return L"ERROR: Cannot open archive description file " + path + L"\n";
}

std::wstring invalidJson(const std::wstring& path) {
    return L"ERROR: The archive description file " + path + L" is corrupt. Invalid JSON data.\n";
}

std::string nestedArrays(std::size_t levels) {
    return std::string(levels, '[') + std::string(levels, ']');
}

TEST_F(DescriptionFile, AGoodDescriptionIsReadWithoutAWord) {
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(goodEntry())));
    EXPECT_EQ(L"", messages());
    EXPECT_EQ(1U, archive().files().size());
}

TEST_F(DescriptionFile, AMissingFileIsReportedWithItsPath) {
    KvCFirmwareArchive fresh(writer(), options());
    EXPECT_FALSE(fresh.readArchive());
    EXPECT_EQ(cannotOpen(pathOf(L"archive.json")), messages());
}

TEST_F(DescriptionFile, AMissingFolderIsReportedWithThePathOfTheFile) {
    options().archiveFolder = pathOf(L"nowhere");
    EXPECT_FALSE(readArchive(ArchiveBuilder()));
    EXPECT_EQ(cannotOpen(pathOf(L"nowhere\\archive.json")), messages());
}

TEST_F(DescriptionFile, AFolderInItsPlaceCannotBeOpened) {
    makeFolder("folder.json");
    options().descriptionFileName = L"folder.json";
    EXPECT_FALSE(readArchive(ArchiveBuilder()));
    EXPECT_EQ(cannotOpen(pathOf(L"folder.json")), messages());
}

TEST_F(DescriptionFile, AFileOfMoreThan256MebibytesCannotBeOpened) {
    EXPECT_TRUE(readArchive(ArchiveBuilder()));
    std::error_code error;
    for (const std::uintmax_t size : {std::uintmax_t(256) << 20U, (std::uintmax_t(256) << 20U) + 1}) {
        std::filesystem::resize_file(folder() / "archive.json", size, error);
        if (error) {
            GTEST_SKIP() << "no room for a large file: " << error.message();
        }
        forgetMessages();
        KvCFirmwareArchive fresh(writer(), options());
        EXPECT_FALSE(fresh.readArchive());
        const bool isTooLarge = size > largestDescription;
        const std::wstring path = pathOf(L"archive.json");
        EXPECT_EQ(isTooLarge ? cannotOpen(path) : invalidJson(path), messages());
        EXPECT_EQ(isTooLarge, fresh.refusal().ends_with(" (it is larger than 256 MiB, the most that is read)"))
            << fresh.refusal();
    }
}

TEST_F(DescriptionFile, AnEmptyFileNameIsTheFolder) {
    options().descriptionFileName.clear();
    EXPECT_FALSE(readArchive(ArchiveBuilder()));
    EXPECT_EQ(cannotOpen(pathOf(L"")), messages());
}

TEST_F(DescriptionFile, AnEmptyFolderLeavesTheSeparatorInThePath) {
    options().archiveFolder.clear();
    options().descriptionFileName = L"kv_no_such_description.json";
    EXPECT_FALSE(readArchive(ArchiveBuilder()));
    EXPECT_EQ(cannotOpen(L"\\kv_no_such_description.json"), messages());
}

TEST_F(DescriptionFile, ATrailingBackslashOfTheFolderStays) {
    options().archiveFolder += L"\\";
    EXPECT_TRUE(readArchive(ArchiveBuilder()));
    EXPECT_FALSE(readArchive("no JSON"));
    EXPECT_EQ(invalidJson(pathOf(L"\\archive.json")), messages());
}

TEST_F(DescriptionFile, TheFileNameMayLeadIntoAFolder) {
    makeFolder("deep");
    writeFile("deep/own.json", ArchiveBuilder().info("archiveName", R"("deep one")").text());
    options().descriptionFileName = L"deep\\own.json";
    EXPECT_TRUE(readArchive(ArchiveBuilder()));
    EXPECT_EQ("deep one", archive().info().archiveName.view());
}

TEST_F(DescriptionFile, NamesBeyondAsciiAreOpenedAndShown) {
    makeFolder("\xC3\xBC"
               "ber");
    writeFile("\xC3\xBC"
              "ber/\xE2\x82\xAC.json",
              "?");
    options().archiveFolder = pathOf(L"\u00FC"
                                     L"ber");
    options().descriptionFileName = L"\u20AC.json";
    EXPECT_FALSE(readArchive(ArchiveBuilder()));
    EXPECT_EQ(invalidJson(pathOf(L"\u00FC"
                                 L"ber\\\u20AC.json")),
              messages());
}

TEST_F(DescriptionFile, WhatIsNotOneJsonTextIsReportedWithThePath) {
    const std::string good = ArchiveBuilder().text();
    const std::array contents = {std::string(),
                                 std::string("plain text"),
                                 good.substr(0, good.size() - 1),
                                 good + "}",
                                 good + good,
                                 "// comment\n" + good,
                                 ArchiveBuilder().info("archiveName", "'single'").text(),
                                 ArchiveBuilder().info("archiveName", "\"\xFF\"").text(),
                                 ArchiveBuilder().info("archiveName", R"("\uD800")").text(),
                                 ArchiveBuilder().info("archiveName", "\"line\nfeed\"").text(),
                                 ArchiveBuilder().root("more", "[1, 2, ]").text(),
                                 ArchiveBuilder().root("more", "1e999").text(),
                                 ArchiveBuilder().root("more", "NaN").text(),
                                 ArchiveBuilder().root("more", nestedArrays(256)).text()};
    for (const std::string& content : contents) {
        SCOPED_TRACE(content.substr(0, 200));
        EXPECT_FALSE(readArchive(content));
        EXPECT_EQ(invalidJson(pathOf(L"archive.json")), messages());
    }
}

TEST_F(DescriptionFile, AByteOrderMarkIsSkipped) {
    EXPECT_TRUE(readArchive(joined("\xEF\xBB\xBF", ArchiveBuilder().text())));
    EXPECT_EQ(L"", messages());
}

TEST_F(DescriptionFile, DeepNestingInAnUnknownKeyIsRead) {
    EXPECT_TRUE(readArchive(ArchiveBuilder().root("more", nestedArrays(255))));
    EXPECT_EQ(L"", messages());
}

TEST_F(DescriptionFile, BlanksAndLineEndsOfAnySystemDoNotMatter) {
    std::string text = ArchiveBuilder().entry(goodEntry()).text();
    for (std::size_t place = text.find(", "); place != std::string::npos; place = text.find(", ", place + 4)) {
        text.replace(place, 2, ",\r\n\t ");
    }
    EXPECT_TRUE(readArchive(text));
    EXPECT_EQ(1U, archive().files().size());
}

TEST_F(DescriptionFile, TheFileIsFreeAgainAfterTheReading) {
    EXPECT_TRUE(readArchive(ArchiveBuilder()));
    EXPECT_TRUE(std::filesystem::remove(folder() / "archive.json"));
    EXPECT_FALSE(readArchive("no JSON"));
    EXPECT_TRUE(std::filesystem::remove(folder() / "archive.json"));
}

/// How many files were open at each message.
std::vector<std::size_t>& openFileCounts() {
    static std::vector<std::size_t> counts;
    return counts;
}

TEST_F(DescriptionFile, TheFileIsClosedBeforeAnythingIsSaid) {
    KvTCallbacks callbacks;
    callbacks.message = [](const std::wstring& /*text*/) { openFileCounts().push_back(openFileCount()); };
    const KvCConsoleWriter counting(callbacks);
    openFileCounts().clear();
    const std::size_t before = openFileCount();
    for (const std::string& text : {std::string("no JSON"), ArchiveBuilder().entry(R"({"featureLevel": 3})").text()}) {
        writeFile("archive.json", text);
        KvCFirmwareArchive fresh(counting, options());
        static_cast<void>(fresh.readArchive());
    }
    EXPECT_EQ(std::vector<std::size_t>(2, before), openFileCounts());
}

TEST_F(DescriptionFile, ARootThatIsNoObjectLacksInfo) {
    for (const char* root : {"[]", "[{\"info\": {}}]", "\"info\"", "1", "null", "true", "{}"}) {
        SCOPED_TRACE(root);
        EXPECT_FALSE(readArchive(root));
        EXPECT_EQ(L"ERROR: The archive description file is corrupt. Property \"info\" is missing or invalid.\n",
                  messages());
    }
}

TEST_F(DescriptionFile, FilesMustBeAnArrayAtTheRoot) {
    const std::array descriptions = {ArchiveBuilder().withoutRoot("files"),
                                     ArchiveBuilder().root("files", "null"),
                                     ArchiveBuilder().root("files", "{}"),
                                     ArchiveBuilder().root("files", "\"a.bin\""),
                                     ArchiveBuilder().root("files", "0"),
                                     ArchiveBuilder().root("files", "true"),
                                     ArchiveBuilder().withoutRoot("files").info("files", "[]")};
    for (const ArchiveBuilder& description : descriptions) {
        SCOPED_TRACE(description.text());
        EXPECT_FALSE(readArchive(description));
        EXPECT_EQ(L"ERROR: The archive description file is corrupt. Property \"files\" is missing or invalid.\n",
                  messages());
    }
}

TEST_F(DescriptionFile, AnArchiveWithoutEntriesIsAccepted) {
    EXPECT_TRUE(readArchive(ArchiveBuilder()));
    EXPECT_EQ(L"", messages());
    EXPECT_TRUE(archive().files().empty());
    EXPECT_EQ(0U, archive().maxSequence());
    EXPECT_EQ(0U, archive().ignoredEntryCount());
}

TEST_F(DescriptionFile, AFreshArchiveIsEmpty) {
    const KvCFirmwareArchive fresh(writer(), options());
    EXPECT_EQ(0U, fresh.info().formatVersion.getAsULong64());
    EXPECT_EQ(0U, fresh.info().archiveVersion.getAsULong64());
    EXPECT_TRUE(fresh.info().productName.isEmpty());
    EXPECT_TRUE(fresh.info().archiveVariant.isEmpty());
    EXPECT_TRUE(fresh.info().archiveName.isEmpty());
    EXPECT_TRUE(fresh.files().empty());
    EXPECT_EQ(0U, fresh.maxSequence());
    EXPECT_EQ(0U, fresh.ignoredEntryCount());
}

TEST_F(DescriptionFile, UnknownKeysAreIgnoredAtEveryLevel) {
    EXPECT_TRUE(
        readArchive(ArchiveBuilder()
                        .root("comment", "[1, {}]")
                        .info("comment", "null")
                        .entry(goodEntry().set("comment", "{}").set("Version", "false").set("CHECKSUMCRC32", "[]"))
                        .entry(entryWithBoards(goodBoard()
                                                   .set("name", "1")
                                                   .set("sequence", "\"x\"")
                                                   .set("featureLevel", "9")
                                                   .set("boards", "0")
                                                   .text()))));
    EXPECT_EQ(L"", messages());
    EXPECT_EQ(2U, archive().files().size());
}

TEST_F(DescriptionFile, OfARepeatedKeyTheLastValueCounts) {
    const std::string twice = R"({"files": 1, "info": 5, "info": {"formatVersion": 1, "formatVersion": "1.0",
        "archiveVersion": "2.0", "productName": "first", "productName": "last", "archiveName": ""}, "files": []})";
    EXPECT_TRUE(readArchive(twice));
    EXPECT_EQ("last", archive().info().productName.view());
}

TEST_F(DescriptionFile, UpdateFilesAreLeftAloneByTheReadingOfTheDescription) {
    EXPECT_TRUE(readDescription(ArchiveBuilder().entry(goodEntry().remove("checksumCrc32"))));
    EXPECT_EQ(L"", messages());
    EXPECT_EQ(0xFFFFFFFEU, file(0).checksumCrc32);
}

TEST_F(DescriptionFile, UpdateFilesAreLeftAloneAfterARefusedDescription) {
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(goodEntry().remove("checksumCrc32")).entry("{}")));
    EXPECT_EQ(L"ERROR: File entry 1 is invalid. A mandatory property is missing or invalid.\n", messages());
    EXPECT_FALSE(file(0).fileMissing);
}

TEST_F(DescriptionFile, AMissingUpdateFileFailsTheArchive) {
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(goodEntry().remove("checksumCrc32"))));
    EXPECT_EQ(L"ERROR: Cannot read checksum from update file. '" + pathOf(L"a.bin") + L"' not found.\n", messages());
}

// Entries.

TEST_F(DescriptionFile, EntriesKeepTheOrderOfTheDescription) {
    ArchiveBuilder builder;
    for (const char* name : {R"("c")", R"("a")", R"("b")", R"("a")"}) {
        builder.entry(goodEntry().set("name", name));
    }
    EXPECT_TRUE(readDescription(builder));
    ASSERT_EQ(4U, archive().files().size());
    EXPECT_EQ("c", file(0).name.view());
    EXPECT_EQ("a", file(1).name.view());
    EXPECT_EQ("b", file(2).name.view());
    EXPECT_EQ("a", file(3).name.view());
}

TEST_F(DescriptionFile, TheFirstBadEntryEndsTheReadingWithTheEntriesBeforeItKept) {
    EXPECT_FALSE(readDescription(ArchiveBuilder()
                                     .entry(goodEntry().set("name", R"("kept")").set("sequence", "7"))
                                     .entry(goodEntry().set("sequence", "9").set("mode", R"("other")"))
                                     .entry("[]")
                                     .entry(goodEntry().set("sequence", "11"))));
    EXPECT_EQ(L"ERROR: File entry 1 is invalid. Property \"mode\" is invalid.\n", messages());
    ASSERT_EQ(1U, archive().files().size());
    EXPECT_EQ("kept", file(0).name.view());
    EXPECT_EQ(7U, archive().maxSequence());
}

TEST_F(DescriptionFile, ASkippedEntryIsCountedAndUsesUpItsIndex) {
    EXPECT_FALSE(readDescription(ArchiveBuilder()
                                     .entry(R"({"featureLevel": 3})")
                                     .entry(goodEntry())
                                     .entry(goodEntry().set("featureLevel", "4"))
                                     .entry("{}")));
    EXPECT_EQ(L"WARNING: File entry 0 is not supported. Ignoring this entry.\n"
              L"WARNING: File entry 2 is not supported. Ignoring this entry.\n"
              L"ERROR: File entry 3 is invalid. A mandatory property is missing or invalid.\n",
              messages());
    EXPECT_EQ(2U, archive().ignoredEntryCount());
    EXPECT_EQ(1U, archive().files().size());
}

TEST_F(DescriptionFile, SkippedEntriesDoNotFailTheArchive) {
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(R"({"featureLevel": 3})").entry(goodEntry())));
    EXPECT_EQ(L"WARNING: File entry 0 is not supported. Ignoring this entry.\n", messages());
    EXPECT_EQ(1U, archive().ignoredEntryCount());
}

TEST_F(DescriptionFile, TheHighestSequenceIsThatOfTheAcceptedEntries) {
    EXPECT_TRUE(readDescription(ArchiveBuilder()
                                    .entry(goodEntry().set("sequence", "3"))
                                    .entry(goodEntry().set("sequence", "8"))
                                    .entry(goodEntry().set("sequence", "5"))
                                    .entry(goodEntry().set("sequence", "99").set("featureLevel", "3"))));
    EXPECT_EQ(8U, archive().maxSequence());
}

// A second reading.

TEST_F(DescriptionFile, ASecondReadingBeginsTheEntriesAnew) {
    EXPECT_TRUE(readDescription(
        ArchiveBuilder().entry(goodEntry().set("sequence", "8")).entry(goodEntry()).entry(R"({"featureLevel": 3})")));
    EXPECT_TRUE(readDescriptionAgain(ArchiveBuilder().entry(goodEntry().set("sequence", "2"))));
    EXPECT_EQ(1U, archive().files().size());
    EXPECT_EQ(2U, archive().maxSequence());
    EXPECT_EQ(0U, archive().ignoredEntryCount());
}

TEST_F(DescriptionFile, ASecondReadingKeepsTheVariantThatItDoesNotGive) {
    EXPECT_TRUE(readDescription(ArchiveBuilder().info("archiveVariant", R"("first")")));
    EXPECT_TRUE(readDescriptionAgain(ArchiveBuilder().withoutInfo("archiveVariant").info("archiveName", R"("new")")));
    EXPECT_EQ("first", archive().info().archiveVariant.view());
    EXPECT_EQ("new", archive().info().archiveName.view());
}

TEST_F(DescriptionFile, ASecondReadingThatFailsBeforeTheEntriesKeepsThem) {
    EXPECT_TRUE(readDescription(ArchiveBuilder().entry(goodEntry().set("sequence", "8"))));
    EXPECT_FALSE(readDescriptionAgain(ArchiveBuilder().withoutRoot("files")));
    EXPECT_EQ(1U, archive().files().size());
    EXPECT_EQ(8U, archive().maxSequence());
}

TEST_F(DescriptionFile, ASecondReadingThatFailsAtItsFirstEntryLeavesNone) {
    EXPECT_TRUE(readDescription(ArchiveBuilder().entry(goodEntry().set("sequence", "8"))));
    EXPECT_FALSE(readDescriptionAgain(ArchiveBuilder().entry("null")));
    EXPECT_TRUE(archive().files().empty());
    EXPECT_EQ(0U, archive().maxSequence());
}

} // namespace
