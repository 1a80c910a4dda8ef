#include "HostServiceStandIn.h"
#include "KeptMessages.h"
#include "KvCTargetAccess.h"
#include "KvEmulation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::int32_t bufferTooSmall = 21;

} // namespace

/// Looks a device up through a host interface that answers as the test says.
class DeviceLookupCallsTest : public testing::Test {
protected:
    void SetUp() override {
        service().forget();
        errors().reset();
        options_.target = L"10.0.0.7";
        ASSERT_TRUE(access_.resolveTarget());
    }
    void TearDown() override {
        EXPECT_THAT(service().held(), IsEmpty());
        EXPECT_TRUE(KvEmulation::ledger().isClean());
        KvEmulation::reset();
    }

    static HostServiceStandIn& service() { return HostServiceStandIn::instance(); }
    static KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }
    [[nodiscard]] static std::wstring messages() { return KeptMessages::text(); }
    [[nodiscard]] const KvCTargetAccess& access() const { return access_; }

    /// The status of a lookup that is expected to fail.
    std::int32_t failingLookup() { return failingLookup(access_); }
    static std::int32_t failingLookup(const KvCTargetAccess& access) {
        KvHIMDeviceHandle device = notNull();
        const std::int32_t status = access.findDevice(errors(), device);
        EXPECT_EQ(device, nullptr);
        return status;
    }
    static KvHIMDeviceHandle notNull() {
        static char somewhere = 0;
        return reinterpret_cast<KvHIMDeviceHandle>(&somewhere);
    }

    KeptMessages messages_;
    KvNReflasher::KvTOptions options_{};
    KvCTargetAccess access_{messages_.writer(), options_, errors()};
};

TEST_F(DeviceLookupCallsTest, ADeviceIsFoundWithTheseCallsInThisOrder) {
    KvHIMDeviceHandle device = nullptr;
    EXPECT_EQ(access().findDevice(errors(), device), 0);
    EXPECT_THAT(service().calls(),
                ElementsAre("createFilter(1)", "setFilterParameter(filter1, 8, 1)", "setFilterParameter(filter1, 9, 0)",
                            "setFilterParameter(filter1, 6, 10.0.0.7)", "applyFilter(filter1)",
                            "getDeviceList(filter1, null, 0, 0)", "getDeviceList(filter1, something, 1, 1)",
                            "deleteFilter(filter1)", "createDeviceHandle(1)"));
    EXPECT_EQ(service().nameOf(device), "device1");
    EXPECT_THAT(service().held(), ElementsAre("device1"));
    EXPECT_THAT(service().errorLists(), testing::Each(&errors()));
    EXPECT_EQ(KvHIM_deleteDeviceHandle(errors(), device), 0);
}

TEST_F(DeviceLookupCallsTest, WithoutAnAddressThereIsNoDevice) {
    const KvCTargetAccess unresolved(messages_.writer(), options_, errors());
    EXPECT_EQ(failingLookup(unresolved), -1);
    EXPECT_THAT(service().calls(), ElementsAre("createFilter(1)", "setFilterParameter(filter1, 8, 1)",
                                               "setFilterParameter(filter1, 9, 0)", "deleteFilter(filter1)"));
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(DeviceLookupCallsTest, AStatusEndsTheLookupAndIsPassedUp) {
    struct Row {
        const char* operation;
        std::uint32_t occurrence;
        std::vector<std::string> callsAfter;
    };
    const std::array rows = {
        Row{"createFilter", 1, {}},
        Row{"setFilterParameter", 1, {"deleteFilter"}},
        Row{"setFilterParameter", 2, {"deleteFilter"}},
        Row{"setFilterParameter", 3, {"deleteFilter"}},
        Row{"applyFilter", 1, {"deleteFilter"}},
        Row{"getDeviceList", 1, {"deleteFilter"}},
        Row{"getDeviceList", 2, {"deleteFilter"}},
        Row{"deleteFilter", 1, {}},
        Row{"createDeviceHandle", 1, {}},
    };
    const std::vector<std::string> all = {"createFilter",       "setFilterParameter", "setFilterParameter",
                                          "setFilterParameter", "applyFilter",        "getDeviceList",
                                          "getDeviceList",      "deleteFilter",       "createDeviceHandle"};
    std::size_t reached = 0;
    for (const Row& row : rows) {
        std::vector<std::string> expected(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(++reached));
        expected.insert(expected.end(), row.callsAfter.begin(), row.callsAfter.end());
        for (const std::int32_t status : {77, -5, 33, 46, -2147483647}) {
            service().forget();
            errors().reset();
            service().answer(row.operation, {.status = status, .addsError = true, .leavesHandle = true},
                             row.occurrence);
            EXPECT_EQ(failingLookup(), status) << row.operation;
            EXPECT_EQ(errors().getErrorCount(), 1U) << row.operation;
            EXPECT_THAT(service().operations(), ElementsAreArray(expected)) << row.operation << " " << row.occurrence;
            EXPECT_THAT(service().held(), IsEmpty());
        }
    }
}

TEST_F(DeviceLookupCallsTest, AHandleThatComesWithAFailureIsNone) {
    service().answer("createFilter", {.status = 5});
    EXPECT_EQ(failingLookup(), 5);
    EXPECT_THAT(service().calls(), ElementsAre("createFilter(1)"));
    service().forget();
    service().answer("createDeviceHandle", {.status = 6});
    EXPECT_EQ(failingLookup(), 6);
    EXPECT_EQ(service().operations().back(), "createDeviceHandle");
    service().forget();
}

TEST_F(DeviceLookupCallsTest, TheErrorOfAskingForTheSizeIsDroppedWithAllBefore) {
    errors().addError({});
    service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = 1});
    KvHIMDeviceHandle device = nullptr;
    EXPECT_EQ(access().findDevice(errors(), device), 0);
    EXPECT_EQ(errors().getErrorCount(), 0U);
    EXPECT_EQ(KvHIM_deleteDeviceHandle(errors(), device), 0);
}

