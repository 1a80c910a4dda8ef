#include "CheckFixture.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace {

using KvNReflasher::KvESeverity;
using KvNReflasher::KvTFinding;
class CheckFiles : public CheckTest {
protected:
    CheckFiles() { folder().write("image.bin", firmwareImage(KvCVersion(2, 1, 0, 0, 0, 0), 77)); }

    static ObjectText imageEntry() { return goodEntry().set("name", "\"image.bin\"").set("version", "\"2.1\""); }
    /// The update file is for boards with these hardware compatibility identifiers.
    void writeImageFor(std::uint32_t lowest, std::uint32_t highest) {
        folder().write("image.bin", withHardwareIds(firmwareImage(KvCVersion("2.1"), 77), lowest, highest));
    }
    std::string codesOfEntry(const ObjectText& entry) { return codes(ArchiveBuilder().entry(entry).text()); }
    KvTFinding findingOf(const ObjectText& entry) { return onlyFinding(ArchiveBuilder().entry(entry).text()); }
};

TEST_F(CheckFiles, AMissingFileWhoseChecksumIsToldIsAWarning) {
    const KvTFinding finding = findingOf(goodEntry().set("name", "\"none.bin\""));
    EXPECT_EQ("update-file-missing", finding.code);
    EXPECT_EQ(KvESeverity::warning, finding.severity);
    EXPECT_EQ("$.files[0].name", finding.path);
}

TEST_F(CheckFiles, AMissingFileThatTheReaderNeedsIsAnErrorOnly) {
    EXPECT_EQ("checksum-file-missing", codesOfEntry(goodEntry().set("name", "\"none.bin\"").remove("checksumCrc32")));
    // This number stands for a checksum that is not told.
    EXPECT_EQ("checksum-file-missing",
              codesOfEntry(goodEntry().set("name", "\"none.bin\"").set("checksumCrc32", "4294967294")));
}

TEST_F(CheckFiles, AFileThatCannotBeReadIsAWarning) {
    std::filesystem::create_directory(folder().path() / "folder.bin");
    const KvTFinding finding = findingOf(goodEntry().set("name", "\"folder.bin\""));
    EXPECT_EQ("update-file-unreadable", finding.code);
    EXPECT_EQ("The update file \"folder.bin\" is a folder, not a regular file.", finding.message);
}

TEST_F(CheckFiles, AChecksumThatTheFileContradictsIsAWarning) {
    EXPECT_EQ("", codesOfEntry(imageEntry()));
    const KvTFinding finding = findingOf(imageEntry().set("checksumCrc32", "78"));
    EXPECT_EQ("checksum-mismatch", finding.code);
    EXPECT_EQ("The description tells the checksum 78, the update file 77.", finding.message);
    EXPECT_EQ("$.files[0].checksumCrc32", finding.path);
}

TEST_F(CheckFiles, AVersionThatTheFileContradictsIsAWarning) {
    const KvTFinding finding = findingOf(imageEntry().set("version", "\"2.2\""));
    EXPECT_EQ("version-mismatch", finding.code);
    EXPECT_EQ("$.files[0].version", finding.path);
    EXPECT_EQ("version-mismatch", codesOfEntry(imageEntry().remove("checksumCrc32").set("version", "\"2.2\"")));
    EXPECT_EQ("", codesOfEntry(imageEntry().set("version", "null")));
}

TEST_F(CheckFiles, AnEntryWithoutVersionHasThatOfTheArchive) {
    const std::string text = ArchiveBuilder().entry(imageEntry().remove("version")).text();
    EXPECT_EQ("$.files[0]", onlyFinding(text).path);
    EXPECT_EQ("version-mismatch", codes(text));
    EXPECT_EQ("",
              codes(ArchiveBuilder().info("archiveVersion", "\"2.1\"").entry(imageEntry().remove("version")).text()));
}

TEST_F(CheckFiles, WhatAFileDoesNotTellIsNotCompared) {
    folder().write("short.kbs", bitstream(5, 40));
    EXPECT_EQ("", codesOfEntry(goodEntry().set("name", "\"short.kbs\"").set("version", "\"9.9\"")));
    folder().write("long.kbs", bitstream(5));
    EXPECT_EQ("checksum-mismatch", codesOfEntry(goodEntry().set("name", "\"long.kbs\"").set("version", "\"9.9\"")));
    EXPECT_EQ("", codesOfEntry(goodEntry().set("version", "\"9.9\"")));
}

TEST_F(CheckFiles, AnEmptyFileIsAWarning) {
    folder().write("image.bin", "");
    const KvTFinding finding = findingOf(imageEntry());
    EXPECT_EQ("update-file-empty", finding.code);
    EXPECT_EQ(KvESeverity::warning, finding.severity);
    EXPECT_EQ("$.files[0].name", finding.path);
    EXPECT_EQ("The update file \"image.bin\" is empty.", finding.message);
    EXPECT_EQ("update-file-empty", codesOfEntry(imageEntry().remove("id").set("targetPath", "\"cfg/a.cfg\"")));
}

TEST_F(CheckFiles, AnEmptyFileWhoseChecksumTheReaderNeedsIsNamedAsTheReason) {
    folder().write("image.bin", "");
    EXPECT_EQ("checksum-unreadable update-file-empty", codesOfEntry(imageEntry().remove("checksumCrc32")));
}

