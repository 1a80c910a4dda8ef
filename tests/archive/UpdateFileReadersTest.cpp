#include "UpdateFileReaders.h"

#include "ArchiveFixture.h"
#include "BinaryFile.h"
#include "KvEmulation.h"
#include "TargetBuilder.h"

#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t unknown = 0xFFFFFFFE;

/// The files of a reader are in the archive folder of the fixture.
class ReaderTest : public ArchiveTest {
protected:
    KvEReadStatus readImage(std::string_view bytes) {
        writeFile("f", bytes);
        return readImageHeader(pathOf(L"f"), header);
    }
    KvEReadStatus readTree(std::string_view bytes) {
        writeFile("f", bytes);
        return readInventoryFile(pathOf(L"f"), header);
    }
    KvEReadStatus readBitstream(std::string_view bytes) {
        writeFile("f", bytes);
        return readBitstreamHeader(pathOf(L"f"), checksum);
    }
    KvEReadStatus readAny(std::string_view bytes) {
        writeFile("f", bytes);
        return readUpdateFile(pathOf(L"f"), header);
    }

    /// A header that no file of these tests has.
    static KvTUpdateFileHeader foreignHeader() {
        KvTUpdateFileHeader foreign{901, 902, 903, 904, 905, 906};
        foreign.version = KvCVersion(90, 7, 0, 0, 0, 0);
        return foreign;
    }
    void expectForeignHeader() const {
        EXPECT_EQ(901U, header.minHwCompatibilityId);
        EXPECT_EQ(902U, header.maxHwCompatibilityId);
        EXPECT_EQ(903U, header.minSwCompatibilityId);
        EXPECT_EQ(904U, header.maxSwCompatibilityId);
        EXPECT_EQ(905U, header.typeId);
        EXPECT_EQ(906U, header.checksum);
        EXPECT_EQ(KvCVersion(90, 7, 0, 0, 0, 0), header.version);
    }

    KvTUpdateFileHeader header = foreignHeader();
    std::uint32_t checksum = 906;
};

TEST(UpdateFileHeader, NothingIsKnownAtFirst) {
    const KvTUpdateFileHeader header;
    EXPECT_EQ(unknown, header.minHwCompatibilityId);
    EXPECT_EQ(unknown, header.maxHwCompatibilityId);
    EXPECT_EQ(unknown, header.minSwCompatibilityId);
    EXPECT_EQ(unknown, header.maxSwCompatibilityId);
    EXPECT_EQ(unknown, header.typeId);
    EXPECT_EQ(unknown, header.checksum);
    EXPECT_EQ(unknown, header.version.getAsULong64());
}

TEST(UpdateFileHeader, StatusesHaveTheirNumbers) {
    EXPECT_EQ(0, static_cast<int>(KvEReadStatus::success));
    EXPECT_EQ(1, static_cast<int>(KvEReadStatus::notThisKind));
    EXPECT_EQ(2, static_cast<int>(KvEReadStatus::cannotOpen));
}

// Firmware images.

using ImageReader = ReaderTest;

/// An image whose every byte that is not a magic one is noise.
BinaryFile noisyImage(std::size_t size = 1000) {
    return BinaryFile(size).fillWithNoise().put32(40, 0x1255AA34).put32(44, 0xAA184755);
}

TEST_F(ImageReader, EveryFieldHasItsPlace) {
    const BinaryFile image = noisyImage()
                                 .put32(60, 0x01234567)
                                 .put8(76, 23)
                                 .put8(77, 2)
                                 .put8(78, 7)
                                 .put8(79, 10)
                                 .put16(80, 0x1234)
                                 .put16(82, 0xFEDC)
                                 .put32(344, 0x80000001)
                                 .put32(348, 0xA0B0C0D0)
                                 .put32(352, 0x00000003)
                                 .put32(356, 0x00FF00FF)
                                 .put32(360, 0xFFFFFFFF);
    ASSERT_EQ(KvEReadStatus::success, readImage(image.bytes()));
    EXPECT_EQ(0x01234567U, header.checksum);
    EXPECT_EQ(KvCVersion(23, 2, 7, 1, 0x1234, 0xFEDC), header.version);
    EXPECT_EQ(0x80000001U, header.minHwCompatibilityId);
    EXPECT_EQ(0xA0B0C0D0U, header.maxHwCompatibilityId);
    EXPECT_EQ(3U, header.minSwCompatibilityId);
    EXPECT_EQ(0x00FF00FFU, header.maxSwCompatibilityId);
    EXPECT_EQ(0xFFFFFFFFU, header.typeId);
}

