#include "KvCErrorManager.h"
#include "KvEmulation.h"
#include "ObservedSessionTest.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace KvNReflasher;

namespace {

class LookTest : public ObservedSessionTest {
protected:
    /// What is held of the service, without the error lists of elements.
    static std::uint32_t handlesHeld() {
        const KvEmulation::KvTLedger held = KvEmulation::ledger();
        return held.filters + held.deviceHandles + held.transferClients + held.rootHandles + held.inventoryTrees +
               held.locks + held.remoteFiles;
    }
    static std::uint32_t masterErrors() { return KvCErrorManager::getInstance()->getMasterErrorList().getErrorCount(); }
};

} // namespace

TEST_F(LookTest, FindsWhatAnUpdateHasChanged) {
    addNodeElement(1, completeElement(1).polls(1));
    node.element(completeElementWithoutChecksum(2));
    archive.add(entry("b.bin").board("NODE", 2).version("1.0"));
    writeImage("node1.bin");
    addFile("a.cfg", "cfg/a.cfg");
    EXPECT_TRUE(perform(performUpdate));
    const KvTLook look = observed().look();
    EXPECT_TRUE(look.succeeded);
    EXPECT_EQ("", look.message);
    EXPECT_THAT(look.errors, IsEmpty());
    ASSERT_EQ(3U, look.elements.size());
    ASSERT_TRUE(look.elements[0].has_value());
    EXPECT_EQ("2.0", look.elements[0]->version->text);
    EXPECT_EQ(2U, look.elements[0]->checksumCrc32);
    EXPECT_EQ(true, look.elements[0]->valid);
    EXPECT_EQ(true, look.elements[0]->active);
    EXPECT_EQ("1.0", plan().elements[0].installed.version->text);
    EXPECT_EQ(plan().elements[1].installed, look.elements[1]);
    EXPECT_EQ(std::nullopt, look.elements[1]->checksumCrc32);
    EXPECT_EQ(std::nullopt, look.elements[2]);
}

TEST_F(LookTest, SeesAnElementThatIsActiveAfterARebootOnly) {
    addNodeElement(1, completeElement(1).polls(1).activatedAtReboot());
    writeImage("node1.bin");
    EXPECT_TRUE(perform(performUpdate));
    const KvTVerification verification = verifyUpdate(plan(), outcome(), observed().look(), false);
    EXPECT_EQ(1U, verification.elements.size());
    EXPECT_EQ(0U, verification.count(KvEVerified::asExpected));
    EXPECT_EQ(KvEFailure::verification, verdictOf(verification).failure);
}

TEST_F(LookTest, VerifiesASuccessfulUpdate) {
    addNodeElement(1, completeElement(1).polls(1));
    writeImage("node1.bin");
    addFile("a.cfg", "cfg/a.cfg");
    EXPECT_TRUE(perform(performUpdate));
    const KvTVerification verification = verifyUpdate(plan(), outcome(), observed().look(), false);
    EXPECT_EQ(1U, verification.count(KvEVerified::asExpected));
    EXPECT_EQ(1U, verification.count(KvEVerified::notListed));
    EXPECT_TRUE(verdictOf(verification).isSuccess());
}

TEST_F(LookTest, LooksAtTheTargetOnceAndSaysNothing) {
    addNodeElement(1, completeElement(1).polls(1));
    boards.push_back(board("IOMODULE", "", 0).element(updateElement(1))); // printed as a warning by a scan
    options.verbose = true;
    static_cast<void>(prepare(performUpdate));
    static_cast<void>(run());
    log.clear();
    EXPECT_TRUE(observed().look().succeeded);
    EXPECT_EQ("", log.text());
    EXPECT_EQ(1U, log.callsOf("scan").size());
    EXPECT_EQ(1U, log.callsOf("deleteRootHandle").size());
}

struct LookFaultRow {
    const char* name;
    FaultBuilder fault;
    bool succeeded;
    const char* message;

    friend void PrintTo(const LookFaultRow& row, std::ostream* stream) { *stream << row.name; }
};

class LookFaultTest : public LookTest, public testing::WithParamInterface<LookFaultRow> {};

