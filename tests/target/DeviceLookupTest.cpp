#include "TargetFixture.h"

#include "KvEmulation.h"
#include "SessionLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace {

/// A call of the lookup; the parameter number tells calls of one operation apart.
struct LookupCall {
    const char* operation;
    std::uint32_t parameter;
    std::uint32_t occurrence;
};

constexpr std::array lookupCalls = {
    LookupCall{"KvHIM_createFilter", 0, 1},       LookupCall{"KvHIM_setFilterParameter", 8, 1},
    LookupCall{"KvHIM_setFilterParameter", 9, 1}, LookupCall{"KvHIM_setFilterParameter", 6, 1},
    LookupCall{"KvHIM_applyFilter", 0, 1},        LookupCall{"KvHIM_getDeviceList", 0, 1},
    LookupCall{"KvHIM_getDeviceList", 0, 2},      LookupCall{"KvHIM_deleteFilter", 0, 1},
    LookupCall{"KvHIM_createDeviceHandle", 0, 1},
};

FaultBuilder faultAt(const LookupCall& call) {
    FaultBuilder result = fault(call.operation);
    result.occurrence(call.occurrence);
    if (call.parameter != 0) {
        result.id(call.parameter);
    }
    return result;
}

constexpr const wchar_t* unreachableMessage =
    L"\nERROR: Unable to communicate with the Korvel Hostlink!\n"
    L"       Maybe the Korvel Setup was not properly installed or the service\n"
    L"       has crashed.\n";

constexpr const wchar_t* outdatedMessage =
    L"\nERROR: The installed Korvel Hostlink is outdated and unsupported!\n"
    L"       The installed service is older than the Korvel release of this update\n"
    L"       utility. The service must be updated to the current release before\n"
    L"       using this version of the firmware update utility.\n";

} // namespace

class DeviceLookupTest : public TargetTest {
protected:
    void expectFailure(std::int32_t status) {
        const Lookup found = lookUp();
        EXPECT_EQ(found.status, status);
        EXPECT_FALSE(found.hasHandle);
        EXPECT_TRUE(KvEmulation::ledger().isClean());
    }
};

TEST_F(DeviceLookupTest, TheOneDeviceAtTheAddressIsFound) {
    serve();
    const Lookup found = lookUp();
    EXPECT_EQ(found.status, 0);
    EXPECT_TRUE(found.hasHandle);
    EXPECT_EQ(errors().getErrorCount(), 0U);
    EXPECT_EQ(printed(), L"");
}

TEST_F(DeviceLookupTest, DevicesAtOtherAddressesDoNotDisturb) {
    TargetBuilder other;
    other.address("127.0.0.2").address("127.0.0.3");
    static_cast<void>(other.serve());
    serve();
    EXPECT_EQ(lookUp().status, 0);
}

TEST_F(DeviceLookupTest, TheNextLookupAfterAFaultFindsTheDevice) {
    for (const LookupCall& call : lookupCalls) {
        KvEmulation::reset();
        TargetBuilder faulty;
        faulty.add(faultAt(call));
        static_cast<void>(faulty.serve());
        EXPECT_NE(lookUp().status, 0) << call.operation;
        EXPECT_EQ(lookUp().status, 0) << call.operation;
    }
}

TEST_F(DeviceLookupTest, NoDeviceAtTheAddressIsNotFound) {
    target.address("127.0.0.2");
    serve();
    expectFailure(-1);
    EXPECT_EQ(errors().getErrorCount(), 0U);
    EXPECT_FALSE(access.checkTargetAccessible());
    EXPECT_EQ(printed(), L"ERROR: Device with IP address 127.0.0.1 not found (error code: -1)!\n");
}

TEST_F(DeviceLookupTest, TwoDevicesAtTheAddressAreNotFound) {
    target.address("127.0.0.1").address("127.0.0.1");
    serve();
    expectFailure(-1);
    EXPECT_EQ(errors().getErrorCount(), 0U);
    EXPECT_FALSE(access.checkTargetAccessible());
    EXPECT_EQ(printed(), L"ERROR: Device with IP address 127.0.0.1 not found (error code: -1)!\n");
}