TEST_F(ImageReader, NothingElseOfTheFileMatters) {
    ASSERT_EQ(KvEReadStatus::success,
              readImage(imageFile(1).resize(5000).fillWithNoise().put32(40, 0x1255AA34).put32(44, 0xAA184755).bytes()));
    const KvTUpdateFileHeader ofNoise = header;
    ASSERT_EQ(KvEReadStatus::success, readImage(noisyImage(364).bytes()));
    EXPECT_EQ(ofNoise.checksum, header.checksum);
    EXPECT_EQ(ofNoise.version, header.version);
    EXPECT_EQ(ofNoise.typeId, header.typeId);
}

TEST_F(ImageReader, AllByteValuesOfTheReleaseKindAreUnderstood) {
    for (unsigned kind = 0; kind <= 0xFF; ++kind) {
        ASSERT_EQ(KvEReadStatus::success,
                  readImage(imageFile(1).put8(76, 5).put8(79, static_cast<std::uint8_t>(kind)).bytes()));
        EXPECT_EQ(kind == 10 ? 1 : kind == 11 ? 2 : 0, header.version.getSpb()) << kind;
        EXPECT_EQ(5, header.version.getMar());
        EXPECT_EQ(0, header.version.getSpn());
    }
}

TEST_F(ImageReader, EveryMagicByteCounts) {
    for (std::size_t offset = 40; offset < 48; ++offset) {
        const BinaryFile right = noisyImage();
        EXPECT_EQ(KvEReadStatus::notThisKind,
                  readImage(noisyImage().put8(offset, static_cast<std::uint8_t>(right.at(offset) ^ 1U)).bytes()))
            << offset;
        expectForeignHeader();
    }
}

TEST_F(ImageReader, MagicWordsElsewhereOrTurnedRoundAreNone) {
    EXPECT_EQ(KvEReadStatus::notThisKind,
              readImage(BinaryFile(1000).put32(0, 0x1255AA34).put32(4, 0xAA184755).bytes()));
    EXPECT_EQ(KvEReadStatus::notThisKind,
              readImage(BinaryFile(1000).put32(40, 0x34AA5512).put32(44, 0x554718AA).bytes()));
    EXPECT_EQ(KvEReadStatus::notThisKind,
              readImage(BinaryFile(1000).put32(40, 0xAA184755).put32(44, 0x1255AA34).bytes()));
    expectForeignHeader();
}

TEST_F(ImageReader, AFileThatEndsInTheMagicIsNone) {
    for (std::size_t size = 0; size < 48; ++size) {
        EXPECT_EQ(KvEReadStatus::notThisKind, readImage(noisyImage().resize(size).bytes())) << size;
    }
    expectForeignHeader();
}

TEST_F(ImageReader, BeyondItsEndAShortFileReadsAsZeros) {
    ASSERT_EQ(KvEReadStatus::success, readImage(noisyImage().resize(48).bytes()));
    EXPECT_EQ(0U, header.minHwCompatibilityId);
    EXPECT_EQ(0U, header.maxHwCompatibilityId);
    EXPECT_EQ(0U, header.minSwCompatibilityId);
    EXPECT_EQ(0U, header.maxSwCompatibilityId);
    EXPECT_EQ(0U, header.typeId);
    EXPECT_EQ(0U, header.checksum);
    EXPECT_EQ(KvCVersion(), header.version);
}