TEST_P(LookFaultTest, StaysWithTheLook) {
    addNodeElement(1, completeElement(1).polls(1));
    writeImage("node1.bin");
    addFault(GetParam().fault);
    EXPECT_TRUE(perform(performUpdate));
    const std::uint32_t handles = handlesHeld();
    const std::uint32_t lists = KvEmulation::ledger().errorLists;
    const KvTLook look = observed().look();
    EXPECT_EQ(GetParam().succeeded, look.succeeded);
    EXPECT_EQ(GetParam().message, look.message);
    EXPECT_FALSE(look.errors.empty());
    EXPECT_EQ(GetParam().succeeded, !look.elements.empty());
    EXPECT_EQ(0U, masterErrors());
    EXPECT_EQ(handles, handlesHeld());
    EXPECT_EQ(lists, KvEmulation::ledger().errorLists);
    EXPECT_EQ(KvEFailure::none, outcome().verdict.failure);
    EXPECT_THAT(errorTexts(), IsEmpty());
    const KvTVerdict verdict = verdictOf(verifyUpdate(plan(), outcome(), look, false));
    EXPECT_EQ(GetParam().succeeded ? KvEFailure::errors : KvEFailure::verification, verdict.failure);
    // The next one meets no fault.
    EXPECT_TRUE(observed().look().succeeded);
    EXPECT_THAT(observed().look().errors, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Calls, LookFaultTest,
                         testing::Values(LookFaultRow{"Lookup", fault("KvHIM_applyFilter").occurrence(2), false,
                                                      "the target '127.0.0.1' is not accessible"},
                                         LookFaultRow{"DeviceHandle", fault("KvHIM_createDeviceHandle").occurrence(2),
                                                      false, "the target '127.0.0.1' is not accessible"},
                                         LookFaultRow{"Opening", fault("createRootHandleByIpAddressList").occurrence(2),
                                                      false, "the inventory of the target '127.0.0.1' cannot be read"},
                                         LookFaultRow{"Scan", fault("scan").occurrence(2), false,
                                                      "the inventory of the target '127.0.0.1' cannot be read"},
                                         LookFaultRow{"ReleasedDevice", fault("KvHIM_deleteDeviceHandle").occurrence(2),
                                                      true, ""},
                                         LookFaultRow{"ReleasedRoot", fault("deleteRootHandle"), true, ""}),
                         [](const auto& row) { return row.param.name; });

struct LookFilterRow {
    const char* name;
    std::string KvTOptions::*filter;
    const char* text;

    friend void PrintTo(const LookFilterRow& row, std::ostream* stream) { *stream << row.name; }
};

class LookFilterTest : public LookTest, public testing::WithParamInterface<LookFilterRow> {};

TEST_P(LookFilterTest, DoesNotHideTheElementsOfThePlan) {
    node = completeBoard("HCN", "NODE", 7);
    addNodeElement(1, completeElement(1, "One").polls(1));
    addBoard(1, completeElement(1, "Two").polls(1));
    writeImage("node1.bin");
    options.*GetParam().filter = GetParam().text;
    EXPECT_TRUE(perform(performUpdate));
    ASSERT_EQ(1U, plan().elements.size());
    const KvTLook look = observed().look();
    EXPECT_TRUE(look.succeeded);
    EXPECT_THAT(look.errors, IsEmpty());
    ASSERT_EQ(1U, look.elements.size());
    ASSERT_TRUE(look.elements[0].has_value());
    EXPECT_EQ("2.0", look.elements[0]->version->text);
}

INSTANTIATE_TEST_SUITE_P(Filters, LookFilterTest,
                         testing::Values(LookFilterRow{"BoardType", &KvTOptions::boardTypeFilter, "NODE"},
                                         LookFilterRow{"SerialNumber", &KvTOptions::serialNumberFilter, "7"},
                                         LookFilterRow{"ElementName", &KvTOptions::elementNameFilter, "One"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(LookTest, ConfigurationElementsAreLookedForAmongTheirOwn) {
    addNodeElement(1, completeElement(1, "Settings").parameter("CONFIGURATION", std::uint64_t(1)).polls(1));
    writeImage("node1.bin");
    node.element(completeElement(2, "Other"));
    options.configurationElements = true;
    EXPECT_TRUE(perform(performUpdate));
    EXPECT_TRUE(plan().configurationElements);
    const KvTLook look = observed().look();
    ASSERT_EQ(1U, look.elements.size());
    ASSERT_TRUE(look.elements[0].has_value());
    EXPECT_EQ("2.0", look.elements[0]->version->text);
}

TEST_F(LookTest, WithoutAPlanThereIsNothingToLookAt) {
    KvTLook look = observedFor(performUpdate).look();
    EXPECT_FALSE(look.succeeded);
    EXPECT_EQ("no target was found", look.message);
    addFault(fault("scan"));
    EXPECT_EQ(1U, prepare(performUpdate));
    log.clear();
    look = observed().look();
    EXPECT_FALSE(look.succeeded);
    EXPECT_THAT(log.events(), IsEmpty());
}
