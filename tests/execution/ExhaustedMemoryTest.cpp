#include "UpdateTest.h"

#include "KvEmulation.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <new>

namespace {

/// Runs the same update again and again and lets memory be exhausted at its first, second, third ... notification or
/// message: the text of a message is an allocation of its own.
class ExhaustedMemoryTest : public UpdateTest {
protected:
    void arrange() {
        addNodeElement(1, completeElement(1, "One").polls(1), 1);
        addNodeElement(2, completeElement(2, "Two").polls(1), 1);
        addNodeElement(3, completeElement(3, "Three").polls(1), 2);
        addFile("a.cfg", "a.cfg", 2);
        options.noProgress = true;
        prepare();
    }

    /// False when the run had ended before event number `number`, from 1.
    bool runAndFailAt(std::size_t number) {
        std::size_t count = 0;
        bool failed = false;
        log.setObserver([&](const std::string&) {
            if (++count == number) {
                failed = true;
                throw std::bad_alloc();
            }
        });
        try {
            (void)run();
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(failed);
        }
        log.setObserver({});
        return failed;
    }
};

} // namespace

TEST_F(ExhaustedMemoryTest, LeavesNeitherLockNorFilesWhereverItStrikes) {
    arrange();
    std::size_t number = 1;
    for (; runAndFailAt(number); ++number) {
        SCOPED_TRACE(testing::Message() << "at event " << number);
        EXPECT_EQ(log.callsOf("unlock"), std::vector<std::string>{"unlock"});
        EXPECT_THAT(log.callsOf("updateFinish"),
                    testing::ElementsAre("updateFinish HCN[1]/CN[1]", "updateFinish HCN[1]"));
        EXPECT_EQ(log.callsOf("deleteRemoteFile").size(), log.callsOf("transferFile").size());
        EXPECT_EQ(textsOf(errors()), std::vector<std::string>());
        const KvEmulation::KvTLedger held = KvEmulation::ledger();
        EXPECT_EQ(held.locks, 0U);
        EXPECT_EQ(held.remoteFiles, 0U);
        EXPECT_EQ(held.transferClients, 0U);
        EXPECT_EQ(held.countLocks, 0U);
        log.clear();
    }
    // The last run met no failure and was whole.
    EXPECT_EQ(log.events({SessionLog::Kind::notification, SessionLog::Kind::message}).size(), number - 1);
    EXPECT_EQ(log.messages().back(), L"\n    Update completed successfully!\n");
}

TEST_F(ExhaustedMemoryTest, DoesNotRepeatAFailedUnlock) {
    addFault(fault("unlock").occurrence(0));
    prepare();
    options.verbose = true;
    log.setObserver([](const std::string& event) {
        if (event == said("ERROR: Cannot unlock target system!\n")) {
            throw std::bad_alloc();
        }
    });
    EXPECT_THROW((void)run(), std::bad_alloc);
    EXPECT_EQ(log.callsOf("unlock"), std::vector<std::string>{"unlock -> status 1, errors 1"});
}

TEST_F(ExhaustedMemoryTest, IsNoHindranceToTheNextRun) {
    arrange();
    EXPECT_TRUE(runAndFailAt(20));
    EXPECT_TRUE(run());
    EXPECT_EQ(states(), std::vector<std::uint32_t>(4, updateFinished));
}
