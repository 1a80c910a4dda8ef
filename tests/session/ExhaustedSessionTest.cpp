#include "ExampleRack.h"
#include "FailingMemory.h"
#include "KvEmulation.h"
#include "SessionTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <limits>
#include <new>

using namespace KvNReflasher;

namespace {

/// Lets memory be exhausted at one message or notification after the other: the text of a message is an allocation of
/// its own.
class ExhaustedSessionTest : public SessionTest {
protected:
    void arrange() {
        node = completeBoard("HCN", "QB4120", 0)
                   .element(completeElement(1, "UserFirmware").parameter("VERSION", "23.2.1").polls(1));
        boards = {completeBoard("IOMODULE", "IO", 0).element(completeElement(1, "Unsupported"))};
        archive.add(entry("a.bin").board("QB4120", 1).version("24.0"));
        archive.add(entry("b.cfg").target("QB4120", "b.cfg"));
        options.verbose = true;
        options.noProgress = true;
    }

    /// Lets memory be exhausted at event number `number` from now on, from 1.
    void failAt(std::size_t number) {
        count_ = 0;
        hasStruck_ = false;
        log.setObserver([this, number](const std::string&) {
            if (++count_ == number) {
                hasStruck_ = true;
                throw std::bad_alloc();
            }
        });
    }
    [[nodiscard]] bool hasStruck() const { return hasStruck_; }

    /// What the log allocates for notifications and messages shall not count.
    void stopRecording() {
        session().setMessageCallback([](const std::wstring&) {});
        session().setPhaseCallback(nullptr);
        session().setElementErrorCallback(nullptr);
        session().setProgressCallback(nullptr);
    }

    /// An update in which the allocation of this number fails; whether it succeeded.
    bool updateUntil(std::size_t number) {
        options.mode = performUpdate;
        stopRecording();
        bool result = false;
        {
            const FailingMemory failing(number);
            result = session().prepare() == 0 && session().run();
        }
        close();
        return result;
    }
    std::size_t allocationsOfAnUpdate(ExampleRack& rack) {
        rack.serveFresh({});
        EXPECT_TRUE(updateUntil(std::numeric_limits<std::size_t>::max()));
        return FailingMemory::allocations();
    }

private:
    std::size_t count_ = 0;
    bool hasStruck_ = false;
};

} // namespace

TEST_F(ExhaustedSessionTest, PrepareFails) {
    arrange();
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        failAt(number);
        const std::uint32_t status = prepare(performUpdate);
        struck = hasStruck();
        EXPECT_EQ(status, struck ? 1U : 0U) << number;
        close();
        EXPECT_TRUE(KvEmulation::ledger().isClean()) << number;
    }
    EXPECT_GT(number, 4U); // banner, nodes, reboot support, phases
}

TEST_F(ExhaustedSessionTest, RunFailsAndLeavesNothingBehind) {
    arrange();
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        log.setObserver({});
        EXPECT_EQ(prepare(performUpdate), 0U);
        log.clear();
        failAt(number);
        const bool result = run();
        struck = hasStruck();
        EXPECT_EQ(result, !struck) << number;
        EXPECT_EQ(log.callsOf("unlock").size(), log.callsOf("lock").size()) << number;
        EXPECT_EQ(log.callsOf("deleteRemoteFile").size(), log.callsOf("transferFile").size()) << number;
        close();
        EXPECT_TRUE(KvEmulation::ledger().isClean()) << number;
    }
    EXPECT_GT(number, 20U);
}

TEST_F(ExhaustedSessionTest, RunFailsInEveryModeThatPrints) {
    arrange();
    for (const std::uint32_t mode : {0U, 1U, 2U, 3U, 4U, 6U}) {
        log.setObserver({});
        EXPECT_EQ(prepare(mode), 0U) << mode;
        failAt(1);
        EXPECT_FALSE(run()) << mode;
        EXPECT_TRUE(hasStruck()) << mode;
        close();
    }
}

