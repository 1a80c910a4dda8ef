#include "ArchiveFixture.h"
#include "BinaryFile.h"
#include "MessageBytes.h"

#include <filesystem>
#include <string>

namespace {

using ChecksumCompletion = ArchiveTest;

ObjectText withoutChecksum(std::string_view name) {
    return goodEntry().set("name", joined("\"", name, "\"")).remove("checksumCrc32");
}

ObjectText withChecksum(std::string_view name) {
    return goodEntry().set("name", joined("\"", name, "\""));
}

std::wstring opened(unsigned count) {
    return std::to_wstring(count) +
           L" update files needed to be opened to get parameters not contained in the description file.\n\n";
}

std::wstring notFound(const std::wstring& path) {
    return L"ERROR: Cannot read checksum from update file. '" + path + L"' not found.\n";
}

std::wstring cannotRead(const std::wstring& name) {
    return L"ERROR: Cannot read checksum from update file " + name + L".\n";
}

TEST_F(ChecksumCompletion, NoFileIsOpenedWhenAllChecksumsAreGiven) {
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(withChecksum("missing.bin")).entry(withChecksum("missing too"))));
    EXPECT_EQ(L"", messages());
    EXPECT_FALSE(file(0).fileMissing);
    EXPECT_FALSE(file(1).fileMissing);
}

TEST_F(ChecksumCompletion, NoFileIsOpenedWithoutEntries) {
    EXPECT_TRUE(readArchive(ArchiveBuilder()));
    EXPECT_EQ(L"", messages());
}

TEST_F(ChecksumCompletion, EveryKindOfUpdateFileGivesItsChecksum) {
    writeFile("image", imageFile(21).bytes());
    writeFile("tree", treeFile(R"("CHECKSUM_CRC32": 22)"));
    writeFile("bitstream", bitstreamFile(92, 23).bytes());
    EXPECT_TRUE(readArchive(ArchiveBuilder()
                                .entry(withoutChecksum("image"))
                                .entry(withoutChecksum("tree"))
                                .entry(withoutChecksum("bitstream"))));
    EXPECT_EQ(opened(3), messages());
    EXPECT_EQ(21U, file(0).checksumCrc32);
    EXPECT_EQ(22U, file(1).checksumCrc32);
    EXPECT_EQ(23U, file(2).checksumCrc32);
}

TEST_F(ChecksumCompletion, OnlyTheChecksumIsTaken) {
    writeFile("image", imageFile(21).put8(76, 99).put32(360, 5).bytes());
    EXPECT_TRUE(readArchive(ArchiveBuilder().info("archiveVersion", R"("4.5")").entry(withoutChecksum("image"))));
    EXPECT_EQ(KvCVersion(4, 5, 0, 0, 0, 0), file(0).version);
    EXPECT_FALSE(file(0).description->view().contains("checksumCrc32"));
    EXPECT_FALSE(file(0).fileMissing);
}

TEST_F(ChecksumCompletion, OnlyTheFilesThatWereNeededAreCounted) {
    writeFile("image", imageFile(21).bytes());
    EXPECT_TRUE(readArchive(ArchiveBuilder()
                                .entry(withChecksum("missing"))
                                .entry(withoutChecksum("image"))
                                .entry(withChecksum("missing"))));
    EXPECT_EQ(opened(1), messages());
    EXPECT_EQ(77U, file(0).checksumCrc32);
    EXPECT_EQ(21U, file(1).checksumCrc32);
    EXPECT_EQ(77U, file(2).checksumCrc32);
}

TEST_F(ChecksumCompletion, AFileOfTwoEntriesCountsTwice) {
    writeFile("image", imageFile(21).bytes());
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(withoutChecksum("image")).entry(withoutChecksum("image"))));
    EXPECT_EQ(opened(2), messages());
}

