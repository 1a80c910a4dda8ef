// Each call of the device access libraries fails once, while a client of the interface in C updates the example rack.

#include "EnvironmentVariable.h"
#include "ExampleRack.h"
#include "KvCErrorManager.h"
#include "KvEmulation.h"
#include "ScratchFolder.h"
#include "kvreflash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace {

/// What a client has seen of a session.
struct Seen {
    std::int32_t prepared = KVR_FAILED;
    std::int32_t ran = KVR_FAILED;
    kvr_outcome outcome{};
    std::string message;
    std::uint32_t updated = 0;
};

class FaultsInC : public testing::Test {
protected:
    /// A whole session, from its creation to its end.
    [[nodiscard]] Seen update() const {
        kvr_session_options options{};
        options.size = sizeof(options);
        options.mode = KVR_MODE_UPDATE;
        options.archive = archive_.c_str();
        options.target = "127.0.0.1";
        kvr_session* session = nullptr;
        EXPECT_EQ(kvr_session_create(&options, &session), KVR_SUCCESS);
        Seen seen;
        seen.prepared = kvr_prepare(session);
        if (seen.prepared == KVR_SUCCESS) {
            seen.ran = kvr_run(session);
        }
        seen.outcome.size = sizeof(seen.outcome);
        EXPECT_EQ(kvr_session_get_outcome(session, &seen.outcome), KVR_SUCCESS);
        seen.message = seen.outcome.message;
        kvr_element_result result{};
        result.size = sizeof(result);
        for (std::uint32_t index = 0; kvr_session_get_result(session, index, &result) == KVR_SUCCESS; ++index) {
            seen.updated += result.result == KVR_RESULT_UPDATED ? 1 : 0;
        }
        EXPECT_EQ(kvr_session_free(session), KVR_SUCCESS);
        return seen;
    }
    /// The same while a call fails; false if there is no such call.
    [[nodiscard]] bool survives(const std::string& operation, std::uint32_t occurrence) {
        rack_.serveFresh({{operation, occurrence}});
        KvCErrorManager::getInstance()->getMasterErrorList().reset();
        const Seen seen = update();
        const KvEmulation::KvTLedger held = KvEmulation::ledger();
        const bool hasFailed = held.faultsMet != 0;
        EXPECT_EQ(held.locks, 0U);
        EXPECT_EQ(held.deviceHandles, 0U);
        EXPECT_EQ(held.inventoryTrees, 0U);
        EXPECT_GE(seen.prepared, KVR_SUCCESS);
        EXPECT_GE(seen.ran, KVR_SUCCESS);
        const bool isSuccess = seen.prepared == KVR_SUCCESS && seen.ran == KVR_SUCCESS;
        EXPECT_EQ(isSuccess, seen.outcome.failure == KVR_FAILURE_NONE);
        EXPECT_EQ(isSuccess, seen.message.empty());
        EXPECT_EQ(isSuccess, seen.outcome.exit_code == 0);
        return hasFailed;
    }

private:
    EnvironmentVariable timeScale_{"KV_TIME_SCALE", "0"};
    std::string archive_ = utf8Of(exampleArchive());
    ExampleRack rack_;
};

} // namespace

TEST_F(FaultsInC, EveryFailureIsAResultAndLeavesNothingHeld) {
    const std::uint32_t stride = std::max(numberFromEnvironment("KV_SWEEP_STRIDE", KV_USUAL_STRIDE), 1U);
    std::uint32_t failures = 0;
    for (const std::string& operation : KvEmulation::faultOperations()) {
        for (std::uint32_t occurrence = 1; survives(operation, occurrence); occurrence += stride) {
            SCOPED_TRACE(operation + " " + std::to_string(occurrence));
            ++failures;
        }
    }
    EXPECT_GT(failures, 30U);
}
