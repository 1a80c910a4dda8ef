// Memory that is exhausted while a client in C goes on: results, and nothing that stays held.

#include "FailingMemory.h"
#include "KvCErrorManager.h"
#include "KvEmulation.h"
#include "SessionInCTest.h"

#include <gmock/gmock.h>

namespace {

class ExhaustedInC : public SessionInCTest {
protected:
    /// A whole session while allocation number `number` fails; false when none has failed.
    bool session_without(std::size_t number, FailingMemory::Exhaustion exhaustion) {
        KvCErrorManager::getInstance()->getMasterErrorList().reset();
        kvr_session* handle = nullptr;
        std::vector<std::int32_t> results;
        bool hasStruck = false;
        results.reserve(32);
        {
            const FailingMemory failing(number, exhaustion);
            results.push_back(kvr_session_create(&options, &handle));
            results.push_back(kvr_prepare(handle));
            auto plan = sized<kvr_plan>();
            results.push_back(kvr_session_get_plan(handle, &plan));
            results.push_back(kvr_disable(handle, "1", nullptr));
            results.push_back(kvr_preflight(handle));
            results.push_back(kvr_run(handle));
            auto outcome = sized<kvr_outcome>();
            results.push_back(kvr_session_get_outcome(handle, &outcome));
            results.push_back(kvr_verify(handle, 0));
            const char* text = nullptr;
            results.push_back(kvr_session_get_document(handle, KVR_DOCUMENT_UPDATE, &text));
            results.push_back(kvr_session_free(handle));
            hasStruck = FailingMemory::hasStruck();
        }
        EXPECT_THAT(results,
                    testing::Each(testing::AllOf(testing::Ge(KVR_ERROR_VERSION), testing::Le(KVR_UNSUPPORTED))));
        EXPECT_EQ(kvr_session_free(handle),
                  results.back() == KVR_SUCCESS && handle != nullptr ? KVR_ERROR_ARGUMENT : KVR_SUCCESS);
        EXPECT_TRUE(KvEmulation::ledger().isClean());
        return hasStruck;
    }
};

} // namespace

TEST_F(ExhaustedInC, NothingIsThrownAndNothingStaysHeld) {
    serve();
    const std::uint32_t step = numberFromEnvironment("KV_SWEEP_STRIDE", 5);
    for (const FailingMemory::Exhaustion exhaustion :
         {FailingMemory::Exhaustion::once, FailingMemory::Exhaustion::lasting}) {
        std::size_t number = 1;
        while (session_without(number, exhaustion)) {
            number += step;
        }
        EXPECT_GT(number, 500U);
    }
}