TEST_F(ChecksumCompletion, TheChecksumThatStandsForUnknownIsLookedUp) {
    writeFile("image", imageFile(21).bytes());
    for (const char* checksum : {"4294967294", "8589934590", "18446744073709551614"}) {
        SCOPED_TRACE(checksum);
        EXPECT_TRUE(readArchive(ArchiveBuilder().entry(withChecksum("image").set("checksumCrc32", checksum))));
        EXPECT_EQ(opened(1), messages());
        EXPECT_EQ(21U, file(0).checksumCrc32);
    }
}

TEST_F(ChecksumCompletion, NeighboursOfThatChecksumAreNotLookedUp) {
    EXPECT_TRUE(readArchive(ArchiveBuilder()
                                .entry(withChecksum("missing").set("checksumCrc32", "4294967293"))
                                .entry(withChecksum("missing").set("checksumCrc32", "4294967295"))));
    EXPECT_EQ(L"", messages());
}

TEST_F(ChecksumCompletion, ABitstreamWithAShortHeaderCountsAndLeavesTheChecksumUnknown) {
    writeFile("bitstream", bitstreamFile(80, 23).bytes());
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(withoutChecksum("bitstream"))));
    EXPECT_EQ(opened(1), messages());
    EXPECT_EQ(0xFFFFFFFEU, file(0).checksumCrc32);
}

TEST_F(ChecksumCompletion, ATreeWithoutAChecksumCountsAndLeavesTheChecksumUnknown) {
    writeFile("tree", treeFile(""));
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(withoutChecksum("tree"))));
    EXPECT_EQ(opened(1), messages());
    EXPECT_EQ(0xFFFFFFFEU, file(0).checksumCrc32);
}

TEST_F(ChecksumCompletion, TheCountIsLeftOutOfTheDumpAlone) {
    writeFile("image", imageFile(21).bytes());
    for (std::uint32_t mode = 0; mode <= 8; ++mode) {
        SCOPED_TRACE(mode);
        options().mode = mode;
        EXPECT_TRUE(readArchive(ArchiveBuilder().entry(withoutChecksum("image"))));
        EXPECT_EQ(mode == 3 ? L"" : opened(1), messages());
        EXPECT_EQ(21U, file(0).checksumCrc32);
    }
}

TEST_F(ChecksumCompletion, TheFirstMissingFileEndsTheCompletion) {
    writeFile("image", imageFile(21).bytes());
    EXPECT_FALSE(readArchive(ArchiveBuilder()
                                 .entry(withoutChecksum("image"))
                                 .entry(withoutChecksum("missing"))
                                 .entry(withoutChecksum("missing too"))
                                 .entry(withoutChecksum("image"))));
    EXPECT_EQ(notFound(pathOf(L"missing")), messages());
    EXPECT_EQ(21U, file(0).checksumCrc32);
    EXPECT_FALSE(file(0).fileMissing);
    EXPECT_EQ(0xFFFFFFFEU, file(1).checksumCrc32);
    EXPECT_TRUE(file(1).fileMissing);
    EXPECT_FALSE(file(2).fileMissing);
    EXPECT_EQ(0xFFFFFFFEU, file(3).checksumCrc32);
}

TEST_F(ChecksumCompletion, TheFirstFileOfNoKindEndsTheCompletion) {
    writeFile("image", imageFile(21).bytes());
    writeFile("readme", "text");
    EXPECT_FALSE(readArchive(ArchiveBuilder()
                                 .entry(withoutChecksum("image"))
                                 .entry(withoutChecksum("readme"))
                                 .entry(withoutChecksum("missing"))));
    EXPECT_EQ(cannotRead(L"readme"), messages());
    EXPECT_EQ(21U, file(0).checksumCrc32);
    EXPECT_EQ(0xFFFFFFFEU, file(1).checksumCrc32);
    EXPECT_FALSE(file(1).fileMissing);
    EXPECT_FALSE(file(2).fileMissing);
}

TEST_F(ChecksumCompletion, AFailureIsReportedInTheDumpModeToo) {
    options().mode = 3;
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(withoutChecksum("missing"))));
    EXPECT_EQ(notFound(pathOf(L"missing")), messages());
}