TEST_F(ImageReader, AFieldMayBeCutAnywhere) {
    for (std::size_t size = 48; size <= 364; ++size) {
        const BinaryFile cut = noisyImage().resize(size);
        const BinaryFile zeros = BinaryFile(cut).resize(1000);
        const auto word = [&zeros](std::size_t offset) {
            return zeros.at(offset) * 0x1000000U + zeros.at(offset + 1) * 0x10000U + zeros.at(offset + 2) * 0x100U +
                   zeros.at(offset + 3);
        };
        ASSERT_EQ(KvEReadStatus::success, readImage(cut.bytes())) << size;
        EXPECT_EQ(word(60), header.checksum) << size;
        EXPECT_EQ(word(344), header.minHwCompatibilityId) << size;
        EXPECT_EQ(word(348), header.maxHwCompatibilityId) << size;
        EXPECT_EQ(word(352), header.minSwCompatibilityId) << size;
        EXPECT_EQ(word(356), header.maxSwCompatibilityId) << size;
        EXPECT_EQ(word(360), header.typeId) << size;
        EXPECT_EQ(zeros.at(76), header.version.getMar()) << size;
        EXPECT_EQ(zeros.at(77), header.version.getMir()) << size;
        EXPECT_EQ(zeros.at(78), header.version.getMai()) << size;
        EXPECT_EQ(word(80) >> 16U, header.version.getSpn()) << size;
        EXPECT_EQ(word(80) & 0xFFFFU, header.version.getPlv()) << size;
    }
}

TEST_F(ImageReader, WhatCannotBeOpenedIsToldFromAnotherKind) {
    makeFolder("folder");
    EXPECT_EQ(KvEReadStatus::cannotOpen, readImageHeader(L"", header));
    EXPECT_EQ(KvEReadStatus::cannotOpen, readImageHeader(pathOf(L"missing"), header));
    EXPECT_EQ(KvEReadStatus::cannotOpen, readImageHeader(pathOf(L"missing\\f"), header));
    EXPECT_EQ(KvEReadStatus::cannotOpen, readImageHeader(pathOf(L"folder"), header));
    expectForeignHeader();
}

TEST_F(ImageReader, AFileIsNoFolderOfOthers) {
    writeFile("f", imageFile(1).bytes());
    EXPECT_EQ(KvEReadStatus::cannotOpen, readImageHeader(pathOf(L"f\\f"), header));
    EXPECT_EQ(KvEReadStatus::cannotOpen, readUpdateFile(pathOf(L"f\\f"), header));
    EXPECT_EQ(KvEReadStatus::notThisKind, readInventoryFile(pathOf(L"f\\f"), header));
    EXPECT_EQ(KvEReadStatus::notThisKind, readBitstreamHeader(pathOf(L"f\\f"), checksum));
    expectForeignHeader();
}

// FPGA bitstreams.

using BitstreamReader = ReaderTest;

TEST_F(BitstreamReader, TheChecksumIsTheWordAtByte88) {
    ASSERT_EQ(KvEReadStatus::success, readBitstream(BinaryFile(200)
                                                        .fillWithNoise()
                                                        .putText(0, "kvFPGABS")
                                                        .put32(8, 92)
                                                        .put32(12, 1)
                                                        .put32(88, 0x89ABCDEF)
                                                        .bytes()));
    EXPECT_EQ(0x89ABCDEFU, checksum);
}

TEST_F(BitstreamReader, NinetyTwoBytesSufficeAndNinetyOneDoNot) {
    EXPECT_EQ(KvEReadStatus::success, readBitstream(bitstreamFile(92, 0x01020304).resize(92).bytes()));
    EXPECT_EQ(0x01020304U, checksum);
    EXPECT_EQ(KvEReadStatus::notThisKind, readBitstream(bitstreamFile(92, 0x01020304).resize(91).bytes()));
    EXPECT_EQ(unknown, checksum);
}

TEST_F(BitstreamReader, ShortFilesAreNoneWhateverTheirHeaderSize) {
    for (std::size_t size = 0; size < 92; ++size) {
        EXPECT_EQ(KvEReadStatus::notThisKind, readBitstream(bitstreamFile(80, 1).resize(size).bytes())) << size;
    }
}

TEST_F(BitstreamReader, AHeaderBelow92BytesHasNoChecksum) {
    for (const std::uint32_t size : {0U, 16U, 80U, 91U}) {
        checksum = 906;
        EXPECT_EQ(KvEReadStatus::success, readBitstream(bitstreamFile(size, 5).bytes())) << size;
        EXPECT_EQ(unknown, checksum) << size;
    }
}

