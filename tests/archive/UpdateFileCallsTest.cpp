#include "InventoryDataStandIn.h"
#include "KvCErrorManager.h"
#include "KvCInventoryManager.h"
#include "KvEmulation.h"
#include "TargetBuilder.h"
#include "UpdateFileReaders.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t unknown = 0xFFFFFFFE;

/// An inventory tree file's tree is here that of a target, whatever the file. Each test ends with nothing held of the
/// platform and without an error in the master list.
class UpdateFileCalls : public testing::Test {
protected:
    void SetUp() override {
        platform() = {};
        target_
            .add(item("FIRMWARE").parameter("TYPE_ID", std::uint64_t(7)).parameter("CHECKSUM_CRC32", std::uint64_t(8)))
            .serve();
        ASSERT_EQ(manager().createRootHandleByIpAddressList(errors(), "127.0.0.1", root_), 0U);
        ASSERT_EQ(manager().scan(errors(), root_, platform().tree), 0U);
        ASSERT_EQ(KvEmulation::ledger().inventoryTrees, 1U);
    }
    void TearDown() override {
        EXPECT_EQ(manager().deleteRootHandle(errors(), root_), 0U);
        EXPECT_EQ(errors().getErrorCount(), 0U);
        EXPECT_TRUE(KvEmulation::ledger().isClean());
        KvEmulation::reset();
    }

    static InventoryDataStandIn& platform() { return InventoryDataStandIn::instance(); }
    static KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }

private:
    static KvCInventoryManager& manager() { return *KvCInventoryManager::getInstance(); }

    TargetBuilder target_;
    KvCInventoryRootHandle* root_ = nullptr;
};

TEST_F(UpdateFileCalls, ATreeThatComesWithAnErrorMeansAnotherKindAndIsReleased) {
    platform().extractionAddsError = true;
    KvTUpdateFileHeader header{901, 902, 903, 904, 905, 906};
    EXPECT_EQ(readInventoryFile(L"file", header), KvEReadStatus::notThisKind);
    EXPECT_EQ(header.minHwCompatibilityId, 901U);
    EXPECT_EQ(header.typeId, 905U);
    EXPECT_EQ(header.checksum, 906U);
    EXPECT_EQ(KvEmulation::ledger().inventoryTrees, 0U);
    EXPECT_EQ(KvEmulation::ledger().errorLists, 0U);
}

TEST_F(UpdateFileCalls, ANumberThatComesWithAnErrorIsUnknown) {
    platform().number = 5;
    platform().readingAddsError = true;
    KvTUpdateFileHeader header;
    EXPECT_EQ(readInventoryFile(L"file", header), KvEReadStatus::success);
    EXPECT_EQ(header.typeId, unknown);
    EXPECT_EQ(header.checksum, unknown);
}

TEST_F(UpdateFileCalls, ANumberWithoutAnErrorIsTaken) {
    platform().number = 5;
    KvTUpdateFileHeader header;
    EXPECT_EQ(readInventoryFile(L"file", header), KvEReadStatus::success);
    EXPECT_EQ(header.typeId, 5U);
    EXPECT_EQ(header.checksum, 5U);
    EXPECT_EQ(header.minHwCompatibilityId, unknown) << "the node has no such parameter";
}

} // namespace
