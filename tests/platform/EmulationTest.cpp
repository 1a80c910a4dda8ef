#include "EmulationTest.h"

#include "KvNRtosAbstraction.h"

void EmulationTest::SetUp() {
    KvEmulation::reset();
}

void EmulationTest::TearDown() {
    if (lockHandle != nullptr) {
        unlock();
    }
    if (root != nullptr) {
        closeRoot();
    }
    closeDevice();
    EXPECT_EQ(errors().getErrorCount(), 0U);
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    KvEmulation::reset();
}

std::vector<std::uint32_t> EmulationTest::takeErrorCodes() {
    std::vector<std::uint32_t> codes;
    for (std::uint32_t index = 0; index < errors().getNumberOfUsedEntries(); ++index) {
        codes.push_back(errors().getErrorCode(index));
    }
    errors().reset();
    return codes;
}

std::vector<std::string> EmulationTest::takeErrorTexts() {
    std::vector<std::string> texts;
    for (std::uint32_t index = 0; index < errors().getNumberOfUsedEntries(); ++index) {
        texts.emplace_back(errors().getErrorText(index));
    }
    errors().reset();
    return texts;
}

KvCInventoryRootHandle* EmulationTest::openRoot(const char* address) {
    EXPECT_EQ(manager().createRootHandleByIpAddressList(errors(), address, root), 0U);
    return root;
}

void EmulationTest::closeRoot() {
    EXPECT_EQ(manager().deleteRootHandle(errors(), root), 0U);
    root = nullptr;
}

std::uint32_t EmulationTest::tryLock() {
    return manager().lock(errors(), root, boardAddress, 0x10003, lockHandle);
}

void EmulationTest::lock() {
    EXPECT_EQ(tryLock(), 0U);
}

std::uint32_t EmulationTest::tryUnlock() {
    return manager().unlock(errors(), lockHandle);
}

void EmulationTest::unlock() {
    EXPECT_EQ(tryUnlock(), 0U);
    lockHandle = nullptr;
}

EmulationTest::RemoteFile EmulationTest::transfer(const std::string& content) {
    const std::string path = files.write("update.bin", content);
    RemoteFile file;
    EXPECT_EQ(
        manager().transferFile(errors(), root, boardAddress, lockHandle, wide(path).c_str(), nullptr, nullptr, file),
        0U);
    return file;
}

std::uint32_t EmulationTest::tryUpdate(std::uint32_t elementId, const RemoteFile& file) {
    return manager().update2(errors(), root, boardAddress, lockHandle, elementId, file, 0);
}

void EmulationTest::startUpdate(std::uint32_t elementId, const RemoteFile& file) {
    EXPECT_EQ(tryUpdate(elementId, file), 0U);
}

std::uint32_t EmulationTest::tryQuery(std::uint32_t elementId, Status& status) {
    std::uint32_t id = elementId;
    return manager().updateStatus2(errors(), root, boardAddress, id, status.state, status.done, status.total);
}

EmulationTest::Status EmulationTest::query(std::uint32_t elementId) {
    Status status;
    EXPECT_EQ(tryQuery(elementId, status), 0U);
    return status;
}

std::uint32_t EmulationTest::update(std::uint32_t elementId, const std::string& content) {
    constexpr int mostQueries = 100;
    startUpdate(elementId, transfer(content));
    for (int count = 0; count < mostQueries; ++count) {
        const Status status = query(elementId);
        if (status.state != 1) {
            return status.state;
        }
    }
    ADD_FAILURE() << "the update never ends";
    return 1;
}

void EmulationTest::updateOnce(std::uint32_t elementId, const std::string& content) {
    openRoot();
    lock();
    EXPECT_EQ(update(elementId, content), 2U);
    unlock();
    closeRoot();
}

EmulationTest::Shown EmulationTest::scanElement(const KvCInventoryAddress& address) {
    using namespace KvNInventoryIDs;
    Shown shown;
    const bool isOpen = root != nullptr;
    if (!isOpen) {
        openRoot();
    }
    KvCInventoryItem* tree = nullptr;
    EXPECT_EQ(manager().scan(errors(), root, tree), 0U);
    if (tree != nullptr) {
        const KvCInventoryItem* const element = tree->getItem(address);
        EXPECT_NE(element, nullptr) << address.toString().c_str();
        if (element != nullptr) {
            KvCString version;
            if (element->getParameter(VERSION) != nullptr) {
                element->getValue(errors(), VERSION, version);
            }
            shown.version = version.c_str();
            element->getValue(errors(), CHECKSUM_CRC32, shown.checksum);
            if (element->getParameter(VALID) != nullptr) {
                element->getValue(errors(), VALID, shown.valid);
                element->getValue(errors(), ACTIVE, shown.active);
            }
        }
        manager().deleteInventoryTree(tree);
    }
    if (!isOpen) {
        closeRoot();
    }
    return shown;
}

KvHIMFilterHandle EmulationTest::makeFilter(const char* address) {
    KvHIMFilterHandle filter = nullptr;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 0);
    if (address != nullptr) {
        const std::uint32_t number = ipNumber(address);
        EXPECT_EQ(KvHIM_setFilterParameter(errors(), filter, 6, &number, sizeof number), 0);
    }
    EXPECT_EQ(KvHIM_applyFilter(errors(), filter), 0);
    return filter;
}

std::int32_t EmulationTest::countDevices(const char* address) {
    KvHIMFilterHandle filter = makeFilter(address);
    std::int32_t count = -1;
    const std::int32_t status = KvHIM_getDeviceList(errors(), filter, nullptr, 0, count);
    EXPECT_EQ(status, count == 0 ? 0 : 21);
    errors().reset();
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 0);
    return count;
}

KvHIMDeviceHandle EmulationTest::openDevice(const char* address) {
    KvHIMFilterHandle filter = makeFilter(address);
    KvHIMSDeviceInfo info;
    std::int32_t count = 0;
    EXPECT_EQ(KvHIM_getDeviceList(errors(), filter, &info, 1, count), 0);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 0);
    EXPECT_EQ(KvHIM_createDeviceHandle(errors(), info, device), 0);
    return device;
}

KvHIMFTClientHandle EmulationTest::openTransferClient() {
    EXPECT_EQ(KvHIM_createFTClientHandle(errors(), openDevice(), client), 0);
    return client;
}

void EmulationTest::closeDevice() {
    if (client != nullptr) {
        EXPECT_EQ(KvHIM_deleteFTClientHandle(errors(), client), 0);
        client = nullptr;
    }
    if (device != nullptr) {
        EXPECT_EQ(KvHIM_deleteDeviceHandle(errors(), device), 0);
        device = nullptr;
    }
}

void EmulationTest::resetDevice() {
    EXPECT_EQ(KvHIM_FORCE_resetDevice(errors(), openDevice(), 0), 0);
    closeDevice();
}

std::wstring wide(const std::string& path) {
    return {path.begin(), path.end()};
}

std::uint32_t ipNumber(const char* address) {
    return KvNRtosAbstraction::stringToIpV4(KvCErrorManager::getInstance()->getMasterErrorList(), address);
}
