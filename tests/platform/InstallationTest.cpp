// What an update leaves on the target.

#include "EmulationTest.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using namespace KvNInventoryIDs;

/// CRC-32 of "123456789", the check value of the algorithm.
constexpr const char* checkText = "123456789";
constexpr std::uint32_t checkValue = 0xCBF43926;

class Installation : public EmulationTest {
protected:
    void serveElement(const ItemBuilder& element) {
        target.add(item("HCN").element(element));
        target.serve();
    }
    Shown shown() { return scanElement(HCN / UPDATE_INFO / UPDATE_ELEMENT); }

    TargetBuilder target;
};

TEST_F(Installation, HappensWithTheFinalAnswer) {
    serveElement(updateElement(1));
    openRoot();
    lock();
    startUpdate(1, transfer(firmwareImage(KvCVersion("2.0"), 22)));
    query(1);
    query(1);
    EXPECT_EQ(shown().version, "1.0");
    query(1);
    EXPECT_EQ(shown().version, "2.0");
    EXPECT_EQ(shown().checksum, 22U);
}

TEST_F(Installation, NeedsTheFinalStateTwoWithoutErrors) {
    serveElement(updateElement(1).polls(1).finalState(3));
    target.add(item("CN").element(updateElement(1).polls(1).reports(1, "a")));
    target.serve();
    KvEmulation::reset();
    static_cast<void>(target.serveAgain());
    openRoot();
    lock();
    const RemoteFile file = transfer(firmwareImage(KvCVersion("2.0"), 22));
    startUpdate(1, file);
    EXPECT_EQ(query(1).state, 3U);
    EXPECT_EQ(shown().version, "1.0");
    boardAddress = CN;
    startUpdate(1, file);
    EXPECT_EQ(query(1).state, 2U);
    EXPECT_EQ(scanElement(CN / UPDATE_INFO / UPDATE_ELEMENT).version, "1.0");
}

struct ImageVersion {
    const char* about = nullptr;
    KvCVersion header;
    std::uint8_t kind = 0;
    const char* shown = nullptr;
};

TEST_F(Installation, AFirmwareImageSetsVersionAndChecksumFromItsHeader) {
    serveElement(updateElement(1).polls(1));
    const ImageVersion versions[] = {
        {"a release", {23, 2, 1, 0, 4, 0}, 0, "23.2.1.4"},
        {"an alpha", {23, 2, 0, 0, 12, 0}, 10, "23.2a12"},
        {"a beta", {23, 2, 1, 0, 3, 1}, 11, "23.2.1b3.1"},
        {"an unknown kind", {5, 0, 0, 0, 0, 65535}, 12, "5.0.0.0.65535"},
    };
    std::uint32_t checksum = 0xFFFFFF00;
    for (const ImageVersion& version : versions) {
        updateOnce(1, firmwareImage(version.header, ++checksum, version.kind));
        EXPECT_EQ(shown().version, version.shown) << version.about;
        EXPECT_EQ(shown().checksum, checksum) << version.about;
    }
}

TEST_F(Installation, AShortFirmwareImageReadsAsZerosBeyondItsEnd) {
    serveElement(updateElement(1));
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22).substr(0, 48));
    EXPECT_EQ(shown().version, "0.0");
    EXPECT_EQ(shown().checksum, 0U);
}

TEST_F(Installation, ABitstreamSetsTheChecksumFromItsHeader) {
    serveElement(updateElement(1));
    updateOnce(1, bitstream(0xDEADBEEF));
    EXPECT_EQ(shown().checksum, 0xDEADBEEFU);
    EXPECT_EQ(shown().version, "1.0");
}

/// CRC-32, bit by bit.
std::uint32_t crcOf(const std::string& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

TEST_F(Installation, ABitstreamWithoutAHeaderChecksumSetsThatOfItsBytes) {
    serveElement(updateElement(1));
    const std::string bytes = bitstream(0xDEADBEEF, 91);
    updateOnce(1, bytes);
    EXPECT_EQ(shown().checksum, crcOf(bytes));
}

TEST_F(Installation, WhatOnlyBeginsLikeABitstreamIsAnyOtherFile) {
    serveElement(updateElement(1));
    std::string otherFormat = bitstream(0xDEADBEEF);
    otherFormat[15] = 2;
    for (const std::string& bytes : {otherFormat, bitstream(0xDEADBEEF).substr(0, 91)}) {
        updateOnce(1, bytes);
        EXPECT_EQ(shown().checksum, crcOf(bytes));
    }
}

TEST_F(Installation, AnyOtherFileSetsTheChecksumOfItsBytes) {
    serveElement(updateElement(1));
    updateOnce(1, checkText);
    EXPECT_EQ(shown().checksum, checkValue);
    EXPECT_EQ(shown().version, "1.0");
    const std::string large(300000, 'z');
    updateOnce(1, large);
    EXPECT_EQ(shown().checksum, crcOf(large));
    updateOnce(1, "");
    EXPECT_EQ(shown().checksum, 0U);
}

TEST_F(Installation, AnInventoryTreeFileSetsWhatItsTreeHas) {
    serveElement(updateElement(1));
    updateOnce(1, R"({"inventoryTree": {"id": "HCN", "items": [{"id": "CN"}, {"id": "NETC", "items": [
        {"id": "FIRMWARE", "parameters": {"VERSION": "3.1", "CHECKSUM_CRC32": 31}}]},
        {"id": "FIRMWARE", "parameters": {"VERSION": "9.9", "CHECKSUM_CRC32": 99}}]}})");
    EXPECT_EQ(shown().version, "3.1");
    EXPECT_EQ(shown().checksum, 31U);
    updateOnce(1, R"({"inventoryTree": {"id": "FIRMWARE", "parameters": {"VERSION": "3.2"}}})");
    EXPECT_EQ(shown().version, "3.2");
    EXPECT_EQ(shown().checksum, 31U) << "the tree has none";
    updateOnce(1, R"({"inventoryTree": {"id": "FIRMWARE", "parameters": {"CHECKSUM_CRC32": 33}}})");
    EXPECT_EQ(shown().version, "3.2");
    EXPECT_EQ(shown().checksum, 33U);
    updateOnce(1, R"({"inventoryTree": {"id": "FIRMWARE", "parameters": {"CHECKSUM_CRC32": 1}}, "checksumCrc32": 34})");
    EXPECT_EQ(shown().checksum, 34U) << "what the file states comes first";
    updateOnce(1, R"({"inventoryTree": {"id": "HCN"}})");
    EXPECT_EQ(shown().version, "3.2");
    EXPECT_EQ(shown().checksum, 34U);
}

