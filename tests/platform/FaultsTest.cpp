// Failures that a description puts at operations.

#include "EmulationTest.h"
#include "KvCInventoryData.h"
#include "KvEmulation.h"
#include "KvNRtosAbstraction.h"

#include <gmock/gmock.h>

#include <functional>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace KvNInventoryIDs;

/// Everything that a client does, each operation once; an operation that fails is not made again.
class WholeClient : public EmulationTest {
protected:
    void serveTargetWith(const FaultBuilder& fault) {
        target = std::make_unique<TargetBuilder>();
        target->add(item("HCN").parameter("NAME", "node").element(updateElement(1).polls(1)));
        target->add(fault);
        target->serve();
    }

    void runAll() {
        useFilter();
        useFiles();
        useInventory();
        KvCInventoryItem* tree = nullptr;
        bool hasChecksum = false;
        std::uint32_t checksum = 0;
        const std::string path = files.write("tree", R"({"inventoryTree": {"id": "FIRMWARE"}})");
        KvCInventoryData::extractInventoryTreeFromFile(errors(), path.c_str(), tree, hasChecksum, checksum);
        note("extractInventoryTreeFromFile", tree == nullptr ? 1 : 0);
        delete tree;
    }

    void useFilter() {
        KvHIMFilterHandle filter = nullptr;
        note("KvHIM_createFilter", KvHIM_createFilter(errors(), filter, 1));
        if (filter == nullptr) {
            return;
        }
        const std::uint32_t address = ipNumber("127.0.0.1");
        note("KvHIM_setFilterParameter", KvHIM_setFilterParameter(errors(), filter, 6, &address, sizeof address));
        note("KvHIM_applyFilter", KvHIM_applyFilter(errors(), filter));
        std::int32_t count = 0;
        if (failed.empty()) {
            note("KvHIM_getDeviceList", KvHIM_getDeviceList(errors(), filter, &info, 1, count));
        }
        note("KvHIM_deleteFilter", KvHIM_deleteFilter(errors(), filter));
    }

    void useFiles() {
        note("KvHIM_createDeviceHandle", KvHIM_createDeviceHandle(errors(), {ipNumber("127.0.0.1"), 1}, device));
        if (device == nullptr) {
            return;
        }
        note("KvHIM_createFTClientHandle", KvHIM_createFTClientHandle(errors(), device, client));
        if (client != nullptr) {
            const std::wstring local = wide(files.write("local", "content"));
            note("KvHIM_makeDir", KvHIM_makeDir(errors(), nullptr, client, top, "folder"));
            noteResult("KvHIM_putFileU",
                       KvHIM_putFileU(errors(), nullptr, client, local.c_str(), top, "a", nullptr, nullptr));
            if (failed.empty()) {
                noteResult("KvHIM_renameFile", KvHIM_renameFile(errors(), nullptr, client, top, "a", "b"));
            }
            note("KvHIM_deleteFTClientHandle", KvHIM_deleteFTClientHandle(errors(), client));
        }
        note("KvHIM_FORCE_resetDevice", KvHIM_FORCE_resetDevice(errors(), device, 0));
        note("KvHIM_deleteDeviceHandle", KvHIM_deleteDeviceHandle(errors(), device));
        client = nullptr;
        device = nullptr;
    }

    void useInventory() {
        note("createRootHandleByIpAddressList", manager().createRootHandleByIpAddressList(errors(), "127.0.0.1", root));
        if (root == nullptr) {
            return;
        }
        KvCInventoryItem* tree = nullptr;
        note("scan", manager().scan(errors(), root, tree));
        if (tree != nullptr) {
            KvCString name("as it was");
            tree->getItem(HCN)->getValue(errors(), NAME, name);
            note("getValue", name == "node" ? 0 : 1);
        }
        manager().deleteInventoryTree(tree);
        note("lock", manager().lock(errors(), root, HCN, 0x10003, lockHandle));
        if (lockHandle != nullptr) {
            useLock();
            note("updateFinish", manager().updateFinish(errors(), root, HCN, lockHandle));
            note("unlock", manager().unlock(errors(), lockHandle));
        }
        note("deleteRootHandle", manager().deleteRootHandle(errors(), root));
        lockHandle = nullptr;
        root = nullptr;
    }