TEST_F(BitstreamReader, AHeaderFrom92BytesOnHasOne) {
    for (const std::uint32_t size : {92U, 93U, 0x100U, 0x5C000000U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(KvEReadStatus::success, readBitstream(bitstreamFile(size, size - 1).bytes())) << size;
        EXPECT_EQ(size - 1, checksum) << size;
    }
}

TEST_F(BitstreamReader, OnlyFormatVersion1IsKnown) {
    for (const std::uint32_t version : {0U, 2U, 0x01000000U, 0x00010001U, 0xFFFFFFFFU}) {
        for (const std::uint32_t size : {80U, 92U}) {
            checksum = 906;
            EXPECT_EQ(KvEReadStatus::notThisKind, readBitstream(bitstreamFile(size, 5).put32(12, version).bytes()));
            EXPECT_EQ(unknown, checksum);
        }
    }
}

TEST_F(BitstreamReader, EveryMagicByteCounts) {
    for (std::size_t offset = 0; offset < 8; ++offset) {
        const BinaryFile right = bitstreamFile(92, 5);
        checksum = 906;
        EXPECT_EQ(
            KvEReadStatus::notThisKind,
            readBitstream(BinaryFile(right).put8(offset, static_cast<std::uint8_t>(right.at(offset) ^ 0x20U)).bytes()))
            << offset;
        EXPECT_EQ(unknown, checksum);
    }
}

TEST_F(BitstreamReader, WhatCannotBeOpenedIsNone) {
    makeFolder("folder");
    for (const std::wstring& path : {std::wstring(), pathOf(L"missing"), pathOf(L"folder")}) {
        checksum = 906;
        EXPECT_EQ(KvEReadStatus::notThisKind, readBitstreamHeader(path, checksum));
        EXPECT_EQ(unknown, checksum);
    }
}

// Inventory tree files.

using InventoryFileReader = ReaderTest;

constexpr std::string_view allParameters =
    R"("MIN_HW_COMPATIBILITY_ID": 11, "MAX_HW_COMPATIBILITY_ID": 12, "MIN_SW_COMPATIBILITY_ID": 13,
       "MAX_SW_COMPATIBILITY_ID": 14, "TYPE_ID": 15, "CHECKSUM_CRC32": 16, "VERSION": "3.5a2")";

TEST_F(InventoryFileReader, EveryParameterHasItsPlace) {
    ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(allParameters)));
    EXPECT_EQ(11U, header.minHwCompatibilityId);
    EXPECT_EQ(12U, header.maxHwCompatibilityId);
    EXPECT_EQ(13U, header.minSwCompatibilityId);
    EXPECT_EQ(14U, header.maxSwCompatibilityId);
    EXPECT_EQ(15U, header.typeId);
    EXPECT_EQ(16U, header.checksum);
    EXPECT_EQ(KvCVersion(3, 5, 0, 1, 2, 0), header.version);
}

TEST_F(InventoryFileReader, AChecksumBesideTheTreeIsTakenInsteadOfTheParameter) {
    ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(allParameters, R"(, "checksumCrc32": 4294967295)")));
    EXPECT_EQ(0xFFFFFFFFU, header.checksum);
    EXPECT_EQ(15U, header.typeId);
    ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(allParameters, R"(, "checksumCrc32": 0)")));
    EXPECT_EQ(0U, header.checksum);
    ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(R"("CHECKSUM_CRC32": "text")", R"(, "checksumCrc32": 9)")));
    EXPECT_EQ(9U, header.checksum);
}

TEST_F(InventoryFileReader, WhatTheNodeDoesNotTellIsUnknown) {
    ASSERT_EQ(KvEReadStatus::success, readTree(treeFile("")));
    EXPECT_EQ(unknown, header.minHwCompatibilityId);
    EXPECT_EQ(unknown, header.maxHwCompatibilityId);
    EXPECT_EQ(unknown, header.minSwCompatibilityId);
    EXPECT_EQ(unknown, header.maxSwCompatibilityId);
    EXPECT_EQ(unknown, header.typeId);
    EXPECT_EQ(unknown, header.checksum);
    EXPECT_EQ(unknown, header.version.getAsULong64());
}

struct NumberField {
    const char* parameter;
    std::uint32_t KvTUpdateFileHeader::*field;
};

