#include "KvCReflasher.h"
#include "SessionTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <ostream>

using testing::IsEmpty;
using namespace KvNReflasher;
using Kind = SessionLog::Kind;

namespace {

const std::string wrongSequence = "ERROR: Device cannot be rebooted automatically (wrong command sequence).\n";
const std::string notByFirmware = "WARNING: Device cannot be rebooted automatically (not supported by the firmware "
                                  "version installed on this device).\n";
const std::string notByDevice = "WARNING: Device cannot be rebooted automatically (not supported by this device).\n";
const std::string checkFailed = "ERROR: Device cannot be rebooted automatically (an error occurred while checking the "
                                "reboot support status).\n";

const std::vector<std::string> deviceLookup = {
    "KvHIM_createFilter",         "KvHIM_setFilterParameter 8", "KvHIM_setFilterParameter 9",
    "KvHIM_setFilterParameter 6", "KvHIM_applyFilter",          "KvHIM_getDeviceList -> status 21, errors 1",
    "KvHIM_getDeviceList",        "KvHIM_deleteFilter",         "KvHIM_createDeviceHandle"};

/// An HCN that can be rebooted from version 23.2a12 of its firmware on.
ItemBuilder rebootableNode(const std::string& firmwareVersion) {
    return completeBoard("HCN", "QB4120", 0)
        .element(completeElement(1, "UserFirmware").parameter("VERSION", firmwareVersion));
}

class RebootTest : public SessionTest {
protected:
    void connect(const ItemBuilder& processorBoard) {
        node = processorBoard;
        EXPECT_EQ(prepare(connectOnly), 0U);
        log.clear();
    }
    std::vector<std::string> calls() { return log.events({Kind::call}); }
    /// The calls of an attempt to reboot.
    static std::vector<std::string> attempt(const std::string& reset) {
        std::vector<std::string> calls = deviceLookup;
        calls.insert(calls.end(), {reset, "KvHIM_deleteDeviceHandle"});
        return calls;
    }
};

/// A session that tells its reboot support status in its own way.
class OverridingSession : public KvCReflasher {
public:
    OverridingSession(const KvTOptions& options, bool isSupported) : KvCReflasher(options), isSupported_(isSupported) {}
    bool getRebootSupportStatus(std::uint32_t& /*status*/) override { return isSupported_; }

private:
    bool isSupported_;
};

struct StatusCase {
    const char* name;
    ItemBuilder processorBoard;
    std::uint32_t status;
    std::string message;

    friend void PrintTo(const StatusCase& row, std::ostream* stream) { *stream << row.name; }
};

class RebootStatusTest : public RebootTest, public testing::WithParamInterface<StatusCase> {};

} // namespace