TEST_F(DeviceLookupCallsTest, ErrorsStayWhenTheListIsNotAskedForAgain) {
    errors().addError({});
    service().answer("getDeviceList", {.status = 5, .addsError = true, .count = 1});
    EXPECT_EQ(failingLookup(), 5);
    EXPECT_EQ(errors().getErrorCount(), 2U);
}

TEST_F(DeviceLookupCallsTest, AListOf999DevicesIsFetched) {
    service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = 999});
    service().answer("getDeviceList", {.count = 999}, 2);
    EXPECT_EQ(failingLookup(), -1);
    EXPECT_EQ(service().calls()[6], "getDeviceList(filter1, something, 999, 999)");
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(DeviceLookupCallsTest, AListOf1000DevicesOrMoreIsNotFetched) {
    for (const std::int32_t count : {1000, 1001, 2147483647}) {
        service().forget();
        errors().reset();
        service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = count});
        EXPECT_EQ(failingLookup(), bufferTooSmall) << count;
        EXPECT_THAT(service().calls().back(), "deleteFilter(filter1)");
        EXPECT_THAT(service().operations(), testing::Contains("getDeviceList").Times(1));
        EXPECT_EQ(errors().getErrorCount(), 1U);
    }
}

TEST_F(DeviceLookupCallsTest, TheCheckShowsTheStatusOfAListThatIsNotFetched) {
    service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = 1000});
    EXPECT_FALSE(access().checkTargetAccessible());
    EXPECT_EQ(messages(), L"ERROR: Device with IP address 10.0.0.7 not found (error code: 21)!\n");
}

TEST_F(DeviceLookupCallsTest, AnEmptyListIsFetchedTooAndItsErrorDropped) {
    service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = 0});
    service().answer("getDeviceList", {.count = 0}, 2);
    EXPECT_EQ(failingLookup(), -1);
    EXPECT_THAT(service().operations(), testing::Contains("getDeviceList").Times(2));
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(DeviceLookupCallsTest, ANegativeCountIsNotFetched) {
    service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = -1});
    EXPECT_EQ(failingLookup(), bufferTooSmall);
    EXPECT_THAT(service().operations(), testing::Contains("getDeviceList").Times(1));
    EXPECT_EQ(errors().getErrorCount(), 1U);
}

TEST_F(DeviceLookupCallsTest, AListThatGrowsMeanwhileIsNotAskedForAThirdTime) {
    service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = 1});
    service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = 2}, 2);
    EXPECT_EQ(failingLookup(), bufferTooSmall);
    EXPECT_THAT(service().operations(), testing::Contains("getDeviceList").Times(2));
    EXPECT_EQ(errors().getErrorCount(), 1U);
}

TEST_F(DeviceLookupCallsTest, AListThatShrinksToOneDeviceMeanwhileFindsIt) {
    service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = 3});
    KvHIMDeviceHandle device = nullptr;
    EXPECT_EQ(access().findDevice(errors(), device), 0);
    EXPECT_EQ(service().calls()[6], "getDeviceList(filter1, something, 3, 3)");
    EXPECT_EQ(KvHIM_deleteDeviceHandle(errors(), device), 0);
}

