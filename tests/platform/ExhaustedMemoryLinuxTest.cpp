// Operations without memory. Only here does the platform's library ask the program's operator new.

#include "EnvironmentVariable.h"
#include "FailingMemory.h"
#include "KvCInventoryData.h"
#include "KvNRtosAbstraction.h"
#include "TargetFixtures.h"
#include "UpdateFiles.h"

#include <filesystem>
#include <functional>
#include <new>
#include <utility>

namespace {

using namespace KvNInventoryIDs;
using Exhaustion = FailingMemory::Exhaustion;

constexpr const char* outOfMemory = "Out of memory.";
constexpr std::uint32_t outOfMemoryCode = 0x200A;

/// An error whose text needs memory of its own.
KvTErrorEntry longEntry() {
    KvTErrorEntry entry;
    entry.code = 7;
    entry.text.assign(100, 'x');
    return entry;
}

} // namespace

class ErrorListWithoutMemory : public EmulationTest {};

TEST_F(ErrorListWithoutMemory, AnErrorCountsAllTheSameAndSaysSo) {
    KvCErrorListPool& list = errors();
    list.addError(longEntry());
    KvTErrorEntry lost = longEntry();
    {
        const FailingMemory failing(1, Exhaustion::lasting);
        list.addError(std::move(lost));
    }
    EXPECT_EQ(list.getErrorCount(), 2U);
    EXPECT_EQ(list.getNumberOfUsedEntries(), 2U);
    EXPECT_EQ(list.getErrorCode(0), 7U);
    EXPECT_EQ(list.getErrorCode(1), outOfMemoryCode);
    EXPECT_STREQ(list.getErrorText(1), outOfMemory);
    EXPECT_STREQ(list.getErrorText(2), "");
    list.addError(longEntry());
    EXPECT_EQ(list.getErrorCount(), 3U);
    list.reset();
    EXPECT_EQ(list.getErrorCount(), 0U);
    EXPECT_STREQ(list.getErrorText(0), "");
}

TEST_F(ErrorListWithoutMemory, CopiedErrorsCountWhereverMemoryFails) {
    KvCErrorManager& manager = *KvCErrorManager::getInstance();
    KvCErrorList* const from = manager.createErrorList(0, 1, 20, 5, 300);
    from->addError(longEntry());
    from->addError(longEntry());
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        {
            const FailingMemory failing(number);
            errors() += *from;
            struck = FailingMemory::hasStruck();
        }
        EXPECT_EQ(errors().getErrorCount(), 2U) << number;
        EXPECT_STREQ(errors().getErrorText(1), struck ? outOfMemory : longEntry().text.c_str()) << number;
        errors().reset();
    }
    EXPECT_GT(number, 4U); // a list and two texts, and room for them
    manager.deleteErrorList(from);
}

TEST_F(ErrorListWithoutMemory, ALostErrorIsCopiedAsOne) {
    KvCErrorManager& manager = *KvCErrorManager::getInstance();
    KvCErrorList* const from = manager.createErrorList(0, 1, 20, 5, 300);
    {
        const FailingMemory failing(1);
        from->addError({});
    }
    errors() += *from;
    manager.deleteErrorList(from);
    EXPECT_EQ(errors().getErrorCount(), 1U);
    errors().reset();
}

TEST_F(ErrorListWithoutMemory, AListIsNotMade) {
    const FailingMemory failing(1, Exhaustion::lasting);
    EXPECT_THROW(static_cast<void>(KvCErrorManager::getInstance()->createErrorList(0, 1, 20, 5, 300)), std::bad_alloc);
}

/// A traced client of a target with an element and a file system.
class WithoutMemory : public EmulationTest {
protected:
    void SetUp() override {
        EmulationTest::SetUp();
        target.add(item("HCN").element(updateElement(1).polls(1)).element(fileSystemElement(2, "folder/b")));
        target.serve();
    }
    void TearDown() override {
        errors().reset();
        EmulationTest::TearDown();
    }

    /// Makes an operation until all its memory is there; `undo` takes back what has succeeded without some of it, for
    /// the trace. It adds an error exactly when it fails.
    template <typename Operation, typename Undo>
    void sweep(const char* name, Operation&& operation, Undo&& undo) {
        for (const Exhaustion exhaustion : {Exhaustion::once, Exhaustion::lasting}) {
            std::size_t number = 1;
            for (bool struck = true; struck; ++number) {
                before();
                errors().reset();
                bool succeeded = false;
                {
                    const FailingMemory failing(number, exhaustion);
                    succeeded = operation();
                    struck = FailingMemory::hasStruck();
                }
                EXPECT_EQ(succeeded, errors().getErrorCount() == 0) << name << ", allocation " << number;
                EXPECT_TRUE(succeeded || struck) << name;
                if (succeeded && (struck || exhaustion == Exhaustion::once)) {
                    undo();
                }
            }
        }
    }
    template <typename Operation>
    void sweep(const char* name, Operation&& operation) {
        sweep(name, std::forward<Operation>(operation), [] {});
    }
    /// Makes a release without any memory.
    template <typename Operation>
    void release(const char* name, Operation&& operation) {
        const FailingMemory failing(1, Exhaustion::lasting);
        EXPECT_TRUE(operation()) << name;
    }
    [[nodiscard]] bool isLockFree() {
        void* other = nullptr;
        return manager().lock(errors(), root, HCN, 0, other) == 0 && manager().unlock(errors(), other) == 0;
    }

