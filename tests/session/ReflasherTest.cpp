#include "FailingMemory.h"
#include "KvCErrorManager.h"
#include "KvCReflasher.h"
#include "KvEmulation.h"
#include "SessionTest.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <new>
#include <string_view>

using testing::ElementsAre;
using testing::IsEmpty;
using namespace KvNReflasher;
using Kind = SessionLog::Kind;

namespace {

/// Options with texts that need memory of their own.
KvTOptions longOptions() {
    constexpr std::size_t size = 100;
    KvTOptions options{};
    options.archiveFolder.assign(size, L'a');
    options.descriptionFileName.assign(size, L'b');
    options.target.assign(size, L'c');
    options.boardTypeFilter.assign(size, 'd');
    options.serialNumberFilter.assign(size, 'e');
    options.elementNameFilter.assign(size, 'f');
    return options;
}

class ReflasherTest : public SessionTest {
protected:
    std::vector<std::string> calls() { return log.events({Kind::call}); }
};

} // namespace

// Creation.

TEST_F(ReflasherTest, AnAllocatorThatYieldsNullMakesNoObject) {
    options = longOptions();
    const std::ptrdiff_t before = FailingMemory::blocksInUse();
    EXPECT_EQ(KvCReflasher::create(options, [](std::size_t) -> void* { return nullptr; }), nullptr);
    EXPECT_EQ(FailingMemory::blocksInUse(), before);
}

TEST_F(ReflasherTest, TheAllocatorIsAskedForOneBlockOfTheObjectsSize) {
    static std::size_t asked = 0;
    asked = 0;
    const std::unique_ptr<KvIReflasher> made(KvCReflasher::create(longOptions(), [](std::size_t size) {
        asked += size;
        return ::operator new(size);
    }));
    EXPECT_NE(made, nullptr);
    EXPECT_EQ(asked, sizeof(KvCReflasher));
}

TEST_F(ReflasherTest, AnExceptionOfTheAllocatorLeavesTheFactory) {
    options = longOptions();
    const std::ptrdiff_t before = FailingMemory::blocksInUse();
    const auto throwing = [](std::size_t) -> void* { throw std::bad_alloc(); };
    EXPECT_THROW(static_cast<void>(KvCReflasher::create(options, throwing)), std::bad_alloc);
    EXPECT_EQ(FailingMemory::blocksInUse(), before);
}

TEST_F(ReflasherTest, AnExceptionOfTheConstructorLeavesTheFactoryAndNothingBehind) {
    options = longOptions();
    const std::ptrdiff_t before = FailingMemory::blocksInUse();
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        const FailingMemory failing(number);
        std::unique_ptr<KvIReflasher> made;
        try {
            made.reset(KvCReflasher::create(options, ::operator new));
            EXPECT_FALSE(FailingMemory::hasStruck()) << number;
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(FailingMemory::blocksInUse(), before) << number;
        }
        struck = FailingMemory::hasStruck();
    }
    EXPECT_EQ(FailingMemory::blocksInUse(), before);
    EXPECT_GT(number, 1U + 6U); // the block and six texts
}

TEST_F(ReflasherTest, ExhaustedMemoryLeavesCreateInstanceAsAnException) {
    options = longOptions();
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        const std::ptrdiff_t before = FailingMemory::blocksInUse();
        {
            const FailingMemory failing(number);
            std::unique_ptr<KvIReflasher> made;
            try {
                made.reset(KvIReflasher::createInstance(options));
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(FailingMemory::hasStruck());
            }
            struck = FailingMemory::hasStruck();
            EXPECT_EQ(made == nullptr, struck);
        }
        EXPECT_EQ(FailingMemory::blocksInUse(), before) << number;
    }
}

TEST_F(ReflasherTest, ChangingTheCallersOptionsAfterwardsHasNoEffect) {
    options.mode = connectOnly;
    static_cast<void>(session());
    serve();
    options.mode = showArchiveContent;
    options.target = L"nonsense";
    options.archiveFolder.clear();
    EXPECT_EQ(session().prepare(), 0U);
    EXPECT_EQ(log.text(), banner());
    EXPECT_EQ(log.callsOf("scan").size(), 1U);
}

TEST_F(ReflasherTest, EveryOptionIsCopied) {
    const auto configuration = [](std::uint32_t id, std::string_view name) {
        return completeElement(id, name).parameter("CONFIGURATION", std::uint64_t(1)).polls(1);
    };
    node = completeBoard("HCN", "NODE", 7)
               .element(configuration(1, "One"))
               .element(configuration(2, "One").parameter("CUSTOM", std::uint64_t(1)))
               .element(configuration(3, "Two"))
               .element(completeElement(4, "One"));
    boards = {completeBoard("IOMODULE", "NODE", 8).element(configuration(1, "One")),
              completeBoard("IOMODULE", "IO", 7).element(configuration(1, "One"))};
    archive.add(entry("a.bin").board("NODE", 1).version("1.0").checksum(1)).add(entry("b.bin").board("NODE", 2));
    options.boardTypeFilter = "NODE";
    options.serialNumberFilter = "7";
    options.elementNameFilter = "One";
    options.forceUpdate = true;
    options.noProgress = true;
    options.verbose = true;
    options.configurationElements = true;
    options.disableCustomElements = true;
    options.reserved = true;
    options.mode = performUpdate;
    serve();
    static_cast<void>(session());
    options = KvTOptions{};
    EXPECT_EQ(session().prepare(), 0U);
    const auto elements = updateElements();
    ASSERT_EQ(elements.size(), 2U);
    EXPECT_EQ(elements[0].displayName, L"NODE, SN 7, One");
    EXPECT_FALSE(elements[0].disabled);
    EXPECT_TRUE(elements[1].disabled);
    EXPECT_TRUE(run());
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 1"));
    EXPECT_THAT(log.text(), testing::HasSubstr("Reboot support status: "));
    EXPECT_THAT(log.text(), testing::Not(testing::HasSubstr("%")));
}

