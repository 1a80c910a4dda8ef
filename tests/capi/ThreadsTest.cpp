// Sessions of the interface in C in several threads.

#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "EnvironmentVariable.h"
#include "KvEmulation.h"
#include "SessionInCTest.h"
#include "TargetBuilder.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

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

    /// A whole session; the results of its steps.
    [[nodiscard]] std::vector<std::int32_t> update(std::size_t target) const {
        auto options = sized<kvr_session_options>();
        options.mode = KVR_MODE_UPDATE;
        options.flags = KVR_FORCE;
        options.archive = folder_.c_str();
        options.target = addresses[target];
        kvr_session* session = nullptr;
        std::vector<std::int32_t> results{kvr_session_create(&options, &session), kvr_prepare(session),
                                          kvr_run(session)};
        auto result = sized<kvr_element_result>();
        EXPECT_EQ(kvr_session_get_result(session, 0, &result), KVR_SUCCESS);
        EXPECT_EQ(result.result, static_cast<std::uint32_t>(KVR_RESULT_UPDATED));
        results.push_back(kvr_session_free(session));
        return results;
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
                EXPECT_THAT(update(target), testing::Each(KVR_SUCCESS));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(KvEmulation::ledger().isClean());
}

} // namespace
