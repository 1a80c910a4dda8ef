// Sessions of the interface in C in several threads.

#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "EnvironmentVariable.h"
#include "KvEmulation.h"
#include "SessionInCTest.h"
#include "TargetBuilder.h"
#include "UpdateFiles.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>

namespace {

constexpr int rounds = 20;

/// Two targets, and an archive for both.
class TwoTargets : public testing::Test {
protected:
    TwoTargets() {
        archive_.add(entry("node.bin").board("NODE", 1));
        archive_.folder().write("node.bin", firmwareImage(KvCVersion("2.0"), 2));
        archive_.write();
        folder_ = archive_.folder().text();
        for (std::size_t number = 0; number < targets_.size(); ++number) {
            targets_[number].address(addresses[number]);
            ItemBuilder node = completeBoard("HCN", "NODE", 0).element(completeElement(1, "One").polls(1));
            targets_[number].add(node.add(item("CN")));
            targets_[number].serve();
        }
    }
    ~TwoTargets() override { KvEmulation::reset(); }
    TwoTargets(const TwoTargets&) = delete;
    TwoTargets& operator=(const TwoTargets&) = delete;

    /// A whole session, which updates its target. It may take an error of the other session for its own: the access
    /// libraries have one list of errors.
    void update(std::size_t target) const {
        auto options = sized<kvr_session_options>();
        options.mode = KVR_MODE_UPDATE;
        options.flags = KVR_FORCE;
        options.archive = folder_.c_str();
        options.target = addresses[target];
        kvr_session* session = nullptr;
        EXPECT_EQ(kvr_session_create(&options, &session), KVR_SUCCESS);
        EXPECT_EQ(kvr_prepare(session), KVR_SUCCESS);
        const std::int32_t run = kvr_run(session);
        auto outcome = sized<kvr_outcome>();
        EXPECT_EQ(kvr_session_get_outcome(session, &outcome), KVR_SUCCESS);
        EXPECT_EQ(outcome.failure,
                  static_cast<std::uint32_t>(run == KVR_SUCCESS ? KVR_FAILURE_NONE : KVR_FAILURE_ERRORS));
        EXPECT_EQ(outcome.errors > 0, run != KVR_SUCCESS);
        auto result = sized<kvr_element_result>();
        EXPECT_EQ(kvr_session_get_result(session, 0, &result), KVR_SUCCESS);
        EXPECT_EQ(result.result, static_cast<std::uint32_t>(KVR_RESULT_UPDATED));
        EXPECT_EQ(result.errors, 0U);
        EXPECT_EQ(kvr_session_free(session), KVR_SUCCESS);
    }

private:
    static constexpr std::array<const char*, 2> addresses{"127.0.0.1", "127.0.0.2"};

    EnvironmentVariable timeScale_{"KV_TIME_SCALE", "0"};
    std::array<TargetBuilder, addresses.size()> targets_;
    ArchiveFolder archive_;
    std::string folder_;
};

TEST_F(TwoTargets, AreUpdatedAtTheSameTime) {
    std::array<std::thread, 2> threads;
    for (std::size_t target = 0; target < threads.size(); ++target) {
        threads[target] = std::thread([this, target] {
            for (int round = 0; round < rounds; ++round) {
                update(target);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(KvEmulation::ledger().isClean());
}

} // namespace