// Callbacks.

TEST_F(ReflasherTest, ANotificationThatIsSwitchedOffIsNotCalled) {
    addNodeElement(1, completeElement(1).polls(1).finalState(3));
    EXPECT_EQ(prepare(performUpdate), 0U);
    session().setPhaseCallback(nullptr);
    session().setElementErrorCallback(nullptr);
    session().setProgressCallback(nullptr);
    EXPECT_FALSE(run());
    EXPECT_THAT(log.events({Kind::notification}), IsEmpty());
}

TEST_F(ReflasherTest, EachNotificationGoesToItsOwnFunction) {
    addNodeElement(1, completeElement(1).polls(1).finalState(3));
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_THAT(log.events({Kind::notification}),
                ElementsAre("phase 0", "elementError 0", "progress 100", "progress 100", "phase 4294967295"));
}

TEST_F(ReflasherTest, NotificationsComeFromRunOnly) {
    addNodeElement(1, completeElement(1));
    EXPECT_EQ(prepare(performUpdate), 0U);
    EXPECT_THAT(log.events({Kind::notification}), IsEmpty());
}

TEST_F(ReflasherTest, TheMessageCallbackReceivesEveryMessageInsteadOfStandardOutput) {
    addNodeElement(1, completeElement(1).polls(1));
    testing::internal::CaptureStdout();
    EXPECT_TRUE(perform(performUpdate));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(log.text(), testing::EndsWith("Update completed successfully!\n"));
}

// Release.

TEST_F(ReflasherTest, ASessionThatNeverConnectedReleasesNothing) {
    static_cast<void>(session());
    close();
    options.target.clear();
    EXPECT_EQ(prepare(performUpdate), 1U);
    close();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(ReflasherTest, ASessionThatFailedBeforeItsRootHandleReleasesNone) {
    addFault(fault("createRootHandleByIpAddressList"));
    EXPECT_EQ(prepare(connectOnly), 1U);
    log.clear();
    close();
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(ReflasherTest, TheDeviceHandleIsReleasedBeforeTheRootHandle) {
    addNodeElement(1, completeElement(1));
    addFile("a.cfg", "a.cfg");
    EXPECT_TRUE(perform(performUpdate));
    log.clear();
    close();
    EXPECT_THAT(calls(), ElementsAre("KvHIM_deleteDeviceHandle", "deleteRootHandle"));
}

TEST_F(ReflasherTest, WithoutAWrittenFileOnlyTheRootHandleIsReleased) {
    addNodeElement(1, completeElement(1));
    EXPECT_TRUE(perform(performUpdate));
    EXPECT_EQ(KvEmulation::ledger().errorLists, 2U);
    log.clear();
    close();
    EXPECT_THAT(calls(), ElementsAre("deleteRootHandle"));
    EXPECT_EQ(KvEmulation::ledger().errorLists, 0U);
}

TEST_F(ReflasherTest, ErrorsOfReleasingTheDeviceHandleDoNotReachTheMasterList) {
    addNodeElement(1, completeElement(1));
    addFile("a.cfg", "a.cfg");
    addFault(fault("KvHIM_deleteDeviceHandle").occurrence(2)); // the first one is that of the lookup
    addFault(fault("deleteRootHandle"));
    EXPECT_TRUE(perform(performUpdate));
    log.clear();
    close();
    EXPECT_THAT(calls(), ElementsAre("KvHIM_deleteDeviceHandle -> status 1, errors 1",
                                     "deleteRootHandle -> status 1, errors 1"));
    const KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    ASSERT_EQ(errors.getErrorCount(), 1U);
    EXPECT_STREQ(errors.getErrorText(0), "Fault at deleteRootHandle.");
}

TEST_F(ReflasherTest, ReleasePrintsNothing) {
    addNodeElement(1, completeElement(1));
    EXPECT_TRUE(perform(performUpdate));
    log.clear();
    close();
    EXPECT_EQ(log.text(), "");
}

TEST_F(ReflasherTest, TheReservedQueryIsZeroInEveryState) {
    addNodeElement(1, completeElement(1));
    EXPECT_EQ(session().reservedQuery(), 0U);
    EXPECT_EQ(prepare(performUpdate), 0U);
    EXPECT_EQ(session().reservedQuery(), 0U);
    EXPECT_TRUE(run());
    log.clear();
    EXPECT_EQ(session().reservedQuery(), 0U);
    EXPECT_THAT(log.events(), IsEmpty());
}

TEST_F(ReflasherTest, OneSessionAfterTheOtherWorksOnOneTarget) {
    addNodeElement(1, completeElement(1));
    EXPECT_TRUE(perform(performUpdate));
    close();
    EXPECT_TRUE(perform(showTargetElements));
    EXPECT_THAT(log.text(), testing::EndsWith("NODE, Firmware | 1.0    \n"));
}