constexpr std::array numberFields = {NumberField{"MIN_HW_COMPATIBILITY_ID", &KvTUpdateFileHeader::minHwCompatibilityId},
                                     NumberField{"MAX_HW_COMPATIBILITY_ID", &KvTUpdateFileHeader::maxHwCompatibilityId},
                                     NumberField{"MIN_SW_COMPATIBILITY_ID", &KvTUpdateFileHeader::minSwCompatibilityId},
                                     NumberField{"MAX_SW_COMPATIBILITY_ID", &KvTUpdateFileHeader::maxSwCompatibilityId},
                                     NumberField{"TYPE_ID", &KvTUpdateFileHeader::typeId},
                                     NumberField{"CHECKSUM_CRC32", &KvTUpdateFileHeader::checksum}};

TEST_F(InventoryFileReader, AParameterThatCannotBeReadIsUnknownAndSpoilsNoOther) {
    for (const NumberField& bad : numberFields) {
        for (const char* value : {R"("17")", "4294967296"}) {
            std::string parameters = R"("VERSION": "3.5")";
            for (const NumberField& field : numberFields) {
                parameters += joined(", \"", field.parameter, "\": ", &field == &bad ? value : "17");
            }
            SCOPED_TRACE(parameters);
            ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(parameters)));
            for (const NumberField& field : numberFields) {
                EXPECT_EQ(&field == &bad ? unknown : 17U, header.*field.field);
            }
            EXPECT_EQ(KvCVersion(3, 5, 0, 0, 0, 0), header.version);
        }
    }
}

TEST_F(InventoryFileReader, AParameterThatIsMissingSpoilsNoOther) {
    for (const NumberField& missing : numberFields) {
        std::string parameters = R"("VERSION": "3.5")";
        for (const NumberField& field : numberFields) {
            parameters += &field == &missing ? std::string() : joined(", \"", field.parameter, "\": 17");
        }
        ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(parameters)));
        for (const NumberField& field : numberFields) {
            EXPECT_EQ(&field == &missing ? unknown : 17U, header.*field.field) << field.parameter;
        }
    }
}

TEST_F(InventoryFileReader, AVersionThatIsANumberIsUnknown) {
    ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(R"("VERSION": 3, "TYPE_ID": 4)")));
    EXPECT_EQ(unknown, header.version.getAsULong64());
    EXPECT_EQ(4U, header.typeId);
}

TEST_F(InventoryFileReader, ATreeWithoutAFirmwareNodeTellsItsOwnChecksumAtMost) {
    const std::string tree = R"({"inventoryTree": {"id": "ROOT", "parameters": {"CHECKSUM_CRC32": 1},
        "items": [{"id": "HCN", "parameters": {"TYPE_ID": 2}}]})";
    ASSERT_EQ(KvEReadStatus::success, readTree(joined(tree, "}")));
    EXPECT_EQ(unknown, header.checksum);
    EXPECT_EQ(unknown, header.typeId);
    EXPECT_EQ(unknown, header.version.getAsULong64());
    ASSERT_EQ(KvEReadStatus::success, readTree(joined(tree, R"(, "checksumCrc32": 7})")));
    EXPECT_EQ(7U, header.checksum);
    EXPECT_EQ(unknown, header.typeId);
}

std::string firmware(std::string_view checksum, std::string_view items = "") {
    return joined(R"({"id": "FIRMWARE", "parameters": {"CHECKSUM_CRC32": )", checksum, R"(}, "items": [)", items, "]}");
}

std::string node(std::string_view id, std::string_view items = "") {
    return joined(R"({"id": ")", id, R"(", "items": [)", items, "]}");
}

TEST_F(InventoryFileReader, OfSeveralFirmwareNodesTheFirstInPreorderCounts) {
    const std::array trees = {
        firmware("1"),
        firmware("1", firmware("2")),
        node("ROOT", joined(firmware("1"), ", ", firmware("2"))),
        node("ROOT", joined(node("HCN", firmware("1")), ", ", firmware("2"))),
        node("ROOT", joined(node("HCN", node("CN", node("NETC", firmware("1")))), ", ", firmware("2"))),
        node("ROOT", joined(node("HCN", joined(node("CN", node("NETC")), ", ", node("CN"))), ", ",
                            node("HCN", joined(node("ION"), ", ", firmware("1", firmware("2")))), ", ", firmware("3"))),
        node("ROOT", joined(node("HCN"), ", ", node("HCN"), ", ", firmware("1"))),
        node("HCN", firmware("1"))};
    for (const std::string& tree : trees) {
        SCOPED_TRACE(tree);
        ASSERT_EQ(KvEReadStatus::success, readTree(joined(R"({"inventoryTree": )", tree, "}")));
        EXPECT_EQ(1U, header.checksum);
    }
}

