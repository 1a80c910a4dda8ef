// The record of calls that KV_TRACE asks for.

#include "EmulationTest.h"
#include "EnvironmentVariable.h"
#include "KvCInventoryData.h"

#include <gmock/gmock.h>

#include <sstream>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace KvNInventoryIDs;

class Trace : public EmulationTest {
protected:
    /// The lines so far, which are then forgotten.
    std::vector<std::string> takeLines() {
        std::vector<std::string> lines;
        if (files.has("trace")) {
            std::istringstream text(files.read("trace"));
            for (std::string line; std::getline(text, line);) {
                lines.push_back(line);
            }
            std::filesystem::remove(files.path() / "trace");
        }
        return lines;
    }
    EnvironmentVariable variable{"KV_TRACE", (files.path() / "trace").string()};
    TargetBuilder target;
};

TEST_F(Trace, HasALineForEachCallOfTheHostInterface) {
    target.serve();
    openTransferClient();
    EXPECT_THAT(takeLines(),
                ElementsAre(R"({"call":"KvHIM_createFilter"})", R"({"call":"KvHIM_setFilterParameter","id":6})",
                            R"({"call":"KvHIM_applyFilter"})", R"({"call":"KvHIM_getDeviceList"})",
                            R"({"call":"KvHIM_deleteFilter"})", R"({"call":"KvHIM_createDeviceHandle"})",
                            R"({"call":"KvHIM_createFTClientHandle"})"));
    const std::wstring local = wide(files.write("local", "content"));
    KvHIM_makeDir(errors(), nullptr, client, "/mnt/cn/cfdrive", "a b");
    KvHIM_putFileU(errors(), nullptr, client, local.c_str(), "/mnt/cn/cfdrive/a b", "x.tmp", nullptr, nullptr);
    KvHIM_renameFile(errors(), nullptr, client, "/mnt/cn/cfdrive/a b", "x.tmp", "x");
    KvHIM_FORCE_resetDevice(errors(), device, 0);
    closeDevice();
    EXPECT_THAT(takeLines(),
                ElementsAre(R"({"call":"KvHIM_makeDir","path":"/mnt/cn/cfdrive","name":"a b"})",
                            R"({"call":"KvHIM_putFileU","path":"/mnt/cn/cfdrive/a b","name":"x.tmp"})",
                            R"({"call":"KvHIM_renameFile","path":"/mnt/cn/cfdrive/a b","name":"x"})",
                            R"({"call":"KvHIM_FORCE_resetDevice"})", R"({"call":"KvHIM_deleteFTClientHandle"})",
                            R"({"call":"KvHIM_deleteDeviceHandle"})"));
}

TEST_F(Trace, HasALineForEachCallOfTheInventoryManager) {
    target.add(item("HCN").element(updateElement(7).polls(1)));
    target.serve();
    openRoot();
    KvCInventoryItem* tree = nullptr;
    manager().scan(errors(), root, tree);
    manager().deleteInventoryTree(tree);
    lock();
    const RemoteFile file = transfer("a");
    startUpdate(7, file);
    query(7);
    manager().updateErrors2(errors(), root, HCN, lockHandle, 7, errors());
    manager().deleteRemoteFile(errors(), root, HCN, lockHandle, file);
    manager().updateFinish(errors(), root, HCN, lockHandle);
    unlock();
    closeRoot();
    const std::string local = KvNJson::json(std::string_view((files.path() / "update.bin").string())).dump();
    EXPECT_THAT(takeLines(), ElementsAre(R"({"call":"createRootHandleByIpAddressList","name":"127.0.0.1"})",
                                         R"({"call":"scan"})", R"({"call":"lock","address":"HCN[1]","flags":65539})",
                                         R"({"call":"transferFile","address":"HCN[1]","path":)" + local + "}",
                                         R"({"call":"update2","address":"HCN[1]","id":7})",
                                         R"({"call":"updateStatus2","address":"HCN[1]","id":7})",
                                         R"({"call":"updateErrors2","address":"HCN[1]","id":7})",
                                         R"({"call":"deleteRemoteFile","address":"HCN[1]"})",
                                         R"({"call":"updateFinish","address":"HCN[1]"})", R"({"call":"unlock"})",
                                         R"({"call":"deleteRootHandle"})"));
}

TEST_F(Trace, HasNoLineForReadsAndTreesFromFiles) {
    target.add(item("HCN").parameter("NAME", "node")).serve();
    openRoot();
    KvCInventoryItem* tree = nullptr;
    manager().scan(errors(), root, tree);
    takeLines();
    KvCString name;
    tree->getItem(HCN)->getValue(errors(), NAME, name);
    manager().deleteInventoryTree(tree);
    bool hasChecksum = false;
    std::uint32_t checksum = 0;
    const std::string path = files.write("tree", R"({"inventoryTree": {"id": "FIRMWARE"}})");
    KvCInventoryData::extractInventoryTreeFromFile(errors(), path.c_str(), tree, hasChecksum, checksum);
    delete tree;
    EXPECT_THAT(takeLines(), IsEmpty());
}