TEST_F(ChecksumCompletion, AFolderInPlaceOfTheFileIsThereButCannotBeRead) {
    makeFolder("folder");
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(withoutChecksum("folder"))));
    EXPECT_EQ(cannotRead(L"folder"), messages());
    EXPECT_FALSE(file(0).fileMissing);
}

TEST_F(ChecksumCompletion, AnEmptyNameIsTheArchiveFolder) {
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(withoutChecksum(""))));
    EXPECT_EQ(cannotRead(L""), messages());
    EXPECT_FALSE(file(0).fileMissing);
}

TEST_F(ChecksumCompletion, ANameMayLeadIntoAFolder) {
    makeFolder("deep/er");
    writeFile("deep/er/image", imageFile(21).bytes());
    EXPECT_TRUE(readArchive(
        ArchiveBuilder().entry(withoutChecksum("deep/er/image")).entry(withoutChecksum("deep\\\\er/image"))));
    EXPECT_EQ(opened(2), messages());
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(withoutChecksum("deep/other"))));
    EXPECT_EQ(notFound(pathOf(L"deep/other")), messages());
}

TEST_F(ChecksumCompletion, ATrailingBackslashOfTheFolderIsShown) {
    options().archiveFolder += L"\\";
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(withoutChecksum("missing"))));
    EXPECT_EQ(notFound(pathOf(L"\\missing")), messages());
}

TEST_F(ChecksumCompletion, PathsAreShownAsWideTextAndNamesAsTheirBytes) {
    const std::string name = "\xE2\x82\xAC.bin";
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(withoutChecksum(name))));
    EXPECT_EQ(notFound(pathOf(L"\u20AC.bin")), messages());
    writeFile(name, "text");
    EXPECT_FALSE(readArchive(ArchiveBuilder().entry(withoutChecksum(name))));
    EXPECT_EQ("ERROR: Cannot read checksum from update file \xE2\x82\xAC.bin.\n", bytesOf(messages()));
    writeFile(name, imageFile(21).bytes());
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(withoutChecksum(name))));
}

TEST_F(ChecksumCompletion, FilesOutsideTheArchiveAreReachedByTheirRelativeName) {
    makeFolder("inner");
    writeFile("image", imageFile(21).bytes());
    options().archiveFolder = pathOf(L"inner");
    writeFile("inner/archive.json", ArchiveBuilder().entry(withoutChecksum("../image")).text());
    KvCFirmwareArchive inner(writer(), options());
    forgetMessages();
    EXPECT_TRUE(inner.readArchive());
    EXPECT_EQ(21U, inner.files().at(0).checksumCrc32);
}

TEST_F(ChecksumCompletion, WhatIsStillUnknownIsLookedUpAgainTheNextTime) {
    writeFile("image", imageFile(21).bytes());
    writeFile("bitstream", bitstreamFile(80, 0).bytes());
    EXPECT_TRUE(readArchive(ArchiveBuilder().entry(withoutChecksum("image")).entry(withoutChecksum("bitstream"))));
    std::filesystem::remove(folder() / "image");
    writeFile("bitstream", bitstreamFile(92, 23).bytes());
    forgetMessages();
    KvCArchiveFindings findings(writer());
    EXPECT_TRUE(archive().completeFromUpdateFiles(findings));
    EXPECT_EQ(opened(1), messages());
    EXPECT_EQ(21U, file(0).checksumCrc32);
    EXPECT_EQ(23U, file(1).checksumCrc32);
}

TEST_F(ChecksumCompletion, FilesAreFreeAgainAfterwards) {
    writeFile("image", imageFile(21).bytes());
    writeFile("tree", treeFile(""));
    writeFile("bitstream", bitstreamFile(92, 23).bytes());
    writeFile("readme", "text");
    EXPECT_FALSE(readArchive(ArchiveBuilder()
                                 .entry(withoutChecksum("image"))
                                 .entry(withoutChecksum("tree"))
                                 .entry(withoutChecksum("bitstream"))
                                 .entry(withoutChecksum("readme"))));
    for (const char* name : {"image", "tree", "bitstream", "readme"}) {
        EXPECT_TRUE(std::filesystem::remove(folder() / name)) << name;
    }
}

} // namespace
