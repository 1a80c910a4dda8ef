// Inventory trees from files.

#include "EmulationTest.h"
#include "KvCInventoryData.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using namespace KvNInventoryIDs;

class InventoryTreeFile : public EmulationTest {
protected:
    void TearDown() override {
        tree.reset();
        EmulationTest::TearDown();
    }
    void extract(const std::string& content) { extractPath(files.write("tree.json", content)); }
    void extractPath(const std::string& path) {
        KvCInventoryItem* result = nullptr;
        KvCInventoryData::extractInventoryTreeFromFile(errors(), path.c_str(), result, hasChecksum, checksum);
        tree.reset(result);
    }

    std::unique_ptr<KvCInventoryItem> tree;
    bool hasChecksum = false;
    std::uint32_t checksum = 77;
};

TEST_F(InventoryTreeFile, GivesItsTreeToTheCaller) {
    extract(R"({"inventoryTree": {"id": "HCN", "items": [
        {"id": "FIRMWARE", "parameters": {"VERSION": "5.0", "CHECKSUM_CRC32": 4711}}]}})");
    ASSERT_NE(tree, nullptr);
    EXPECT_FALSE(hasChecksum);
    EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 1U);
    const KvCInventoryItem* const firmware = tree->getItem(FIRMWARE);
    ASSERT_NE(firmware, nullptr);
    std::uint32_t number = 0;
    firmware->getValue(errors(), CHECKSUM_CRC32, number);
    EXPECT_EQ(number, 4711U);
    tree.reset();
    EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 0U);
}

TEST_F(InventoryTreeFile, MayStateAChecksum) {
    extract(R"({"checksumCrc32": 4294967295, "inventoryTree": {"id": "FIRMWARE"}})");
    ASSERT_NE(tree, nullptr);
    EXPECT_TRUE(hasChecksum);
    EXPECT_EQ(checksum, 4294967295U);
}

TEST_F(InventoryTreeFile, MayHoldCommentsAtEveryLevel) {
    extract(R"({"comment": [1], "inventoryTree": {"comment": "a", "id": "HCN", "items": [
        {"id": "FIRMWARE", "comment": null}]}})");
    ASSERT_NE(tree, nullptr);
    EXPECT_NE(tree->getItem(FIRMWARE), nullptr);
}

TEST_F(InventoryTreeFile, MayBeginWithBlanksAndAByteOrderMark) {
    extract("\xEF\xBB\xBF\r\n\t {\"inventoryTree\": {\"id\": \"FIRMWARE\"}}\n");
    EXPECT_NE(tree, nullptr);
}

TEST_F(InventoryTreeFile, AnyOtherContentIsNone) {
    const std::string contents[] = {
        "",
        " ",
        "{}",
        "[]",
        "null",
        R"({"inventoryTree": {"id": "FIRMWARE"})",
        R"({"inventoryTree": {}})",
        R"({"inventoryTree": {"id": "NAME"}})",
        R"({"inventoryTree": {"id": "FIRMWARE"}, "checksumCrc32": -1})",
        R"({"inventoryTree": {"id": "FIRMWARE"}, "checksumCrc32": 4294967296})",
        R"({"inventoryTree": {"id": "FIRMWARE"}, "checksumCrc32": "1"})",
        R"({"inventoryTree": {"id": "FIRMWARE"}, "version": 1})",
        R"({"checksumCrc32": 1})",
        bitstream(1),
        firmwareImage(KvCVersion(), 1),
        std::string(1000, '\0'),
    };
    for (const std::string& content : contents) {
        extract(content);
        EXPECT_EQ(tree, nullptr) << content;
        EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::notAnInventoryTree)) << content;
    }
    EXPECT_EQ(checksum, 77U);
}

TEST_F(InventoryTreeFile, TheErrorTellsWhere) {
    extract(R"({"inventoryTree": {"id": "FIRMWARE", "parameters": {"VERSIONS": "1"}}})");
    const auto texts = takeErrorTexts();
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_THAT(texts.front(), HasSubstr((files.path() / "tree.json").string()));
    EXPECT_THAT(texts.front(), EndsWith("$.inventoryTree.parameters.VERSIONS: unknown parameter name."));
}

TEST_F(InventoryTreeFile, AFileThatCannotBeOpenedIsAnError) {
    extractPath(files.text() + "/none");
    extractPath(files.text());
    extractPath("");
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fileAccess, EmulationErrorCodes::fileAccess,
                                              EmulationErrorCodes::fileAccess));
    KvCInventoryItem* result = nullptr;
    KvCInventoryData::extractInventoryTreeFromFile(errors(), nullptr, result, hasChecksum, checksum);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fileAccess));
}

TEST_F(InventoryTreeFile, ABackslashSeparatesComponents) {
    files.write("folder/tree.json", R"({"inventoryTree": {"id": "FIRMWARE"}})");
    extractPath(files.text() + "\\folder\\tree.json");
    EXPECT_NE(tree, nullptr);
}

TEST_F(InventoryTreeFile, NeedsNoServedTarget) {
    KvEmulation::reset();
    extract(R"({"inventoryTree": {"id": "FIRMWARE", "parameters": {"TYPE_ID": 3}}})");
    ASSERT_NE(tree, nullptr);
    std::uint32_t number = 0;
    tree->getValue(errors(), TYPE_ID, number);
    EXPECT_EQ(number, 3U);
}

TEST_F(InventoryTreeFile, OfMoreThan256MebibytesIsNone) {
    const std::string path = files.write("tree.json", R"({"inventoryTree": {"id": "FIRMWARE"}})");
    extractPath(path);
    EXPECT_NE(tree, nullptr);
    std::error_code error;
    std::filesystem::resize_file(files.path() / "tree.json", std::uintmax_t(4) << 30U, error);
    if (error) {
        GTEST_SKIP() << "no room for a large file: " << error.message();
    }
    extractPath(path);
    EXPECT_EQ(tree, nullptr);
    EXPECT_THAT(takeErrorTexts(),
                ElementsAre("\"" + path + "\" is no inventory tree file: it is larger than 256 MiB."));
}

TEST_F(InventoryTreeFile, MayHoldTextsOfAtMost4096Bytes) {
    const auto textOf = [](std::size_t size) {
        return R"({"inventoryTree": {"id": "FIRMWARE", "parameters": {"VERSION": ")" + std::string(size, '1') + "\"}}}";
    };
    extract(textOf(4096));
    EXPECT_NE(tree, nullptr);
    extract(textOf(4097));
    EXPECT_EQ(tree, nullptr);
    EXPECT_THAT(takeErrorTexts(),
                ElementsAre(HasSubstr("$.inventoryTree.parameters.VERSION: the text has 4097 bytes")));
}

} // namespace