TEST_F(InventoryFileReader, AFirmwareNodeOfAnyInstanceCounts) {
    ASSERT_EQ(KvEReadStatus::success,
              readTree(R"({"inventoryTree": {"id": "ROOT", "items": [{"id": "FIRMWARE", "instance": 4,
                          "parameters": {"CHECKSUM_CRC32": 8}}]}})"));
    EXPECT_EQ(8U, header.checksum);
}

TEST_F(InventoryFileReader, AnyOtherContentIsNone) {
    for (const char* content :
         {"", "text", "{}", "[]", "null", R"({"inventoryTree": 1})", R"({"inventoryTree": {}})",
          R"({"inventoryTree": {"id": "NOTHING"}})", R"({"checksumCrc32": 1})",
          R"({"inventoryTree": {"id": "ROOT"}, "checksumCrc32": -1})", R"({"inventoryTree": {"id": "ROOT"})"}) {
        SCOPED_TRACE(content);
        EXPECT_EQ(KvEReadStatus::notThisKind, readTree(content));
        expectForeignHeader();
    }
}

TEST_F(InventoryFileReader, WhatCannotBeOpenedIsNone) {
    makeFolder("folder");
    EXPECT_EQ(KvEReadStatus::notThisKind, readInventoryFile(L"", header));
    EXPECT_EQ(KvEReadStatus::notThisKind, readInventoryFile(pathOf(L"missing"), header));
    EXPECT_EQ(KvEReadStatus::notThisKind, readInventoryFile(pathOf(L"folder"), header));
    expectForeignHeader();
}

TEST_F(InventoryFileReader, PathsBeyondAsciiAreFound) {
    writeFile("\xE2\x82\xAC.tree", treeFile(allParameters));
    EXPECT_EQ(KvEReadStatus::success, readInventoryFile(pathOf(L"\u20AC.tree"), header));
}

TEST_F(InventoryFileReader, AnExtractionThatReportsAnErrorMeansAnotherKind) {
    TargetBuilder target;
    target.add(fault("extractInventoryTreeFromFile")).serve();
    EXPECT_EQ(KvEReadStatus::notThisKind, readTree(treeFile(allParameters)));
    expectForeignHeader();
    EXPECT_EQ(KvEReadStatus::success, readTree(treeFile(allParameters)));
}

TEST_F(InventoryFileReader, AnExtractionThatGivesNoTreeMeansAnotherKind) {
    TargetBuilder target;
    target.add(fault("extractInventoryTreeFromFile").noErrors()).serve();
    EXPECT_EQ(KvEReadStatus::notThisKind, readTree(treeFile(allParameters)));
    expectForeignHeader();
}

TEST_F(InventoryFileReader, ParametersAreReadOneByOneInTheirOrder) {
    for (std::uint32_t failing = 1; failing <= 7; ++failing) {
        SCOPED_TRACE(failing);
        TargetBuilder target;
        target.add(fault("getValue").at("FIRMWARE[1]").occurrence(failing)).serve();
        ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(allParameters)));
        EXPECT_EQ(failing == 1 ? unknown : 11U, header.minHwCompatibilityId);
        EXPECT_EQ(failing == 2 ? unknown : 12U, header.maxHwCompatibilityId);
        EXPECT_EQ(failing == 3 ? unknown : 13U, header.minSwCompatibilityId);
        EXPECT_EQ(failing == 4 ? unknown : 14U, header.maxSwCompatibilityId);
        EXPECT_EQ(failing == 5 ? unknown : 15U, header.typeId);
        EXPECT_EQ(failing == 6 ? unknown : 16U, header.checksum);
        EXPECT_EQ(failing == 7, header.version.getAsULong64() == unknown);
        KvEmulation::reset();
    }
}