    void useLock() {
        const std::wstring local = wide(files.write("local", "content"));
        RemoteFile file;
        note("transferFile",
             manager().transferFile(errors(), root, HCN, lockHandle, local.c_str(), nullptr, nullptr, file));
        if (file.path.isEmpty()) {
            return;
        }
        note("update2", manager().update2(errors(), root, HCN, lockHandle, 1, file, 0));
        if (failed.empty()) {
            std::uint32_t id = 1;
            std::uint32_t state = 0;
            std::uint32_t done = 0;
            std::uint32_t total = 0;
            note("updateStatus2", manager().updateStatus2(errors(), root, HCN, id, state, done, total));
            if (state == 2) {
                note("updateErrors2", manager().updateErrors2(errors(), root, HCN, lockHandle, 1, errors()));
            }
        }
        note("deleteRemoteFile", manager().deleteRemoteFile(errors(), root, HCN, lockHandle, file));
    }

    void note(const std::string& operation, std::int64_t status) {
        if (status != 0) {
            failed.push_back(operation);
        }
    }
    void noteResult(const std::string& operation, std::int64_t result) { note(operation, result < 0 ? 1 : 0); }

    static constexpr const char* top = "/mnt/cn/cfdrive";
    std::unique_ptr<TargetBuilder> target;
    KvHIMSDeviceInfo info;
    std::vector<std::string> failed;
};

TEST_F(WholeClient, EveryOperationCanBeHitAndNothingIsLeft) {
    for (const std::string& call : KvEmulation::faultOperations()) {
        serveTargetWith(fault(call));
        failed.clear();
        runAll();
        EXPECT_THAT(failed, ElementsAre(call));
        EXPECT_THAT(takeErrorTexts(), ElementsAre("Fault at " + call + ".")) << call;
        EXPECT_TRUE(KvEmulation::ledger().isClean()) << call;
        KvEmulation::reset();
    }
}

TEST_F(WholeClient, WithoutAFittingFaultEverythingWorks) {
    serveTargetWith(fault("lock").at("CN[1]"));
    runAll();
    EXPECT_THAT(failed, IsEmpty());
}

class FaultEffect : public EmulationTest {
protected:
    std::uint32_t scan() {
        KvCInventoryItem* tree = nullptr;
        const std::uint32_t status = manager().scan(errors(), root, tree);
        EXPECT_TRUE(status == 0 || tree == nullptr);
        manager().deleteInventoryTree(tree);
        return status;
    }
    void serve() {
        target.serve();
        openRoot();
    }
    TargetBuilder target;
};

TEST_F(FaultEffect, IsOneErrorAndTheStatusOneUnlessTheFaultSaysOtherwise) {
    target.add(fault("scan"));
    serve();
    EXPECT_EQ(scan(), 1U);
    EXPECT_EQ(errors().getTimeStamp(0), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fault));
    EXPECT_EQ(scan(), 0U);
}

TEST_F(FaultEffect, CanBeErrorsAndAStatusOfItsOwn) {
    target.add(fault("scan").error(0x77, "first").error(0x78, "second").status(4294967295));
    serve();
    EXPECT_EQ(scan(), 4294967295U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("first", "second"));
}

TEST_F(FaultEffect, CanBeAStatusWithoutAnyError) {
    target.add(fault("scan").noErrors());
    serve();
    EXPECT_EQ(scan(), 1U);
    EXPECT_THAT(takeErrorCodes(), IsEmpty());
}

