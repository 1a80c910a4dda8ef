#include "ArchiveFixture.h"
#include "ArchivePrintouts.h"
#include "BinaryFile.h"
#include "BlockPrinter.h"
#include "KvNJson.h"
#include "RandomDescriptions.h"
#include "RedirectedStream.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

class DescriptionDump : public ArchiveTest {
protected:
    DescriptionDump() { options().mode = KvNReflasher::dumpArchiveDescription; }

    std::string dump() {
        return printed([this] { dumpDescription(writer(), archive()); });
    }
};

TEST_F(DescriptionDump, AnArchiveWithoutEntriesHasNullFiles) {
    ASSERT_TRUE(readArchive(ArchiveBuilder()));
    EXPECT_EQ(R"({
    "info": {
        "formatVersion": "1.0",
        "archiveVersion": "23.2.1",
        "productName": "Rack firmware",
        "archiveVariant": "standard",
        "archiveName": "Rack 23"
    },
    "files": null
}
)",
              dump());
}

TEST_F(DescriptionDump, SkippedEntriesAreLeftOut) {
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(R"({"featureLevel": 3})")));
    EXPECT_NE(std::string::npos, dump().find("    \"files\": null\n"));
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(R"({"featureLevel": 3})").entry(goodEntry())));
    EXPECT_EQ(std::string::npos, dump().find("featureLevel"));
}

TEST_F(DescriptionDump, AnEntryIsWrittenAsItWasRead) {
    ASSERT_TRUE(readArchive(ArchiveBuilder()
                                .info("archiveVersion", R"("5.0")")
                                .info("comment", "1")
                                .withoutInfo("archiveVariant")
                                .root("comment", "1")
                                .entry(R"({"zeta": [], "sequence": 7, "checksumCrc32": 4294967295, "boards":
        [{"id": 3, "boardType": ["A", "B"], "note": {"deep": [1.50, -2, true, null, {}]}}], "name": "f.bin",
        "version": null, "mode": "upgrade", "featureLevel": 2})")));
    EXPECT_EQ(R"({
    "info": {
        "formatVersion": "1.0",
        "archiveVersion": "5.0",
        "productName": "Rack firmware",
        "archiveName": "Rack 23"
    },
    "files": [
        {
            "zeta": [],
            "sequence": 7,
            "checksumCrc32": 4294967295,
            "boards": [
                {
                    "id": 3,
                    "boardType": [
                        "A",
                        "B"
                    ],
                    "note": {
                        "deep": [
                            1.5,
                            -2,
                            true,
                            null,
                            {}
                        ]
                    }
                }
            ],
            "name": "f.bin",
            "version": null,
            "mode": "upgrade",
            "featureLevel": 2
        }
    ]
}
)",
              dump());
}

TEST_F(DescriptionDump, AChecksumOfAnUpdateFileIsAddedAtTheEnd) {
    writeFile("image", imageFile(3000000000).bytes());
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(R"({"name": "image", "sequence": 1, "boardType": "A", "id": 2})")));
    EXPECT_NE(std::string::npos, dump().find(R"(    "files": [
        {
            "name": "image",
            "sequence": 1,
            "boardType": "A",
            "id": 2,
            "checksumCrc32": 3000000000
        }
    ]
)"));
}

TEST_F(DescriptionDump, AChecksumThatStoodForUnknownIsReplacedInItsPlace) {
    writeFile("image", imageFile(21).bytes());
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(
        R"({"name": "image", "checksumCrc32": 4294967294, "sequence": 1, "boardType": "A", "id": 2})")));
    EXPECT_NE(std::string::npos, dump().find(R"(
            "name": "image",
            "checksumCrc32": 21,
            "sequence": 1,
)"));
}

TEST_F(DescriptionDump, AChecksumIsWrittenAsItWasUnderstood) {
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(goodEntry().set("checksumCrc32", "4294967301"))));
    EXPECT_NE(std::string::npos, dump().find("\"checksumCrc32\": 5\n"));
}

