// Finding devices through the host interface, and resetting them.

#include "EmulationTest.h"

#include <gmock/gmock.h>

#include <array>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DeviceList : public EmulationTest {
protected:
    static constexpr std::uint32_t anyValue = 1;
    static constexpr std::uint32_t size = sizeof(std::uint32_t);
};

TEST_F(DeviceList, WithoutATargetThereIsNoService) {
    KvHIMFilterHandle filter = nullptr;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 33);
    EXPECT_EQ(filter, nullptr);
    EXPECT_THAT(takeErrorCodes(), IsEmpty());
}

TEST_F(DeviceList, TheServiceStatusIsReturnedByEveryOperationWithoutAnError) {
    TargetBuilder target;
    target.serviceStatus(46).serve();
    KvHIMFilterHandle filter = nullptr;
    KvHIMDeviceHandle handle = nullptr;
    KvHIMFTClientHandle transfer = nullptr;
    std::int32_t count = 5;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 46);
    EXPECT_EQ(KvHIM_setFilterParameter(errors(), filter, 8, &anyValue, size), 46);
    EXPECT_EQ(KvHIM_applyFilter(errors(), filter), 46);
    EXPECT_EQ(KvHIM_getDeviceList(errors(), filter, nullptr, 0, count), 46);
    EXPECT_EQ(KvHIM_createDeviceHandle(errors(), {}, handle), 46);
    EXPECT_EQ(KvHIM_FORCE_resetDevice(errors(), handle, 0), 46);
    EXPECT_EQ(KvHIM_createFTClientHandle(errors(), handle, transfer), 46);
    EXPECT_EQ(KvHIM_makeDir(errors(), nullptr, transfer, "/mnt/cn/cfdrive", "a"), 46);
    EXPECT_EQ(KvHIM_putFileU(errors(), nullptr, transfer, L"a", "/mnt/cn/cfdrive", "a", nullptr, nullptr), 46);
    EXPECT_EQ(KvHIM_renameFile(errors(), nullptr, transfer, "/mnt/cn/cfdrive", "a", "b"), 46);
    EXPECT_EQ(count, 5);
    EXPECT_THAT(takeErrorCodes(), IsEmpty());
}

TEST_F(DeviceList, OfSeveralServiceStatusesTheFirstThatIsNotZeroCounts) {
    TargetBuilder sound;
    sound.serve();
    TargetBuilder outdated;
    outdated.serviceStatus(46).serve();
    TargetBuilder dead;
    dead.serviceStatus(33).serve();
    KvHIMFilterHandle filter = nullptr;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 46);
}

TEST_F(DeviceList, ReleasesEndTheirHandlesThoughTheServiceFails) {
    TargetBuilder target;
    target.serve();
    KvHIMFilterHandle filter = makeFilter();
    openTransferClient();
    TargetBuilder dead;
    dead.serviceStatus(33).serve();
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 33);
    EXPECT_EQ(KvHIM_deleteFTClientHandle(errors(), client), 33);
    EXPECT_EQ(KvHIM_deleteDeviceHandle(errors(), device), 33);
    client = nullptr;
    device = nullptr;
}