    static constexpr const char* top = "/mnt/cn/cfdrive";
    TargetBuilder target;
    /// What sweep() does before each attempt.
    std::function<void()> before = [] {};
    EnvironmentVariable trace{"KV_TRACE", (files.path() / "trace").string()};
};

TEST_F(WithoutMemory, ATargetIsReadOrNotAndReleased) {
    const auto closeRootHandle = [&] {
        return manager().deleteRootHandle(errors(), std::exchange(root, nullptr)) == 0;
    };
    sweep(
        "createRootHandleByIpAddressList",
        [&] { return manager().createRootHandleByIpAddressList(errors(), "127.0.0.1", root) == 0; }, closeRootHandle);
    KvCInventoryItem* tree = nullptr;
    const auto deleteTree = [&] { manager().deleteInventoryTree(std::exchange(tree, nullptr)); };
    sweep(
        "scan", [&] { return manager().scan(errors(), root, tree) == 0 && tree != nullptr; }, deleteTree);
    const KvCInventoryItem* const element = tree->getItem(HCN / UPDATE_INFO / UPDATE_ELEMENT);
    KvCString name("before");
    sweep("getValue", [&] {
        element->getValue(errors(), NAME, name);
        return errors().getErrorCount() == 0;
    });
    release("deleteInventoryTree", [&] {
        deleteTree();
        return true;
    });
    release("deleteRootHandle", closeRootHandle);
    EXPECT_TRUE(KvEmulation::ledger().isClean());
}

TEST_F(WithoutMemory, AnElementIsUpdatedOrNotAndTheTargetUnlocked) {
    openRoot();
    sweep(
        "lock", [&] { return tryLock() == 0; },
        [&] { EXPECT_EQ(manager().unlock(errors(), std::exchange(lockHandle, nullptr)), 0U); });
    const std::wstring local = wide(files.write("local", firmwareImage(KvCVersion("2.0"), 5)));
    RemoteFile file;
    const auto deleteFile = [&] { return manager().deleteRemoteFile(errors(), root, HCN, lockHandle, file) == 0; };
    sweep(
        "transferFile",
        [&] {
            return manager().transferFile(errors(), root, HCN, lockHandle, local.c_str(), nullptr, nullptr, file) == 0;
        },
        deleteFile);
    Status status;
    const auto finish = [&] { return tryQuery(1, status) == 0; };
    sweep(
        "update2", [&] { return tryUpdate(1, file) == 0; }, finish);
    sweep("updateStatus2", finish);
    EXPECT_EQ(status.state, 2U);
    sweep("updateErrors2", [&] { return manager().updateErrors2(errors(), root, HCN, lockHandle, 1, errors()) == 0; });
    sweep("updateFinish", [&] { return manager().updateFinish(errors(), root, HCN, lockHandle) == 0; });
    release("deleteRemoteFile", deleteFile);
    release("unlock", [&] { return tryUnlock() == 0; });
    lockHandle = nullptr;
    EXPECT_TRUE(isLockFree());
    EXPECT_EQ(scanElement(HCN / UPDATE_INFO / UPDATE_ELEMENT).version, "2.0");
}

TEST_F(WithoutMemory, AnUpdateSessionEndsAndTheNextOneClearsItsFiles) {
    openRoot();
    lock();
    static_cast<void>(transfer("content"));
    release("unlock", [&] { return tryUnlock() == 0; });
    lockHandle = nullptr;
    EXPECT_EQ(KvEmulation::ledger().locks, 0U);
    EXPECT_EQ(KvEmulation::ledger().remoteFiles, 0U);
    EXPECT_TRUE(isLockFree());
    EXPECT_FALSE(target.folder().has("state/transferred"));
}