TEST_F(DeviceLookupTest, TheCheckSucceedsInSilence) {
    options.verbose = true;
    serve();
    EXPECT_TRUE(access.checkTargetAccessible());
    EXPECT_EQ(printed(), L"");
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(DeviceLookupTest, WithoutAServiceTheCheckSaysSo) {
    expectFailure(33);
    EXPECT_FALSE(access.checkTargetAccessible());
    EXPECT_EQ(printed(), unreachableMessage);
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(DeviceLookupTest, AnOutdatedServiceIsToldByTheCheck) {
    target.serviceStatus(46);
    serve();
    expectFailure(46);
    EXPECT_FALSE(access.checkTargetAccessible());
    EXPECT_EQ(printed(), outdatedMessage);
}

TEST_F(DeviceLookupTest, TheTwoStatusesHaveTheirMessagesWhereverTheyArise) {
    struct Row {
        std::int32_t status;
        const wchar_t* message;
    };
    for (const Row& row : {Row{33, unreachableMessage}, Row{46, outdatedMessage}}) {
        for (const LookupCall& call : lookupCalls) {
            KvEmulation::reset();
            KeptMessages::forget();
            TargetBuilder faulty;
            faulty.add(faultAt(call).status(row.status));
            static_cast<void>(faulty.serve());
            EXPECT_FALSE(access.checkTargetAccessible());
            EXPECT_EQ(printed(), row.message) << call.operation;
        }
    }
}

TEST_F(DeviceLookupTest, AnyOtherStatusIsShownByTheCheck) {
    struct Row {
        std::int64_t status;
        const wchar_t* message;
    };
    for (const Row& row :
         {Row{1, L"ERROR: Device with IP address 127.0.0.1 not found (error code: 1)!\n"},
          Row{-20, L"ERROR: Device with IP address 127.0.0.1 not found (error code: -20)!\n"},
          Row{34, L"ERROR: Device with IP address 127.0.0.1 not found (error code: 34)!\n"},
          Row{2147483647, L"ERROR: Device with IP address 127.0.0.1 not found (error code: 2147483647)!\n"}}) {
        KvEmulation::reset();
        KeptMessages::forget();
        TargetBuilder faulty;
        faulty.serviceStatus(row.status);
        static_cast<void>(faulty.serve());
        EXPECT_FALSE(access.checkTargetAccessible());
        EXPECT_EQ(printed(), row.message);
    }
}

using DeviceRebootTest = DeviceLookupTest;

TEST_F(DeviceRebootTest, TheTargetIsReset) {
    target.rebootLookups(2);
    serve();
    EXPECT_TRUE(access.rebootDevice());
    EXPECT_EQ(printed(), L"");
    EXPECT_EQ(lookUp().status, -1);
    EXPECT_EQ(lookUp().status, -1);
    EXPECT_EQ(lookUp().status, 0);
}

TEST_F(DeviceRebootTest, AFailingResetShowsTheStatusOfTheLookup) {
    serveWith(fault("KvHIM_FORCE_resetDevice").status(5));
    EXPECT_FALSE(access.rebootDevice());
    EXPECT_EQ(printed(), L"ERROR: Cannot reboot device with IP address 127.0.0.1 (error code: 0)!\n");
    EXPECT_EQ(errors().getErrorCount(), 1U);
}

TEST_F(DeviceRebootTest, AFailingResetIsToldBeforeTheHandleIsGivenBack) {
    SessionLog log;
    KvTCallbacks callbacks;
    callbacks.message = SessionLog::onMessage;
    const KvCConsoleWriter writer(callbacks);
    KvCTargetAccess logged(writer, options, errors());
    ASSERT_TRUE(logged.resolveTarget());
    serveWith(fault("KvHIM_FORCE_resetDevice").status(5));
    EXPECT_FALSE(logged.rebootDevice());
    const std::vector<std::string> events = log.events();
    ASSERT_GT(events.size(), 3U);
    EXPECT_THAT(std::vector(events.end() - 3, events.end()),
                testing::ElementsAre("KvHIM_FORCE_resetDevice -> status 5, errors 1",
                                     "\"ERROR: Cannot reboot device with IP address 127.0.0.1 (error code: 0)!\\n\"",
                                     "KvHIM_deleteDeviceHandle"));
}

TEST_F(DeviceRebootTest, ATargetThatCannotBeFoundIsNotReset) {
    target.address("127.0.0.2").rebootLookups(1);
    serve();
    EXPECT_FALSE(access.rebootDevice());
    EXPECT_EQ(printed(), L"ERROR: Cannot access device with IP address 127.0.0.1 (error code: -1)!\n");
    EXPECT_FALSE(target.folder().has("state"));
}

TEST_F(DeviceRebootTest, AFaultOfTheLookupIsShownAndNothingIsReset) {
    for (const LookupCall& call : lookupCalls) {
        for (const std::int32_t status : {77, 33, 46}) {
            KvEmulation::reset();
            KeptMessages::forget();
            TargetBuilder faulty;
            faulty.add(faultAt(call).status(status));
            static_cast<void>(faulty.serve());
            EXPECT_FALSE(access.rebootDevice());
            EXPECT_EQ(printed(), L"ERROR: Cannot access device with IP address 127.0.0.1 (error code: " +
                                     std::to_wstring(status) + L")!\n");
            EXPECT_TRUE(KvEmulation::ledger().isClean());
            EXPECT_FALSE(faulty.folder().has("state"));
        }
    }
}