TEST_F(Installation, MakesTheElementValidAndActive) {
    serveElement(updateElement(1).parameter("VALID", std::uint64_t(0)).parameter("ACTIVE", std::uint64_t(2)));
    EXPECT_EQ(shown().valid, 0);
    EXPECT_EQ(shown().active, 2);
    updateOnce(1, "a");
    EXPECT_EQ(shown().valid, 1);
    EXPECT_EQ(shown().active, 1);
}

TEST_F(Installation, AParameterThatTheElementDoesNotHaveStaysAbsent) {
    serveElement(
        item("UPDATE_ELEMENT").parameter("ID", std::uint64_t(1)).parameter("CHECKSUM_CRC32", std::uint64_t(1)));
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    openRoot();
    KvCInventoryItem* tree = nullptr;
    ASSERT_EQ(manager().scan(errors(), root, tree), 0U);
    const KvCInventoryItem* const element = tree->getItem(HCN / UPDATE_INFO / UPDATE_ELEMENT);
    for (const KvCInventoryAddress& path : {VERSION, VALID, ACTIVE}) {
        EXPECT_EQ(element->getParameter(path), nullptr);
        std::uint32_t number = 0;
        element->getValue(errors(), path, number);
        EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::valueUnusable));
    }
    std::uint32_t checksum = 0;
    element->getValue(errors(), CHECKSUM_CRC32, checksum);
    EXPECT_EQ(checksum, 22U);
    manager().deleteInventoryTree(tree);
}

TEST_F(Installation, IsSeenByLaterScansOnly) {
    serveElement(updateElement(1));
    openRoot();
    KvCInventoryItem* before = nullptr;
    ASSERT_EQ(manager().scan(errors(), root, before), 0U);
    lock();
    update(1, "a");
    KvCString version;
    std::uint32_t checksum = 0;
    before->getItem(HCN / UPDATE_INFO / UPDATE_ELEMENT)->getValue(errors(), CHECKSUM_CRC32, checksum);
    EXPECT_EQ(checksum, 1U);
    manager().deleteInventoryTree(before);
    EXPECT_NE(shown().checksum, 1U);
}

TEST_F(Installation, AFileSystemElementCanBeUpdatedToo) {
    target.add(item("HCN").element(fileSystemElement(1, "a")));
    target.serve();
    updateOnce(1, checkText);
    EXPECT_EQ(scanElement(HCN / UPDATE_INFO / FILESYSTEM_ELEMENT).checksum, checkValue);
}

TEST_F(Installation, ThatIsActivatedAtRebootShowsAfterTheNextReset) {
    serveElement(updateElement(1).activatedAtReboot());
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    EXPECT_EQ(shown().version, "1.0");
    updateOnce(1, checkText);
    EXPECT_EQ(shown().checksum, 1U);
    resetDevice();
    EXPECT_EQ(shown().version, "2.0");
    EXPECT_EQ(shown().checksum, checkValue) << "the second one came later";
    updateOnce(1, firmwareImage(KvCVersion("3.0"), 33));
    EXPECT_EQ(shown().version, "2.0");
    EXPECT_EQ(shown().checksum, checkValue);
    resetDevice();
    resetDevice();
    EXPECT_EQ(shown().version, "3.0");
}

TEST_F(Installation, AResetBeforeItDoesNotActivateIt) {
    serveElement(updateElement(1).activatedAtReboot());
    resetDevice();
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    EXPECT_EQ(shown().version, "1.0");
    resetDevice();
    EXPECT_EQ(shown().version, "2.0");
}

TEST_F(Installation, AFileThatIsDeletedMeanwhileIsInstalledAllTheSame) {
    serveElement(updateElement(1));
    openRoot();
    lock();
    const RemoteFile file = transfer(checkText);
    startUpdate(1, file);
    EXPECT_EQ(manager().deleteRemoteFile(errors(), root, HCN, lockHandle, file), 0U);
    query(1);
    query(1);
    EXPECT_EQ(query(1).state, 2U);
    EXPECT_EQ(shown().checksum, checkValue);
}

} // namespace