TEST_F(CheckFiles, AFileThatEndsWithinItsHeaderIsAWarning) {
    const std::string image = firmwareImage(KvCVersion("2.1"), 77);
    for (const std::size_t size : {44U, 47U, 48U, 100U, 363U}) {
        folder().write("image.bin", image.substr(0, size));
        EXPECT_EQ("update-file-cut", codesOfEntry(imageEntry())) << size;
    }
    const std::string stream = bitstream(77);
    for (const std::size_t size : {8U, 50U, 91U}) {
        folder().write("image.bin", stream.substr(0, size));
        EXPECT_EQ("update-file-cut", codesOfEntry(imageEntry())) << size;
    }
    folder().write("image.bin", bitstream(77, 201));
    EXPECT_EQ("The update file \"image.bin\" ends within its header.", findingOf(imageEntry()).message);
}

TEST_F(CheckFiles, AFileThatEndsWithItsHeaderIsWhole) {
    folder().write("image.bin", firmwareImage(KvCVersion("2.1"), 77).substr(0, 364));
    EXPECT_EQ("", codesOfEntry(imageEntry()));
    folder().write("image.bin", bitstream(77).substr(0, 92));
    EXPECT_EQ("", codesOfEntry(imageEntry()));
    folder().write("image.bin", bitstream(77, 200));
    EXPECT_EQ("", codesOfEntry(imageEntry()));
    folder().write("image.bin", "k");
    EXPECT_EQ("", codesOfEntry(imageEntry())) << "a plain file";
}

TEST_F(CheckFiles, AnIdentifierThatTheHeaderExcludesIsAWarningAtTheIdentifier) {
    writeImageFor(2, 3);
    const KvTFinding finding = findingOf(imageEntry().set("hwCompatibilityId", "[2, 4, 5]"));
    EXPECT_EQ("compatibility-mismatch", finding.code);
    EXPECT_EQ("$.files[0].hwCompatibilityId[1]", finding.path);
    EXPECT_EQ("The description allows the hardware compatibility identifier 4, the update file is for 2 to 3.",
              finding.message);
    EXPECT_EQ("Write the \"hwCompatibilityId\" of the boards that the file is for, or put the right file in place.",
              finding.hint);
    EXPECT_EQ("$.files[0].hwCompatibilityId", findingOf(imageEntry().set("hwCompatibilityId", "1")).path);
    EXPECT_EQ("", codesOfEntry(imageEntry().set("hwCompatibilityId", "[2, 3]")));
}

TEST_F(CheckFiles, AnEntryWithoutIdentifierIsForTheIdentifier0) {
    writeImageFor(2, 2);
    const KvTFinding finding = findingOf(imageEntry());
    EXPECT_EQ("compatibility-mismatch", finding.code);
    EXPECT_EQ("$.files[0]", finding.path);
    EXPECT_EQ("Without \"hwCompatibilityId\" the entry is for the identifier 0, the update file is for 2.",
              finding.message);
    writeImageFor(0, 2);
    EXPECT_EQ("", codesOfEntry(imageEntry()));
}

TEST_F(CheckFiles, AHeaderWithTheRangeFrom0To0LeavesItOut) {
    writeImageFor(0, 0);
    EXPECT_EQ("", codesOfEntry(imageEntry().set("hwCompatibilityId", "[2, 3]")));
}

TEST_F(CheckFiles, SoftwareIdentifiersAreComparedToo) {
    folder().write("image.bin", withSoftwareIds(firmwareImage(KvCVersion("2.1"), 77), 7, 9));
    EXPECT_EQ("$.files[0].swCompatibilityId", findingOf(imageEntry().set("swCompatibilityId", "10")).path);
    EXPECT_EQ("", codesOfEntry(imageEntry().set("swCompatibilityId", "8")));
}

TEST_F(CheckFiles, ARangeOfATreeMayStateOneEndAlone) {
    const auto treeOf = [](const char* parameters) {
        return joined(R"({"inventoryTree": {"id": "FIRMWARE", "parameters": {)", parameters, "}}}");
    };
    folder().write("image.bin", treeOf(R"("MIN_HW_COMPATIBILITY_ID": 2)"));
    EXPECT_THAT(findingOf(imageEntry().set("hwCompatibilityId", "1")).message,
                testing::EndsWith(" is for at least 2."));
    EXPECT_EQ("", codesOfEntry(imageEntry().set("hwCompatibilityId", "4000000000")));
    folder().write("image.bin", treeOf(R"("MAX_HW_COMPATIBILITY_ID": 2)"));
    EXPECT_THAT(findingOf(imageEntry().set("hwCompatibilityId", "3")).message, testing::EndsWith(" is for at most 2."));
    EXPECT_EQ("", codesOfEntry(imageEntry()));
}

TEST_F(CheckFiles, EachElementOfBoardsIsComparedAndWhatTheyShareOnce) {
    writeImageFor(2, 3);
    const ObjectText entry = entryWithBoards(R"({"boardType": "QA", "id": 1, "hwCompatibilityId": [3, 4]},
                                                {"boardType": "QB", "id": 1}, {"boardType": "QC", "id": 1})")
                                 .set("name", "\"image.bin\"")
                                 .set("version", "\"2.1\"")
                                 .set("hwCompatibilityId", "[2, 1]");
    const std::vector<KvTFinding> findings = check(ArchiveBuilder().entry(entry).text());
    ASSERT_EQ("compatibility-mismatch compatibility-mismatch", codesOf(findings));
    EXPECT_EQ("$.files[0].boards[0].hwCompatibilityId[1]", findings[0].path);
    EXPECT_EQ("$.files[0].hwCompatibilityId[1]", findings[1].path);
}

} // namespace
