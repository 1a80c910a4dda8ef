#include "ArchiveFixture.h"

#include <string>

namespace {

using EntryRecords = ArchiveTest;

TEST_F(EntryRecords, AFreshRecordKnowsNothing) {
    const KvTArchiveFile fresh;
    EXPECT_TRUE(fresh.name.isEmpty());
    EXPECT_EQ(0U, fresh.sequence);
    EXPECT_EQ(0xFFFFFFFEU, fresh.version.getAsULong64());
    EXPECT_EQ(0xFFFFFFFEU, fresh.checksumCrc32);
    EXPECT_EQ(nullptr, fresh.description);
    EXPECT_FALSE(fresh.hasTargetPath);
    EXPECT_EQ(0U, fresh.mode);
    EXPECT_EQ(0U, fresh.matchCount);
    EXPECT_FALSE(fresh.fileMissing);
}

TEST_F(EntryRecords, AnEntryFillsItsRecord) {
    const ObjectText entry = goodEntry()
                                 .set("name", "\"f\xC3\xBC\\u006Cl.bin\"")
                                 .set("sequence", "4294967295")
                                 .set("version", R"("2.3b4.5")")
                                 .set("checksumCrc32", "4294967295")
                                 .set("mode", R"("upgrade")");
    ASSERT_TRUE(readDescription(ArchiveBuilder().entry(entry)));
    EXPECT_EQ("f\xC3\xBCll.bin", file(0).name.view());
    EXPECT_EQ(4294967295U, file(0).sequence);
    EXPECT_EQ(KvCVersion(2, 3, 0, 2, 4, 5), file(0).version);
    EXPECT_EQ(4294967295U, file(0).checksumCrc32);
    EXPECT_EQ(1U, file(0).mode);
    EXPECT_FALSE(file(0).hasTargetPath);
    EXPECT_EQ(0U, file(0).matchCount);
    EXPECT_FALSE(file(0).fileMissing);
    EXPECT_EQ(4294967295U, archive().maxSequence());
}

TEST_F(EntryRecords, TheDescriptionIsTheWholeEntry) {
    const std::string entry = R"({"comment":[1,{"a":null}],"name":"a","sequence":1,"boards":[{"boardType":["A","B"],)"
                              R"("boardVariant":null,"id":3,"more":0.5}],"version":null})";
    ASSERT_TRUE(readDescription(ArchiveBuilder().entry(entry)));
    EXPECT_EQ(entry, file(0).description->dump());
}

TEST_F(EntryRecords, AVersionThatIsAbsentIsThatOfTheArchive) {
    ASSERT_TRUE(readDescription(ArchiveBuilder().info("archiveVersion", R"("7.8a9")").entry(goodEntry())));
    EXPECT_EQ(KvCVersion(7, 8, 0, 1, 9, 0), file(0).version);
}

TEST_F(EntryRecords, AVersionOfNullIsZero) {
    ASSERT_TRUE(readDescription(ArchiveBuilder().entry(goodEntry().set("version", "null"))));
    EXPECT_EQ(KvCVersion(), file(0).version);
    EXPECT_EQ(0U, file(0).version.getAsULong64());
}

TEST_F(EntryRecords, AChecksumThatIsAbsentIsUnknown) {
    ASSERT_TRUE(readDescription(ArchiveBuilder().entry(goodEntry().remove("checksumCrc32"))));
    EXPECT_EQ(0xFFFFFFFEU, file(0).checksumCrc32);
}

TEST_F(EntryRecords, AChecksumOf0IsAChecksum) {
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(goodEntry().set("checksumCrc32", "0"))));
    EXPECT_EQ(0U, file(0).checksumCrc32);
}

TEST_F(EntryRecords, LargerNumbersLoseTheirHighBits) {
    ASSERT_TRUE(readDescription(ArchiveBuilder().entry(
        goodEntry().set("sequence", "4294967299").set("checksumCrc32", "18446744069414584325"))));
    EXPECT_EQ(3U, file(0).sequence);
    EXPECT_EQ(5U, file(0).checksumCrc32);
    EXPECT_EQ(3U, archive().maxSequence());
}

TEST_F(EntryRecords, TheModeIsStandardUnlessUpgradeIsAskedFor) {
    ASSERT_TRUE(readDescription(ArchiveBuilder()
                                    .entry(goodEntry())
                                    .entry(goodEntry().set("mode", R"("standard")"))
                                    .entry(goodEntry().set("mode", R"("upgrade")"))));
    EXPECT_EQ(0U, file(0).mode);
    EXPECT_EQ(0U, file(1).mode);
    EXPECT_EQ(1U, file(2).mode);
}

TEST_F(EntryRecords, ATargetPathIsFoundInTheEntryAndInAnyOfItsBoards) {
    const std::string typeOnly = R"({"boardType": "A"})";
    const std::string withPath = R"({"boardType": "B", "targetPath": "/f"})";
    ASSERT_TRUE(readDescription(ArchiveBuilder()
                                    .entry(goodEntry())
                                    .entry(goodEntry().remove("id").set("targetPath", "\"/f\""))
                                    .entry(entryWithBoards(joined(withPath, ",", withPath)))
                                    .entry(entryWithBoards(joined(typeOnly, ",", withPath)).set("targetPath", "\"/f\""))
                                    .entry(entryWithBoards(typeOnly).set("targetPath", "\"/f\""))
                                    .entry(entryWithBoards(goodBoard().text()))));
    EXPECT_FALSE(file(0).hasTargetPath);
    EXPECT_TRUE(file(1).hasTargetPath);
    EXPECT_TRUE(file(2).hasTargetPath);
    EXPECT_TRUE(file(3).hasTargetPath);
    EXPECT_TRUE(file(4).hasTargetPath);
    EXPECT_FALSE(file(5).hasTargetPath);
}

TEST_F(EntryRecords, RecordsCanBeCopied) {
    ASSERT_TRUE(readDescription(ArchiveBuilder().entry(goodEntry())));
    KvTArchiveFile copy = file(0);
    archive().setFiles({});
    EXPECT_EQ("a.bin", copy.name.view());
    EXPECT_EQ("QB", copy.description->view().find("boardType").get_string());
    EXPECT_EQ("QB", copy.selections.at(0).boardTypes.at(0));
}

} // namespace