TEST_F(ExhaustedSessionTest, AnyAllocationOfTheLibraryMayFail) {
    arrange();
    serve();
    options.mode = performUpdate;
    std::size_t number = 1;
    std::size_t successes = 0;
    for (bool struck = true; struck; ++number) {
        SCOPED_TRACE(number);
        stopRecording();
        {
            const FailingMemory failing(number);
            const bool result = session().prepare() == 0 && session().run();
            struck = FailingMemory::hasStruck();
            successes += result ? 1 : 0;
        }
        EXPECT_EQ(log.callsOf("unlock").size(), log.callsOf("lock").size());
        EXPECT_EQ(log.callsOf("deleteRemoteFile").size(), log.callsOf("transferFile").size());
        log.clear();
        close();
        EXPECT_TRUE(KvEmulation::ledger().isClean());
    }
    EXPECT_GT(number, 100U);
    // The undisturbed session, and that in which the sorting of the phases goes on without its buffer.
    EXPECT_EQ(successes, 2U);
}

TEST_F(ExhaustedSessionTest, AllocationsOfAnUpdateOfTheExampleRackMayFail) {
    ExampleRack rack;
    options.archiveFolder = exampleArchive();
    options.verbose = true;
    const std::size_t allocations = allocationsOfAnUpdate(rack);
    const std::size_t samples = numberFromEnvironment("KV_SWEEP_ALLOCATIONS", 40);
    const std::size_t stride = std::max<std::size_t>(allocations / samples, 1);
    std::size_t successes = 0;
    for (std::size_t number = 1; number <= allocations && !HasFailure(); number += stride) {
        SCOPED_TRACE(number);
        rack.serveFresh({});
        successes += updateUntil(number) ? 1 : 0;
        EXPECT_TRUE(FailingMemory::hasStruck());
        EXPECT_EQ(log.callsOf("unlock").size(), log.callsOf("lock").size());
        EXPECT_EQ(log.callsOf("deleteRemoteFile").size(), log.callsOf("transferFile").size());
        EXPECT_TRUE(KvEmulation::ledger().isClean());
        rack.serveAgain();
        EXPECT_TRUE(updateUntil(std::numeric_limits<std::size_t>::max()));
        log.clear();
    }
    // The sorting of the phases goes on without its buffer.
    EXPECT_LE(successes, 1U);
    std::cout << allocations << " allocations, one in " << stride << " of them failed\n";
}

TEST_F(ExhaustedSessionTest, TheRebootSupportStatusIsFalse) {
    failAt(1);
    std::uint32_t status = 99;
    EXPECT_FALSE(session().getRebootSupportStatus(status));
    EXPECT_TRUE(hasStruck());
    EXPECT_EQ(status, 1U);
}

TEST_F(ExhaustedSessionTest, ARebootFails) {
    arrange();
    addFault(fault("KvHIM_FORCE_resetDevice").occurrence(0));
    EXPECT_EQ(prepare(connectOnly), 0U);
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        failAt(number);
        EXPECT_FALSE(session().reboot()) << number;
        struck = hasStruck();
        EXPECT_EQ(KvEmulation::ledger().deviceHandles, 0U) << number;
    }
    EXPECT_GT(number, 3U);
}

TEST_F(ExhaustedSessionTest, AnyAllocationOfARebootMayFail) {
    arrange();
    EXPECT_EQ(prepare(connectOnly), 0U);
    const std::uint32_t errorLists = KvEmulation::ledger().errorLists;
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        bool result = false;
        {
            const FailingMemory failing(number);
            result = session().reboot();
            struck = FailingMemory::hasStruck();
        }
        EXPECT_TRUE(result || struck) << number;
        EXPECT_EQ(KvEmulation::ledger().deviceHandles, 0U) << number;
        EXPECT_EQ(KvEmulation::ledger().filters, 0U) << number;
        EXPECT_EQ(KvEmulation::ledger().errorLists, errorLists) << number;
    }
    EXPECT_GT(number, 2U);
}