TEST_F(Trace, ShowsStatusAndNumberOfErrorsOfAFailedCall) {
    target.address("10.0.0.1").address("10.0.0.2").add(item("HCN"));
    target.add(fault("scan").error(1, "a").error(2, "b").status(5));
    target.add(fault("lock").noErrors());
    target.add(fault("deleteRootHandle").status(0));
    target.serve();
    openRoot("10.0.0.1");
    KvCInventoryItem* tree = nullptr;
    manager().scan(errors(), root, tree);
    tryLock();
    manager().deleteRootHandle(errors(), root);
    root = nullptr;
    manager().createRootHandleByIpAddressList(errors(), "host", root);
    std::int32_t count = 0;
    KvHIMFilterHandle filter = makeFilter();
    takeErrorCodes();
    EXPECT_EQ(KvHIM_getDeviceList(errors(), filter, nullptr, 0, count), 21);
    takeErrorCodes();
    KvHIM_deleteFilter(errors(), filter);
    KvHIM_putFileU(errors(), nullptr, nullptr, L"a", "/mnt/cn/cfdrive", "a", nullptr, nullptr);
    takeErrorCodes();
    EXPECT_THAT(takeLines(),
                ElementsAre(R"({"call":"createRootHandleByIpAddressList","name":"10.0.0.1"})",
                            R"({"call":"scan","status":5,"errors":2})",
                            R"({"call":"lock","address":"HCN[1]","flags":65539,"status":1,"errors":0})",
                            R"({"call":"deleteRootHandle","status":0,"errors":1})",
                            R"({"call":"createRootHandleByIpAddressList","name":"host","status":1,"errors":1})",
                            R"({"call":"KvHIM_createFilter"})", R"({"call":"KvHIM_applyFilter"})",
                            R"({"call":"KvHIM_getDeviceList","status":21,"errors":1})",
                            R"({"call":"KvHIM_deleteFilter"})",
                            R"({"call":"KvHIM_putFileU","path":"/mnt/cn/cfdrive","name":"a","status":-1,"errors":1})"));
}

TEST_F(Trace, ErrorsThatTheTargetReportsAreNoFailureOfTheCall) {
    target.add(item("HCN").element(updateElement(7).polls(1).reports(1, "a")));
    target.serve();
    openRoot();
    lock();
    startUpdate(7, transfer("a"));
    query(7);
    takeLines();
    manager().updateErrors2(errors(), root, HCN, lockHandle, 7, errors());
    takeErrorCodes();
    EXPECT_THAT(takeLines(), ElementsAre(R"({"call":"updateErrors2","address":"HCN[1]","id":7})"));
}

TEST_F(Trace, ShowsTheServicesStatus) {
    KvHIMFilterHandle filter = nullptr;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 33);
    EXPECT_THAT(takeLines(), ElementsAre(R"({"call":"KvHIM_createFilter","status":33,"errors":0})"));
}

TEST_F(Trace, TextsAreWrittenAsJson) {
    target.add(item("HCN"));
    target.serve();
    openRoot();
    lock();
    takeLines();
    RemoteFile file;
    EXPECT_NE(
        manager().transferFile(errors(), root, HCN, lockHandle, L"a\\\"\n\u00E4\U0001F680", nullptr, nullptr, file),
        0U);
    takeErrorCodes();
    EXPECT_THAT(
        takeLines(),
        ElementsAre("{\"call\":\"transferFile\",\"address\":\"HCN[1]\",\"path\":\"a\\\\\\\"\\n\xC3\xA4\xF0\x9F\x9A"
                    "\x80\",\"status\":1,\"errors\":1}"));
    openTransferClient();
    takeLines();
    KvHIM_makeDir(errors(), nullptr, client, "/mnt/cn/cfdrive", "\xFF");
    EXPECT_THAT(takeLines(),
                ElementsAre("{\"call\":\"KvHIM_makeDir\",\"path\":\"/mnt/cn/cfdrive\",\"name\":\"\xEF\xBF\xBD\"}"));
}

TEST_F(Trace, IsAppendedToWhatIsThere) {
    files.write("trace", "before\n");
    KvHIMFilterHandle filter = nullptr;
    KvHIM_createFilter(errors(), filter, 1);
    EXPECT_THAT(takeLines(), ElementsAre("before", R"({"call":"KvHIM_createFilter","status":33,"errors":0})"));
}

TEST_F(Trace, ThatCannotBeWrittenDoesNoHarm) {
    const EnvironmentVariable elsewhere("KV_TRACE", (files.path() / "none" / "trace").string());
    target.serve();
    EXPECT_EQ(countDevices(), 1);
}

} // namespace