TEST_F(DescriptionDump, AnUnknownChecksumIsNotAdded) {
    writeFile("bitstream", bitstreamFile(80, 5).bytes());
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(goodEntry().set("name", "\"bitstream\"").remove("checksumCrc32"))));
    EXPECT_EQ(std::string::npos, dump().find("checksumCrc32"));
}

TEST_F(DescriptionDump, AnUnknownChecksumThatWasReadStaysAsItWasRead) {
    writeFile("bitstream", bitstreamFile(80, 5).bytes());
    for (const char* checksum : {"4294967294", "8589934590"}) {
        ASSERT_TRUE(readArchive(
            ArchiveBuilder().entry(goodEntry().set("name", "\"bitstream\"").set("checksumCrc32", checksum))));
        EXPECT_NE(std::string::npos, dump().find(joined("\"checksumCrc32\": ", checksum, "\n"))) << checksum;
    }
}

TEST_F(DescriptionDump, TheFormatIsAlwaysOurs) {
    for (const char* format : {R"("1")", R"("1.7")", R"("1.0.0.3")", R"("1.2a4")"}) {
        ASSERT_TRUE(readArchive(ArchiveBuilder().info("formatVersion", format)));
        EXPECT_NE(std::string::npos, dump().find("        \"formatVersion\": \"1.0\",\n")) << format;
    }
}

TEST_F(DescriptionDump, TheArchiveVersionIsWrittenAsItPrints) {
    ASSERT_TRUE(readArchive(ArchiveBuilder().info("archiveVersion", R"("023.02.0.0")")));
    EXPECT_NE(std::string::npos, dump().find("        \"archiveVersion\": \"23.2\",\n"));
    ASSERT_TRUE(readArchive(ArchiveBuilder().info("archiveVersion", R"("23.2.0a12")")));
    EXPECT_NE(std::string::npos, dump().find("        \"archiveVersion\": \"23.2a12\",\n"));
}

TEST_F(DescriptionDump, AnEmptyVariantIsLeftOut) {
    ASSERT_TRUE(readArchive(ArchiveBuilder().info("archiveVariant", R"("")")));
    EXPECT_EQ(std::string::npos, dump().find("archiveVariant"));
}

TEST_F(DescriptionDump, DefaultsOfAnEntryAreNotWrittenBack) {
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(goodEntry())));
    const std::string text = dump();
    for (const char* key : {"\"version\"", "\"mode\"", "\"featureLevel\"", "\"targetPath\"", "\"fileMissing\""}) {
        EXPECT_EQ(std::string::npos, text.find(key)) << key;
    }
}