TEST_F(DeviceList, ATooSmallBufferGetsNothingButTheCount) {
    TargetBuilder target;
    target.address("10.0.0.1").address("10.0.0.2").serve();
    KvHIMFilterHandle filter = makeFilter();
    std::array<KvHIMSDeviceInfo, 3> infos{};
    std::int32_t count = 0;
    EXPECT_EQ(KvHIM_getDeviceList(errors(), filter, nullptr, 0, count), 21);
    EXPECT_EQ(count, 2);
    count = 0;
    EXPECT_EQ(KvHIM_getDeviceList(errors(), filter, infos.data(), 1, count), 21);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(infos[0].ipAddress, 0U);
    EXPECT_THAT(takeErrorCodes(),
                ElementsAre(EmulationErrorCodes::bufferTooSmall, EmulationErrorCodes::bufferTooSmall));
    EXPECT_EQ(KvHIM_getDeviceList(errors(), filter, infos.data(), 3, count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(infos[0].ipAddress, ipNumber("10.0.0.1"));
    EXPECT_EQ(infos[1].ipAddress, ipNumber("10.0.0.2"));
    EXPECT_EQ(infos[2].ipAddress, 0U);
    EXPECT_NE(infos[0].deviceNumber, infos[1].deviceNumber);
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 0);
}

TEST_F(DeviceList, WithoutAMatchingDeviceTheCountIsZeroAndTheStatusToo) {
    TargetBuilder target;
    target.address("10.0.0.1").serve();
    KvHIMFilterHandle filter = makeFilter("10.0.0.2");
    std::int32_t count = 5;
    EXPECT_EQ(KvHIM_getDeviceList(errors(), filter, nullptr, 0, count), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 0);
}

TEST_F(DeviceList, AnAddressGivenSeveralTimesIsSeveralDevices) {
    TargetBuilder target;
    target.address("10.0.0.1").address("10.0.0.2").address("10.0.0.1").serve();
    TargetBuilder other;
    other.address("10.0.0.1").serve();
    EXPECT_EQ(countDevices("10.0.0.1"), 3);
    EXPECT_EQ(countDevices("10.0.0.2"), 1);
    EXPECT_EQ(countDevices(), 4);
}

TEST_F(DeviceList, ATargetWithoutAddressesIsNotListed) {
    TargetBuilder target;
    target.noAddress().serve();
    EXPECT_EQ(countDevices(), 0);
}

TEST_F(DeviceList, FilterParametersAreCheckedForNumberAndSize) {
    TargetBuilder target;
    target.serve();
    KvHIMFilterHandle filter = nullptr;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 0);
    EXPECT_EQ(KvHIM_setFilterParameter(errors(), filter, 8, &anyValue, size), 0);
    EXPECT_EQ(KvHIM_setFilterParameter(errors(), filter, 9, &anyValue, size), 0);
    EXPECT_THAT(takeErrorCodes(), IsEmpty());
    EXPECT_NE(KvHIM_setFilterParameter(errors(), filter, 6, &anyValue, 3), 0);
    EXPECT_NE(KvHIM_setFilterParameter(errors(), filter, 8, &anyValue, 8), 0);
    EXPECT_NE(KvHIM_setFilterParameter(errors(), filter, 9, nullptr, size), 0);
    EXPECT_NE(KvHIM_setFilterParameter(errors(), filter, 7, &anyValue, size), 0);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::valueUnusable, EmulationErrorCodes::valueUnusable,
                                              EmulationErrorCodes::valueUnusable, EmulationErrorCodes::valueUnusable));
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 0);
}

TEST_F(DeviceList, AFilterThatWasNotAppliedListsNothing) {
    TargetBuilder target;
    target.serve();
    KvHIMFilterHandle filter = nullptr;
    std::int32_t count = 5;
    EXPECT_EQ(KvHIM_createFilter(errors(), filter, 1), 0);
    EXPECT_NE(KvHIM_getDeviceList(errors(), filter, nullptr, 0, count), 0);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongHandle));
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 0);
}

