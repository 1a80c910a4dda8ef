#include "ExampleRack.h"
#include "FailingMemory.h"
#include "KvCErrorManager.h"
#include "KvEmulation.h"
#include "SessionTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <limits>
#include <map>
#include <new>
#include <string>

using namespace KvNReflasher;

namespace {

using Exhaustion = FailingMemory::Exhaustion;

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

    /// Prepares and runs a session that updates, and deletes it, while memory fails from allocation number `number` on;
    /// whether it succeeded. Nothing may stay held.
    bool updateWithout(std::size_t number, Exhaustion exhaustion) {
        options.mode = performUpdate;
        stopRecording();
        bool result = false;
        KvEmulation::KvTLedger afterRun;
        {
            const FailingMemory failing(number, exhaustion);
            result = session().prepare() == 0 && session().run();
            afterRun = KvEmulation::ledger();
            close();
        }
        EXPECT_EQ(afterRun.locks, 0U);
        EXPECT_EQ(afterRun.remoteFiles, 0U);
        EXPECT_TRUE(KvEmulation::ledger().isClean());
        return result;
    }
    /// The same with all the memory that there is, as a process of its own would do it.
    bool updateUndisturbed() {
        KvCErrorManager::getInstance()->getMasterErrorList().reset();
        return updateWithout(std::numeric_limits<std::size_t>::max(), Exhaustion::once);
    }

    /// What an update of the example rack leaves, and how much the next one transfers.
    struct RackOutcome {
        std::map<std::string, std::string> files;
        std::size_t transfers = 0;

        bool operator==(const RackOutcome&) const = default;
    };
    /// Updates the rack as it is, undisturbed.
    RackOutcome nextUpdate(ExampleRack& rack) {
        rack.serveAgain();
        log.clear();
        EXPECT_TRUE(updateUndisturbed());
        return {rack.files(), log.callsOf("transferFile").size()};
    }
    /// How many allocations of so many to go on by, so that a test tries some 40 unless the environment asks for more.
    static std::size_t strideOver(std::size_t allocations) {
        return std::max<std::size_t>(allocations / numberFromEnvironment("KV_SWEEP_ALLOCATIONS", 40), 1);
    }
    /// Updates fresh racks, in each of which another allocation fails.
    void sweepExampleRack(Exhaustion exhaustion);

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

TEST_F(ExhaustedSessionTest, AnyAllocationMayFail) {
    arrange();
    serve();
    options.forceUpdate = true;
    EXPECT_TRUE(updateUndisturbed());
    const std::size_t allocations = FailingMemory::allocations();
    for (const Exhaustion exhaustion : {Exhaustion::once, Exhaustion::lasting}) {
        const std::size_t stride = exhaustion == Exhaustion::once ? 1 : strideOver(allocations);
        std::size_t number = 1;
        for (bool struck = true; struck && !HasFailure(); number += stride) {
            SCOPED_TRACE(number);
            const bool result = updateWithout(number, exhaustion);
            struck = FailingMemory::hasStruck();
            EXPECT_TRUE(result || struck);
            EXPECT_TRUE(updateUndisturbed());
        }
        EXPECT_GT(number, allocations * 9 / 10);
    }
}

void ExhaustedSessionTest::sweepExampleRack(Exhaustion exhaustion) {
    ExampleRack rack;
    options.archiveFolder = exampleArchive();
    options.verbose = true;
    rack.serveFresh({});
    EXPECT_TRUE(updateUndisturbed());
    const std::size_t allocations = FailingMemory::allocations();
    const RackOutcome complete = nextUpdate(rack);
    const std::size_t stride = strideOver(allocations);
    std::size_t successes = 0;
    std::size_t number = 1;
    for (bool struck = true; struck && number <= allocations && !HasFailure(); number += stride) {
        SCOPED_TRACE(number);
        rack.serveFresh({});
        const bool result = updateWithout(number, exhaustion);
        struck = FailingMemory::hasStruck();
        EXPECT_TRUE(result || struck);
        const RackOutcome next = nextUpdate(rack);
        EXPECT_EQ(next.files, complete.files);
        // Whoever says that all is done has done it.
        EXPECT_TRUE(!result || next == complete);
        successes += result && struck ? 1 : 0;
    }
    EXPECT_GT(number, allocations * 9 / 10);
    std::cout << allocations << " allocations, one in " << stride << " of them failed; " << successes
              << " sessions succeeded all the same\n";
}

TEST_F(ExhaustedSessionTest, AllocationsOfAnUpdateOfTheExampleRackMayFail) {
    sweepExampleRack(Exhaustion::once);
}

TEST_F(ExhaustedSessionTest, MemoryMayStayExhaustedInAnUpdateOfTheExampleRack) {
    sweepExampleRack(Exhaustion::lasting);
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