TEST_P(RebootStatusTest, IsToldWithItsMessage) {
    connect(GetParam().processorBoard);
    for (int time = 0; time < 2; ++time) {
        std::uint32_t status = 99;
        EXPECT_EQ(session().getRebootSupportStatus(status), GetParam().status == 0);
        EXPECT_EQ(status, GetParam().status);
        EXPECT_EQ(log.text(), GetParam().message);
        log.clear();
    }
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_P(RebootStatusTest, OnlyZeroLetsTheRebootReachTheDevice) {
    connect(GetParam().processorBoard);
    const bool supported = GetParam().status == 0;
    EXPECT_EQ(session().reboot(), supported);
    EXPECT_EQ(log.text(), GetParam().message);
    EXPECT_EQ(calls(), supported ? attempt("KvHIM_FORCE_resetDevice") : std::vector<std::string>());
}

INSTANTIATE_TEST_SUITE_P(
    Boards, RebootStatusTest,
    testing::Values(StatusCase{"Supported", rebootableNode("23.2a12"), 0, ""},
                    StatusCase{"NoFirmwareElement", completeBoard("HCN", "QB4120", 0).element(completeElement(1)), 1,
                               wrongSequence},
                    StatusCase{"FirmwareTooOld", rebootableNode("23.2a11"), 2, notByFirmware},
                    StatusCase{"OtherBoard",
                               completeBoard("HCN", "NODE", 0).element(completeElement(1, "UserFirmware")), 3,
                               notByDevice},
                    StatusCase{"NoElements", completeBoard("HCN", "QB4120", 0), 4, checkFailed}),
    [](const auto& row) { return row.param.name; });

TEST_F(RebootTest, BeforeAnyScanTheStatusTellsTheWrongSequence) {
    std::uint32_t status = 99;
    EXPECT_FALSE(session().getRebootSupportStatus(status));
    EXPECT_EQ(status, 1U);
    EXPECT_EQ(log.text(), wrongSequence);
}

TEST_F(RebootTest, BeforeAnyScanARebootDoesNotTouchTheDevice) {
    serve();
    EXPECT_FALSE(session().reboot());
    EXPECT_EQ(log.text(), wrongSequence);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(RebootTest, AfterAModeWithoutAScanTheStatusTellsTheWrongSequenceToo) {
    EXPECT_TRUE(perform(showArchiveVersion));
    log.clear();
    EXPECT_FALSE(session().reboot());
    EXPECT_EQ(log.text(), wrongSequence);
}

TEST_F(RebootTest, AfterAnUpdateTheDeviceCanBeReset) {
    node = rebootableNode("23.2a12");
    archive.add(entry("a.bin").board("QB4120", 1).version("23.2.1"));
    EXPECT_TRUE(perform(performUpdate));
    log.clear();
    EXPECT_TRUE(session().reboot());
    EXPECT_EQ(calls(), attempt("KvHIM_FORCE_resetDevice"));
}

TEST_F(RebootTest, AFailedResetShowsTheStatusOfTheLookup) {
    addFault(fault("KvHIM_FORCE_resetDevice").status(17));
    connect(rebootableNode("23.2a12"));
    EXPECT_FALSE(session().reboot());
    EXPECT_EQ(log.text(), "ERROR: Cannot reboot device with IP address 127.0.0.1 (error code: 0)!\n"
                          "ERROR: Device cannot be rebooted. Command failed.\n" +
                              faultReport("KvHIM_FORCE_resetDevice"));
    EXPECT_EQ(calls(), attempt("KvHIM_FORCE_resetDevice -> status 17, errors 1"));
}

TEST_F(RebootTest, AResetIsJudgedByItsStatus) {
    addFault(fault("KvHIM_FORCE_resetDevice").status(0));
    connect(rebootableNode("23.2a12"));
    EXPECT_TRUE(session().reboot());
    EXPECT_EQ(log.text(), "");
}

TEST_F(RebootTest, ADeviceThatIsGoneIsToldWithTheStatusOfTheLookup) {
    addFault(fault("KvHIM_applyFilter").occurrence(2).status(9));
    connect(rebootableNode("23.2a12"));
    EXPECT_FALSE(session().reboot());
    EXPECT_EQ(log.text(), "ERROR: Cannot access device with IP address 127.0.0.1 (error code: 9)!\n"
                          "ERROR: Device cannot be rebooted. Command failed.\n" +
                              faultReport("KvHIM_applyFilter"));
    EXPECT_THAT(log.callsOf("KvHIM_FORCE_resetDevice"), IsEmpty());
}

TEST_F(RebootTest, ADeviceThatIsBootingIsNotFound) {
    target.rebootLookups(1);
    connect(rebootableNode("23.2a12"));
    EXPECT_TRUE(session().reboot());
    EXPECT_FALSE(session().reboot());
    EXPECT_EQ(log.text(), "ERROR: Cannot access device with IP address 127.0.0.1 (error code: -1)!\n"
                          "ERROR: Device cannot be rebooted. Command failed.\n");
}

TEST_F(RebootTest, ADeviceHandleThatCannotBeReleasedDoesNotMatter) {
    addFault(fault("KvHIM_deleteDeviceHandle").occurrence(2));
    connect(rebootableNode("23.2a12"));
    EXPECT_TRUE(session().reboot());
    EXPECT_EQ(log.text(), "");
}

// A derived session.

class OverriddenRebootTest : public RebootTest {
protected:
    /// The result of a reboot after connecting, of which alone the record is kept.
    bool rebootOf(const ItemBuilder& processorBoard, bool isSupported) {
        node = processorBoard;
        serve();
        options.mode = connectOnly;
        OverridingSession overriding(options, isSupported);
        overriding.setMessageCallback(SessionLog::onMessage);
        EXPECT_EQ(overriding.prepare(), 0U);
        log.clear();
        const bool result = overriding.reboot();
        told = log.text();
        made = calls();
        return result;
    }

    std::string told;
    std::vector<std::string> made;
};

TEST_F(OverriddenRebootTest, AStatusThatADerivedSessionDeniesKeepsTheRebootFromTheDevice) {
    EXPECT_FALSE(rebootOf(rebootableNode("23.2a12"), false));
    EXPECT_EQ(told, "");
    EXPECT_THAT(made, IsEmpty());
}

TEST_F(OverriddenRebootTest, AStatusThatADerivedSessionGrantsLetsTheRebootReachTheDevice) {
    EXPECT_TRUE(rebootOf(completeBoard("HCN", "NODE", 0).element(completeElement(1)), true));
    EXPECT_EQ(told, "");
    EXPECT_EQ(made, attempt("KvHIM_FORCE_resetDevice"));
}