TEST_F(InventoryFileReader, AMissingParameterIsNotRead) {
    TargetBuilder target;
    target.add(fault("getValue").at("FIRMWARE[1]").occurrence(1)).serve();
    ASSERT_EQ(KvEReadStatus::success,
              readTree(treeFile(R"("MAX_HW_COMPATIBILITY_ID": 12, "MIN_SW_COMPATIBILITY_ID": 13)")));
    EXPECT_EQ(unknown, header.minHwCompatibilityId);
    EXPECT_EQ(unknown, header.maxHwCompatibilityId);
    EXPECT_EQ(13U, header.minSwCompatibilityId);
}

TEST_F(InventoryFileReader, TheParameterIsNotReadWhenTheChecksumStandsBesideTheTree) {
    TargetBuilder target;
    target.add(fault("getValue").at("FIRMWARE[1]").occurrence(6)).serve();
    ASSERT_EQ(KvEReadStatus::success, readTree(treeFile(allParameters, R"(, "checksumCrc32": 9)")));
    EXPECT_EQ(9U, header.checksum);
    EXPECT_EQ(15U, header.typeId);
    EXPECT_EQ(unknown, header.version.getAsULong64());
}

// The kinds in turn.

using UpdateFileReader = ReaderTest;

TEST_F(UpdateFileReader, EveryKindIsRecognised) {
    EXPECT_EQ(KvEReadStatus::success, readAny(imageFile(21).bytes()));
    EXPECT_EQ(21U, header.checksum);
    EXPECT_EQ(KvEReadStatus::success, readAny(treeFile(R"("CHECKSUM_CRC32": 22)")));
    EXPECT_EQ(22U, header.checksum);
    EXPECT_EQ(KvEReadStatus::success, readAny(bitstreamFile(92, 23).bytes()));
    EXPECT_EQ(23U, header.checksum);
}

TEST_F(UpdateFileReader, AnImageIsLookedForBeforeABitstream) {
    EXPECT_EQ(KvEReadStatus::success,
              readAny(bitstreamFile(92, 23).put32(40, 0x1255AA34).put32(44, 0xAA184755).put32(60, 21).bytes()));
    EXPECT_EQ(21U, header.checksum);
}

// Only the extraction of a tree can be made to fail: which of the extractions fails tells how many there were before.

TEST_F(UpdateFileReader, ATreeIsNotLookedForInAnImage) {
    TargetBuilder target;
    target.add(fault("extractInventoryTreeFromFile")).serve();
    EXPECT_EQ(KvEReadStatus::success, readAny(imageFile(21).bytes()));
    EXPECT_EQ(KvEReadStatus::notThisKind, readAny(treeFile(allParameters)));
    EXPECT_EQ(21U, header.checksum);
}

TEST_F(UpdateFileReader, ATreeIsLookedForBeforeABitstream) {
    TargetBuilder target;
    target.add(fault("extractInventoryTreeFromFile").occurrence(2)).serve();
    EXPECT_EQ(KvEReadStatus::success, readAny(bitstreamFile(92, 23).bytes()));
    EXPECT_EQ(KvEReadStatus::notThisKind, readAny(treeFile(allParameters)));
    EXPECT_EQ(23U, header.checksum);
}

TEST_F(UpdateFileReader, AFileThatCannotBeOpenedIsNotExtracted) {
    TargetBuilder target;
    target.add(fault("extractInventoryTreeFromFile").occurrence(1)).serve();
    makeFolder("folder");
    EXPECT_EQ(KvEReadStatus::cannotOpen, readUpdateFile(pathOf(L"folder"), header));
    EXPECT_EQ(KvEReadStatus::notThisKind, readAny(treeFile(allParameters)));
    expectForeignHeader();
}

TEST_F(UpdateFileReader, OfABitstreamOnlyTheChecksumIsKnown) {
    EXPECT_EQ(KvEReadStatus::success, readAny(bitstreamFile(92, 23).bytes()));
    EXPECT_EQ(unknown, header.minHwCompatibilityId);
    EXPECT_EQ(unknown, header.maxHwCompatibilityId);
    EXPECT_EQ(unknown, header.minSwCompatibilityId);
    EXPECT_EQ(unknown, header.maxSwCompatibilityId);
    EXPECT_EQ(unknown, header.typeId);
    EXPECT_EQ(unknown, header.version.getAsULong64());
}

TEST_F(UpdateFileReader, ABitstreamWithAShortHeaderIsASuccessWithoutAChecksum) {
    EXPECT_EQ(KvEReadStatus::success, readAny(bitstreamFile(80, 23).bytes()));
    EXPECT_EQ(unknown, header.checksum);
}