TEST_F(FaultEffect, CanBeThatNothingHappensThoughTheStatusIsGood) {
    target.add(fault("scan").noErrors().status(0));
    serve();
    KvCInventoryItem* tree = nullptr;
    EXPECT_EQ(manager().scan(errors(), root, tree), 0U);
    EXPECT_EQ(tree, nullptr);
}

TEST_F(FaultEffect, HitsTheCallOfItsOccurrenceOnly) {
    target.add(fault("scan").occurrence(3));
    serve();
    for (const std::uint32_t status : {0U, 0U, 1U, 0U, 0U}) {
        EXPECT_EQ(scan(), status);
    }
    takeErrorCodes();
}

TEST_F(FaultEffect, WithTheOccurrenceZeroHitsEveryCall) {
    target.add(fault("scan").occurrence(0));
    serve();
    EXPECT_EQ(scan(), 1U);
    EXPECT_EQ(scan(), 1U);
    EXPECT_EQ(scan(), 1U);
    takeErrorCodes();
}

TEST_F(FaultEffect, OfSeveralFaultsAddsUpAndTheFirstGivesTheStatus) {
    target.add(fault("scan").occurrence(2).error(1, "a").status(5));
    target.add(fault("scan").occurrence(0).error(2, "b").status(6));
    serve();
    EXPECT_EQ(scan(), 6U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("b"));
    EXPECT_EQ(scan(), 5U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("a", "b"));
}

TEST_F(FaultEffect, CountsAreForgottenWithAReset) {
    target.add(fault("scan"));
    serve();
    EXPECT_EQ(scan(), 1U);
    takeErrorCodes();
    root = nullptr;
    KvEmulation::reset();
    serve();
    EXPECT_EQ(scan(), 1U);
    takeErrorCodes();
}

TEST_F(FaultEffect, AFaultOfAnAddressAndAnElementCountsFittingCallsOnly) {
    target.add(item("HCN").element(updateElement(1)).element(updateElement(2)));
    target.add(item("CN").element(updateElement(2)));
    target.add(fault("update2").at("HCN[1]").id(2).occurrence(2));
    serve();
    lock();
    const RemoteFile file = transfer("a");
    startUpdate(1, file);
    boardAddress = CN;
    startUpdate(2, file);
    boardAddress = HCN;
    startUpdate(2, file);
    EXPECT_EQ(tryUpdate(2, file), 1U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fault));
}

TEST_F(FaultEffect, AnAddressWithoutInstancesMeansTheFirst) {
    target.add(item("HCN").add(item("CN")).add(item("CN")));
    target.add(fault("lock").at("HCN/CN[2]")).add(fault("unlock").at("HCN"));
    serve();
    boardAddress = HCN / CN;
    lock();
    unlock();
    boardAddress = HCN / CN[2];
    EXPECT_EQ(tryLock(), 1U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fault));
}

TEST_F(FaultEffect, AReadCanBeHitByTheAddressOfItsItem) {
    target.add(item("HCN").parameter("NAME", "node")).add(item("CN").parameter("NAME", "other"));
    target.add(fault("getValue").at("CN[1]"));
    serve();
    KvCInventoryItem* tree = nullptr;
    ASSERT_EQ(manager().scan(errors(), root, tree), 0U);
    KvCString name("as it was");
    tree->getItem(HCN)->getValue(errors(), NAME, name);
    EXPECT_EQ(name, "node");
    tree->getItem(CN)->getValue(errors(), NAME, name);
    EXPECT_EQ(name, "node");
    EXPECT_THAT(takeErrorTexts(), ElementsAre("Fault at getValue."));
    tree->getItem(CN)->getValue(errors(), NAME, name);
    EXPECT_EQ(name, "other");
    manager().deleteInventoryTree(tree);
}