TEST_F(WithoutMemory, ADeviceIsFoundOrNotAndReleased) {
    KvHIMFilterHandle filter = nullptr;
    const auto deleteFilter = [&] { return KvHIM_deleteFilter(errors(), std::exchange(filter, nullptr)) == 0; };
    sweep(
        "KvHIM_createFilter", [&] { return KvHIM_createFilter(errors(), filter, 1) == 0; }, deleteFilter);
    const std::uint32_t address = ipNumber("127.0.0.1");
    sweep("KvHIM_setFilterParameter",
          [&] { return KvHIM_setFilterParameter(errors(), filter, 6, &address, sizeof address) == 0; });
    sweep("KvHIM_applyFilter", [&] { return KvHIM_applyFilter(errors(), filter) == 0; });
    KvHIMSDeviceInfo info;
    std::int32_t count = 0;
    sweep("KvHIM_getDeviceList", [&] { return KvHIM_getDeviceList(errors(), filter, &info, 1, count) == 0; });
    release("KvHIM_deleteFilter", deleteFilter);
    const auto deleteDevice = [&] { return KvHIM_deleteDeviceHandle(errors(), std::exchange(device, nullptr)) == 0; };
    sweep(
        "KvHIM_createDeviceHandle", [&] { return KvHIM_createDeviceHandle(errors(), info, device) == 0; },
        deleteDevice);
    const auto deleteClient = [&] { return KvHIM_deleteFTClientHandle(errors(), std::exchange(client, nullptr)) == 0; };
    sweep(
        "KvHIM_createFTClientHandle", [&] { return KvHIM_createFTClientHandle(errors(), device, client) == 0; },
        deleteClient);
    release("KvHIM_deleteFTClientHandle", deleteClient);
    sweep("KvHIM_FORCE_resetDevice", [&] { return KvHIM_FORCE_resetDevice(errors(), device, 0) == 0; });
    release("KvHIM_deleteDeviceHandle", deleteDevice);
    EXPECT_TRUE(KvEmulation::ledger().isClean());
}

TEST_F(WithoutMemory, FilesAreWrittenOrNot) {
    openTransferClient();
    sweep(
        "KvHIM_makeDir", [&] { return KvHIM_makeDir(errors(), nullptr, client, top, "folder") == 0; },
        [&] { std::filesystem::remove(target.folder().path() / "state/cfdrive/folder"); });
    const std::wstring local = wide(files.write("local", "content"));
    const std::string folder = std::string(top) + "/folder";
    const auto put = [&] {
        return KvHIM_putFileU(errors(), nullptr, client, local.c_str(), folder.c_str(), "a", nullptr, nullptr) == 7;
    };
    sweep("KvHIM_putFileU", put);
    const auto rename = [&] { return KvHIM_renameFile(errors(), nullptr, client, folder.c_str(), "a", "b") >= 0; };
    // A file that was renamed stays so when there is no memory for the record of it.
    before = [&] { EXPECT_TRUE(target.folder().has("state/cfdrive/folder/a") || put()); };
    sweep("KvHIM_renameFile", rename);
    before = [] {};
    EXPECT_EQ(target.folder().read("state/cfdrive/folder/b"), "content");
}

TEST_F(WithoutMemory, ATreeFileIsReadOrNot) {
    const std::string path = files.write("tree", R"({"inventoryTree": {"id": "FIRMWARE"}, "checksumCrc32": 5})");
    KvCInventoryItem* tree = nullptr;
    bool hasChecksum = false;
    std::uint32_t checksum = 0;
    sweep(
        "extractInventoryTreeFromFile",
        [&] {
            KvCInventoryData::extractInventoryTreeFromFile(errors(), path.c_str(), tree, hasChecksum, checksum);
            EXPECT_EQ(hasChecksum, tree != nullptr);
            return tree != nullptr;
        },
        [&] {
            delete std::exchange(tree, nullptr);
            hasChecksum = false;
        });
    delete tree;
    EXPECT_EQ(checksum, 5U);
}

TEST_F(WithoutMemory, ATextThatIsNotAnAddressIsRefused) {
    {
        const FailingMemory failing(1, Exhaustion::lasting);
        EXPECT_EQ(KvNRtosAbstraction::stringToIpV4(errors(), "nonsense"), 0U);
    }
    EXPECT_EQ(errors().getErrorCount(), 1U);
}

TEST_F(WithoutMemory, AFaultStaysAFault) {
    KvEmulation::reset();
    TargetBuilder faulty;
    faulty.add(item("HCN")).add(fault("unlock").status(5)).serve();
    openRoot();
    lock();
    std::uint32_t status = 0;
    {
        const FailingMemory failing(1, Exhaustion::lasting);
        status = tryUnlock();
    }
    EXPECT_EQ(status, 5U);
    EXPECT_EQ(errors().getErrorCount(), 1U);
    EXPECT_EQ(KvEmulation::ledger().locks, 0U);
    EXPECT_EQ(tryUnlock(), 0U);
    lockHandle = nullptr;
}