TEST_F(UpdateFileReader, AnyOtherFileIsOfNoKind) {
    for (const std::string& content : {std::string(), std::string("#!/bin/sh\n"), std::string("{}"),
                                       BinaryFile(2000).bytes(), BinaryFile(2000).fillWithNoise().bytes()}) {
        EXPECT_EQ(KvEReadStatus::notThisKind, readAny(content));
        expectForeignHeader();
    }
}

TEST_F(UpdateFileReader, WhatCannotBeOpenedIsNotPassedOn) {
    makeFolder("folder");
    for (const std::wstring& path : {std::wstring(), pathOf(L"missing"), pathOf(L"folder")}) {
        EXPECT_EQ(KvEReadStatus::cannotOpen, readUpdateFile(path, header));
        expectForeignHeader();
    }
}

/// How much there is of a file, besides whether it was recognised.
struct ExtentRow {
    const char* name;
    std::string bytes;
    KvEReadStatus status;
    KvEFileExtent extent;

    friend void PrintTo(const ExtentRow& row, std::ostream* stream) { *stream << row.name; }
};

class FileExtent : public ReaderTest, public testing::WithParamInterface<ExtentRow> {};

TEST_P(FileExtent, IsStatedOfEveryFileThatCanBeRead) {
    EXPECT_EQ(GetParam().status, readAny(GetParam().bytes));
    EXPECT_EQ(GetParam().extent, header.extent);
}

constexpr auto known = KvEReadStatus::success;
constexpr auto other = KvEReadStatus::notThisKind;
constexpr auto whole = KvEFileExtent::whole;
constexpr auto cut = KvEFileExtent::cutInHeader;

INSTANTIATE_TEST_SUITE_P(
    Files, FileExtent,
    testing::Values(ExtentRow{"Empty", "", other, KvEFileExtent::empty}, ExtentRow{"OneByte", "k", other, whole},
                    ExtentRow{"Tree", treeFile(allParameters), known, whole},
                    ExtentRow{"BeforeTheMagic", imageFile(1).resize(43).bytes(), other, whole},
                    ExtentRow{"BetweenTheMagicWords", imageFile(1).resize(44).bytes(), other, cut},
                    ExtentRow{"WithinTheSecondMagicWord", imageFile(1).resize(47).bytes(), other, cut},
                    ExtentRow{"BehindTheMagic", imageFile(1).resize(48).bytes(), known, cut},
                    ExtentRow{"ImageWithoutItsLastByte", imageFile(1).resize(363).bytes(), known, cut},
                    ExtentRow{"HeaderOfAnImage", imageFile(1).resize(364).bytes(), known, whole},
                    ExtentRow{"Image", imageFile(1).bytes(), known, whole},
                    ExtentRow{"MagicOfABitstream", bitstreamFile(92, 1).resize(8).bytes(), other, cut},
                    ExtentRow{"BitstreamWithoutItsLastByte", bitstreamFile(92, 1).resize(91).bytes(), other, cut},
                    ExtentRow{"HeaderOfABitstream", bitstreamFile(92, 1).resize(92).bytes(), known, whole},
                    ExtentRow{"BitstreamWithAShortHeader", bitstreamFile(80, 1).bytes(), known, whole},
                    ExtentRow{"BitstreamWithALongHeader", bitstreamFile(200, 1).bytes(), known, whole},
                    ExtentRow{"BitstreamWithALongerHeader", bitstreamFile(201, 1).bytes(), known, cut},
                    ExtentRow{"BitstreamOfAnotherFormat", bitstreamFile(201, 1).put32(12, 2).bytes(), other, whole},
                    ExtentRow{"BitstreamWhoseEndIsNotSeen", bitstreamFile(5000, 1).resize(1000).bytes(), known, whole}),
    [](const auto& row) { return row.param.name; });

TEST_F(UpdateFileReader, WhatCannotBeOpenedKeepsItsExtent) {
    header.extent = KvEFileExtent::empty;
    EXPECT_EQ(KvEReadStatus::cannotOpen, readUpdateFile(pathOf(L"missing"), header));
    EXPECT_EQ(KvEFileExtent::empty, header.extent);
}

} // namespace
