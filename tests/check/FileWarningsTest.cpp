#include "CheckFixture.h"
#include "UpdateFiles.h"

#include <filesystem>

namespace {

using KvNReflasher::KvESeverity;
using KvNReflasher::KvTFinding;
class CheckFiles : public CheckTest {
protected:
    CheckFiles() { folder().write("image.bin", firmwareImage(KvCVersion(2, 1, 0, 0, 0, 0), 77)); }

    static ObjectText imageEntry() { return goodEntry().set("name", "\"image.bin\"").set("version", "\"2.1\""); }
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

} // namespace