TEST_F(DeviceList, DeadHandlesAreErrorsAndTheirReleaseIsCounted) {
    TargetBuilder target;
    target.serve();
    KvHIMFilterHandle filter = makeFilter();
    EXPECT_EQ(KvEmulation::ledger().filters, 1U);
    EXPECT_EQ(KvHIM_deleteFilter(errors(), filter), 0);
    KvHIMFTClientHandle deadClient = openTransferClient();
    KvHIMDeviceHandle deadDevice = device;
    EXPECT_EQ(KvEmulation::ledger().deviceHandles, 1U);
    EXPECT_EQ(KvEmulation::ledger().transferClients, 1U);
    closeDevice();
    EXPECT_TRUE(KvEmulation::ledger().isClean());

    std::int32_t count = 0;
    EXPECT_NE(KvHIM_setFilterParameter(errors(), filter, 8, &anyValue, size), 0);
    EXPECT_NE(KvHIM_applyFilter(errors(), filter), 0);
    EXPECT_NE(KvHIM_getDeviceList(errors(), filter, nullptr, 0, count), 0);
    EXPECT_NE(KvHIM_deleteFilter(errors(), filter), 0);
    EXPECT_NE(KvHIM_FORCE_resetDevice(errors(), deadDevice, 0), 0);
    EXPECT_NE(KvHIM_createFTClientHandle(errors(), deadDevice, client), 0);
    EXPECT_NE(KvHIM_deleteDeviceHandle(errors(), deadDevice), 0);
    EXPECT_NE(KvHIM_makeDir(errors(), nullptr, deadClient, "/mnt/cn/cfdrive", "a"), 0);
    EXPECT_NE(KvHIM_deleteFTClientHandle(errors(), deadClient), 0);
    client = nullptr;
    EXPECT_THAT(takeErrorCodes(), testing::AllOf(testing::SizeIs(9), testing::Each(EmulationErrorCodes::wrongHandle)));
    EXPECT_EQ(KvEmulation::ledger().badReleases, 3U);
    KvEmulation::reset();
}

TEST_F(DeviceList, ADeviceThatTheServiceDoesNotListHasNoHandle) {
    TargetBuilder target;
    target.serve();
    EXPECT_NE(KvHIM_createDeviceHandle(errors(), {ipNumber("127.0.0.1"), 2}, device), 0);
    EXPECT_NE(KvHIM_createDeviceHandle(errors(), {ipNumber("127.0.0.2"), 1}, device), 0);
    EXPECT_EQ(device, nullptr);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::notFound, EmulationErrorCodes::notFound));
}

TEST_F(DeviceList, AResetHidesTheTargetFromThatManySessions) {
    TargetBuilder target;
    target.rebootLookups(2).serve();
    EXPECT_EQ(countDevices(), 1);
    resetDevice();
    EXPECT_EQ(countDevices(), 0);
    EXPECT_EQ(countDevices(), 0);
    EXPECT_EQ(countDevices(), 1);
    EXPECT_EQ(countDevices(), 1);
    resetDevice();
    EXPECT_EQ(countDevices(), 0);
}

TEST_F(DeviceList, ASessionIsAFilterHoweverOftenItLists) {
    TargetBuilder target;
    target.rebootLookups(1).serve();
    KvHIMFilterHandle before = makeFilter();
    std::int32_t count = 0;
    KvHIM_getDeviceList(errors(), before, nullptr, 0, count);
    errors().reset();
    resetDevice();
    KvHIMFilterHandle after = makeFilter();
    for (int call = 0; call < 3; ++call) {
        EXPECT_EQ(KvHIM_getDeviceList(errors(), after, nullptr, 0, count), 0);
        EXPECT_EQ(count, 0);
        EXPECT_EQ(KvHIM_getDeviceList(errors(), before, nullptr, 0, count), 21) << "it began before the reset";
        EXPECT_EQ(count, 1);
    }
    errors().reset();
    EXPECT_EQ(KvHIM_deleteFilter(errors(), before), 0);
    EXPECT_EQ(KvHIM_deleteFilter(errors(), after), 0);
    EXPECT_EQ(countDevices(), 1);
}

TEST_F(DeviceList, OnlyASessionThatAsksForTheTargetCounts) {
    TargetBuilder target;
    target.rebootLookups(1).serve();
    resetDevice();
    EXPECT_EQ(countDevices("10.0.0.9"), 0);
    EXPECT_EQ(countDevices("127.0.0.1"), 0);
    EXPECT_EQ(countDevices("127.0.0.1"), 1);
}

} // namespace
