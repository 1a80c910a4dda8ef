#include "SessionTest.h"

#include "KvEmulation.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <new>

using namespace KvNReflasher;

namespace {

/// Lets memory be exhausted at one message or notification after the other: the text of a message is an allocation of
/// its own.
class ExhaustedSessionTest : public SessionTest {
protected:
    void arrange() {
        node = completeBoard("HCN", "QB4120", 0)
                   .element(completeElement(1, "UserFirmware").parameter("VERSION", "23.2.1").polls(1))
                   .element(completeElement(2, "Unsupported"));
        archive.add(entry("a.bin").board("QB4120", 1).version("24.0"));
        archive.add(entry("b.cfg").target("QB4120", "b.cfg"));
        options.verbose = true;
        options.noProgress = true;
        options.configurationElements = false;
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

private:
    std::size_t count_ = 0;
    bool hasStruck_ = false;
};

} // namespace

TEST_F(ExhaustedSessionTest, PrepareFails) {
    arrange();
    archive.add(entry("c.bin").board("QB4120", 2));
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        failAt(number);
        EXPECT_EQ(prepare(performUpdate), hasStruck() ? 1U : 0U) << number;
        struck = hasStruck();
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
        EXPECT_EQ(prepare(showUpdatePlan), 0U);
        close();
        EXPECT_EQ(prepare(performUpdate), 0U);
        log.clear();
        failAt(number);
        EXPECT_EQ(run(), !hasStruck()) << number;
        struck = hasStruck();
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