TEST_F(DeviceLookupCallsTest, NotExactlyOneDeviceIsNone) {
    for (const std::int32_t count : {0, 2, -1}) {
        service().forget();
        service().answer("getDeviceList", {.status = bufferTooSmall, .addsError = true, .count = 2});
        service().answer("getDeviceList", {.count = count}, 2);
        EXPECT_EQ(failingLookup(), -1) << count;
        EXPECT_EQ(service().operations().back(), "deleteFilter");
    }
}

TEST_F(DeviceLookupCallsTest, AListServiceThatAnswersNoDeviceAtOnceFindsNone) {
    service().answer("getDeviceList", {.count = 0});
    EXPECT_EQ(failingLookup(), -1);
    EXPECT_EQ(service().operations().back(), "deleteFilter");
    EXPECT_EQ(errors().getErrorCount(), 0U);
}

TEST_F(DeviceLookupCallsTest, ADeviceThatIsCountedButNotListedIsNone) {
    service().answer("getDeviceList", {.count = 1});
    EXPECT_EQ(failingLookup(), -1);
    EXPECT_EQ(service().operations().back(), "deleteFilter");
}

TEST_F(DeviceLookupCallsTest, AFilterThatCannotBeGivenBackEndsTheLookup) {
    service().answer("deleteFilter", {.status = 9, .addsError = true});
    EXPECT_EQ(failingLookup(), 9);
    EXPECT_EQ(service().operations().back(), "deleteFilter");
    EXPECT_EQ(errors().getErrorCount(), 1U);
}

TEST_F(DeviceLookupCallsTest, OnlyStatusesCountInTheLookup) {
    for (const char* operation :
         {"createFilter", "setFilterParameter", "applyFilter", "deleteFilter", "createDeviceHandle"}) {
        service().forget();
        service().answer(operation, {.addsError = true});
        KvHIMDeviceHandle device = nullptr;
        EXPECT_EQ(access().findDevice(errors(), device), 0) << operation;
        EXPECT_EQ(KvHIM_deleteDeviceHandle(errors(), device), 0);
    }
}

TEST_F(DeviceLookupCallsTest, TheCheckGivesTheHandleBackAtOnce) {
    EXPECT_TRUE(access().checkTargetAccessible());
    EXPECT_EQ(service().calls().back(), "deleteDeviceHandle(device1)");
    EXPECT_THAT(service().errorLists(), testing::Each(&errors()));
    EXPECT_EQ(messages(), L"");
}

TEST_F(DeviceLookupCallsTest, TheCheckDoesNotMindAHandleThatCannotBeGivenBack) {
    service().answer("deleteDeviceHandle", {.status = 7, .addsError = true});
    EXPECT_TRUE(access().checkTargetAccessible());
    EXPECT_EQ(errors().getErrorCount(), 1U);
    EXPECT_EQ(messages(), L"");
}

TEST_F(DeviceLookupCallsTest, TheCheckFailsWithoutAHandle) {
    service().answer("createDeviceHandle", {.leavesHandle = true});
    EXPECT_FALSE(access().checkTargetAccessible());
    EXPECT_EQ(messages(), L"ERROR: Device with IP address 10.0.0.7 not found (error code: 0)!\n");
}

TEST_F(DeviceLookupCallsTest, ARebootResetsTheDeviceAndGivesTheHandleBack) {
    EXPECT_TRUE(access().rebootDevice());
    const std::vector<std::string>& calls = service().calls();
    ASSERT_EQ(calls.size(), 11U);
    EXPECT_EQ(calls[9], "FORCE_resetDevice(device1, 0)");
    EXPECT_EQ(calls[10], "deleteDeviceHandle(device1)");
    EXPECT_THAT(service().errorLists(), testing::Each(&errors()));
    EXPECT_EQ(messages(), L"");
}

TEST_F(DeviceLookupCallsTest, ARebootIsJudgedByTheStatusOfTheReset) {
    service().answer("FORCE_resetDevice", {.addsError = true});
    EXPECT_TRUE(access().rebootDevice());
    EXPECT_EQ(errors().getErrorCount(), 1U);
    EXPECT_EQ(messages(), L"");
}

TEST_F(DeviceLookupCallsTest, ARebootWithoutAHandleIsNotTried) {
    service().answer("createDeviceHandle", {.leavesHandle = true});
    EXPECT_FALSE(access().rebootDevice());
    EXPECT_EQ(service().operations().back(), "createDeviceHandle");
    EXPECT_EQ(messages(), L"ERROR: Cannot access device with IP address 10.0.0.7 (error code: 0)!\n");
}

TEST_F(DeviceLookupCallsTest, ARebootSucceedsEvenWhenTheHandleCannotBeGivenBack) {
    service().answer("deleteDeviceHandle", {.status = 7, .addsError = true});
    EXPECT_TRUE(access().rebootDevice());
    EXPECT_EQ(messages(), L"");
}