TEST_F(FaultEffect, IsThatOfTheTargetWhichTheCallConcerns) {
    TargetBuilder other;
    other.address("10.0.0.1").add(fault("scan").occurrence(0)).add(fault("KvHIM_createFilter")).serve();
    serve();
    EXPECT_EQ(scan(), 0U);
    closeRoot();
    openRoot("10.0.0.1");
    EXPECT_EQ(scan(), 1U);
    takeErrorCodes();
    KvHIMFilterHandle filter = nullptr;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 1) << "a filter concerns every target";
    takeErrorCodes();
}

TEST_F(FaultEffect, AQueryThatIsHitDoesNotCount) {
    target.add(item("HCN").element(updateElement(1)));
    target.add(fault("updateStatus2").occurrence(2));
    serve();
    lock();
    startUpdate(1, transfer("a"));
    EXPECT_EQ(query(1), (Status{1, 1, 3}));
    Status status{7, 8, 9};
    EXPECT_EQ(tryQuery(1, status), 1U);
    EXPECT_EQ(status, (Status{7, 8, 9}));
    takeErrorCodes();
    EXPECT_EQ(query(1), (Status{1, 2, 3}));
    EXPECT_EQ(query(1), (Status{2, 3, 3}));
}

TEST_F(FaultEffect, AnUnlockThatIsHitCountsAsMadeButTheLockIsHeld) {
    target.add(item("HCN").element(updateElement(1))).add(fault("unlock"));
    serve();
    lock();
    transfer("a");
    EXPECT_EQ(tryUnlock(), 1U);
    takeErrorCodes();
    EXPECT_EQ(KvEmulation::ledger().locks, 0U);
    EXPECT_EQ(KvEmulation::ledger().remoteFiles, 0U);
    void* second = nullptr;
    EXPECT_NE(manager().lock(errors(), root, HCN, 0x10003, second), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::targetLocked));
    EXPECT_EQ(update(1, "b"), 2U) << "the handle is still good";
    unlock();
    lock();
}

TEST_F(FaultEffect, ADeletionThatIsHitCountsAsMadeButTheFileStays) {
    target.add(item("HCN").element(updateElement(1))).add(fault("deleteRemoteFile"));
    serve();
    lock();
    const RemoteFile file = transfer("a");
    EXPECT_EQ(manager().deleteRemoteFile(errors(), root, HCN, lockHandle, file), 1U);
    takeErrorCodes();
    EXPECT_EQ(KvEmulation::ledger().remoteFiles, 0U);
    startUpdate(1, file);
    EXPECT_EQ(manager().deleteRemoteFile(errors(), root, HCN, lockHandle, file), 0U);
    EXPECT_EQ(KvEmulation::ledger().remoteFiles, 0U);
}

TEST_F(FaultEffect, AWriteCanBeShortWithoutAnError) {
    target.add(fault("KvHIM_putFileU").noErrors().status(3));
    target.serve();
    openTransferClient();
    const std::wstring local = wide(files.write("local", "content"));
    EXPECT_EQ(KvHIM_putFileU(errors(), nullptr, client, local.c_str(), "/mnt/cn/cfdrive", "a", nullptr, nullptr), 3);
    EXPECT_FALSE(target.folder().has("state"));
}

TEST_F(FaultEffect, AFaultWinsAgainstTheServiceStatus) {
    target.serviceStatus(46).add(fault("KvHIM_createFilter").status(7)).serve();
    KvHIMFilterHandle filter = nullptr;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 7);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fault));
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 46);
    EXPECT_THAT(takeErrorCodes(), IsEmpty());
}

TEST_F(FaultEffect, AFilterParameterIsHitByItsNumber) {
    target.add(fault("KvHIM_setFilterParameter").id(9).status(12));
    target.serve();
    KvHIMFilterHandle filter = makeFilter();
    const std::uint32_t value = 0;
    EXPECT_EQ(KvHIM_setFilterParameter(errors(), filter, 8, &value, sizeof value), 0);
    EXPECT_EQ(KvHIM_setFilterParameter(errors(), filter, 9, &value, sizeof value), 12);
    takeErrorCodes();
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 0);
}

} // namespace