TEST_F(DescriptionDump, TextsAreEscapedWhereTheyMustBeOnly) {
    ASSERT_TRUE(readArchive(ArchiveBuilder()
                                .info("productName", "\"\\u20AC/\xC3\xBC%s\"")
                                .info("archiveName", R"("a\"b\\c\/\n\u0001\u0000")")));
    const std::string text = dump();
    EXPECT_NE(std::string::npos, text.find("\"productName\": \"\xE2\x82\xAC/\xC3\xBC%s\","));
    EXPECT_NE(std::string::npos, text.find(R"("archiveName": "a\"b\\c/\n\u0001\u0000")"));
}

/// An archive whose dump is many times as long as a block.
ArchiveBuilder longArchive() {
    ArchiveBuilder builder;
    for (int count = 0; count < 1000; ++count) {
        builder.entry(goodEntry());
    }
    return builder;
}

TEST_F(DescriptionDump, AMessageCallbackReceivesOneMessage) {
    ASSERT_TRUE(readArchive(longArchive()));
    const std::string text = dump();
    EXPECT_GT(text.size(), 4 * KvCBlockPrinter::blockSize);
    EXPECT_EQ(1U, KeptMessages::list().size());
    EXPECT_FALSE(KvNJson::json::parse(text).is_invalid());
}

TEST_F(DescriptionDump, OnStandardOutputTheTextIsTheSame) {
    ASSERT_TRUE(readArchive(longArchive()));
    const std::string text = dump();
    const KvTCallbacks noCallbacks;
    const KvCConsoleWriter standardOutput(noCallbacks);
    const RedirectedStream output(stdout);
    dumpDescription(standardOutput, archive());
    EXPECT_EQ(text, output.received());
}

TEST_F(DescriptionDump, WhateverIsAcceptedCanBeShown) {
    RandomDescriptions random(5);
    std::size_t shown = 0;
    for (unsigned round = 0; round < 2000; ++round) {
        JsonModel description = random.description(4);
        random.mutate(description);
        if (readDescription(description.write())) {
            EXPECT_TRUE(printed([this] { printArchiveContent(writer(), archive()); }).ends_with('\n'));
            EXPECT_TRUE(printed([this] { printArchiveVersion(writer(), archive()); }).ends_with('\n'));
            EXPECT_FALSE(KvNJson::json::parse(dump()).is_invalid()) << description.write();
            ++shown;
        }
    }
    EXPECT_LT(100U, shown);
}

TEST_F(DescriptionDump, TheArchiveItselfIsLeftAsItWas) {
    writeFile("image", imageFile(21).bytes());
    ASSERT_TRUE(readArchive(ArchiveBuilder().entry(goodEntry().set("name", "\"image\"").remove("checksumCrc32"))));
    const std::string once = dump();
    EXPECT_FALSE(file(0).description->view().contains("checksumCrc32"));
    EXPECT_EQ(once, dump());
}

TEST_F(DescriptionDump, ADumpReadsAsTheSameArchiveAndDumpsToTheSameText) {
    writeFile("image", imageFile(21).bytes());
    writeFile("tree", treeFile(R"("CHECKSUM_CRC32": 22)"));
    ASSERT_TRUE(readArchive(
        ArchiveBuilder()
            .info("formatVersion", R"("1.7")")
            .info("archiveVersion", R"("023.2a12")")
            .info("productName", "\"\xC3\xBC\"")
            .root("comment", "true")
            .entry(goodEntry().set("name", "\"image\"").remove("checksumCrc32").set("mode", R"("upgrade")"))
            .entry(R"({"featureLevel": 9})")
            .entry(entryWithBoards(R"({"boardType": ["A"], "targetPath": "/\u00e4", "boardVariant": [null, "x"]})")
                       .set("name", "\"tree\"")
                       .remove("checksumCrc32")
                       .set("sequence", "12")
                       .set("version", "null"))
            .entry(goodEntry().set("note", "[1e3, 0.1, -0.0, 18446744073709551615, 1e-7, \"\\ud83d\\ude00\"]"))));
    const std::string text = dump();
    const KvTArchiveInfo info = archive().info();
    const std::vector<KvTArchiveFile> files = archive().files();

    std::filesystem::remove(folder() / "image");
    std::filesystem::remove(folder() / "tree");
    ASSERT_TRUE(readArchive(text));
    EXPECT_EQ(L"", messages());
    EXPECT_EQ(KvCVersion(1, 0, 0, 0, 0, 0), archive().info().formatVersion);
    EXPECT_EQ(info.archiveVersion, archive().info().archiveVersion);
    EXPECT_EQ(info.productName, archive().info().productName);
    EXPECT_EQ(info.archiveVariant, archive().info().archiveVariant);
    EXPECT_EQ(info.archiveName, archive().info().archiveName);
    ASSERT_EQ(files.size(), archive().files().size());
    for (std::size_t index = 0; index < files.size(); ++index) {
        EXPECT_EQ(files[index].name, file(index).name);
        EXPECT_EQ(files[index].sequence, file(index).sequence);
        EXPECT_EQ(files[index].version, file(index).version);
        EXPECT_EQ(files[index].checksumCrc32, file(index).checksumCrc32);
        EXPECT_EQ(files[index].hasTargetPath, file(index).hasTargetPath);
        EXPECT_EQ(files[index].mode, file(index).mode);
    }
    EXPECT_EQ(text, dump());
}

} // namespace
