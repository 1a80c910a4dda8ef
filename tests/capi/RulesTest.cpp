// The rules of the interface in C: handles, records, order, threads.

#include "SessionInCTest.h"

#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <functional>
#include <set>
#include <thread>

namespace {

using RulesOfC = SessionInCTest;

/// Every function that takes a session, called with `handle`.
std::vector<std::int32_t> callWith(kvr_session* handle) {
    auto plan = sized<kvr_plan>();
    auto element = sized<kvr_element>();
    auto entry = sized<kvr_entry>();
    auto outcome = sized<kvr_outcome>();
    auto error = sized<kvr_error>();
    auto result = sized<kvr_element_result>();
    auto verification = sized<kvr_verification>();
    auto verified = sized<kvr_verified_element>();
    std::uint32_t number = 0;
    const char* text = nullptr;
    return {kvr_session_set_event_function(handle, nullptr, nullptr),
            kvr_prepare(handle),
            kvr_disable(handle, "0", &number),
            kvr_preflight(handle),
            kvr_run(handle),
            kvr_request_stop(handle, KVR_STOP_FINISH),
            kvr_verify(handle, 0),
            kvr_reboot(handle),
            kvr_session_get_plan(handle, &plan),
            kvr_session_get_node(handle, 0, &number),
            kvr_session_get_element(handle, 0, &element),
            kvr_session_get_reason(handle, 0, 0, &number),
            kvr_session_get_entry(handle, 0, &entry),
            kvr_session_get_outcome(handle, &outcome),
            kvr_session_get_fault(handle, 0, &text),
            kvr_session_get_error(handle, 0, &error),
            kvr_session_get_result(handle, 0, &result),
            kvr_session_get_element_error(handle, 0, 0, &error),
            kvr_session_get_verification(handle, &verification),
            kvr_session_get_verified(handle, 0, &verified),
            kvr_session_get_look_error(handle, 0, &error),
            kvr_session_get_document(handle, KVR_DOCUMENT_PLAN, &text)};
}

TEST_F(RulesOfC, AHandleThatIsNoneIsRefused) {
    serve();
    create();
    kvr_session* const freed = session;
    close();
    auto archiveOptions = sized<kvr_archive_options>();
    kvr_archive* other = nullptr;
    ASSERT_EQ(kvr_archive_create(&archiveOptions, &other), KVR_SUCCESS);
    std::uint32_t wild = 0;
    for (void* const handle : {static_cast<void*>(nullptr), static_cast<void*>(freed), static_cast<void*>(other),
                               static_cast<void*>(&wild)}) {
        EXPECT_THAT(callWith(static_cast<kvr_session*>(handle)), testing::Each(KVR_ERROR_ARGUMENT));
        EXPECT_STREQ(kvr_last_error(), "the handle is null, of another kind, or was freed");
    }
    EXPECT_EQ(kvr_session_free(freed), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_session_free(reinterpret_cast<kvr_session*>(other)), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_session_free(nullptr), KVR_SUCCESS);
    EXPECT_EQ(kvr_archive_free(other), KVR_SUCCESS);
}

TEST_F(RulesOfC, NoHandleIsGivenTwice) {
    std::set<kvr_session*> handles;
    for (int count = 0; count < 50; ++count) {
        create();
        EXPECT_TRUE(handles.insert(session).second);
        close();
    }
}

TEST_F(RulesOfC, WithoutRoomForAResultNothingIsDone) {
    serve();
    EXPECT_EQ(kvr_session_create(&options, nullptr), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_session_create(nullptr, &session), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(session, nullptr);
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(kvr_session_get_plan(session, nullptr), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_session_get_node(session, 0, nullptr), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_session_get_document(session, KVR_DOCUMENT_PLAN, nullptr), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_read_saved_plan("", nullptr), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_runs_create("", nullptr, nullptr), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_archive_create(nullptr, nullptr), KVR_ERROR_ARGUMENT);
}

TEST_F(RulesOfC, ARecordThatIsTooSmallIsOfAnotherVersion) {
    serve();
    options.size = sizeof(options) - 1;
    EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_VERSION);
    options.size = 0;
    EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_VERSION);
    options.size = sizeof(options);
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    kvr_plan record{};
    EXPECT_EQ(kvr_session_get_plan(session, &record), KVR_ERROR_VERSION);
    EXPECT_STREQ(kvr_last_error(), "the record is smaller than its first version");
}

TEST_F(RulesOfC, WhatALaterClientHasMoreIsLeftAlone) {
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    struct Later {
        kvr_plan record;
        std::array<unsigned char, 32> more;
    } later{};
    later.more.fill(0xAB);
    later.record.size = sizeof(later);
    ASSERT_EQ(kvr_session_get_plan(session, &later.record), KVR_SUCCESS);
    EXPECT_EQ(later.record.size, sizeof(later));
    EXPECT_EQ(later.record.elements, 3U);
    EXPECT_THAT(later.more, testing::Each(0xAB));
}

TEST_F(RulesOfC, ValuesThatAreNotKnownAreRefused) {
    for (const std::uint32_t mode : {0U, 3U, 8U, 0xFFFFFFFFU}) {
        options.mode = mode;
        EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_ARGUMENT) << mode;
    }
    options.mode = KVR_MODE_PLAN;
    options.unlisted_files = 3;
    EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_ARGUMENT);
    options.unlisted_files = 0;
    options.archive = "\xFF\xFE";
    EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_ARGUMENT);
    options.archive = "";
    options.mode = KVR_MODE_UPDATE;
    options.saved_plan = "{}";
    EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_ARGUMENT);
    EXPECT_STRNE(kvr_last_error(), "");
    options.saved_plan = nullptr;
    options.resumed_run = "a run";
    EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_ARGUMENT) << "without a journal";
    options.journal_folder = "journal";
    EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_ARGUMENT);
    EXPECT_STREQ(kvr_last_error(), "there is no run 'a run' that can be read");
    options.saved_plan = "{}";
    EXPECT_EQ(kvr_session_create(&options, &session), KVR_ERROR_ARGUMENT);
    EXPECT_STREQ(kvr_last_error(), "an update runs a saved plan, or goes on with a run of its journal folder");
}

TEST_F(RulesOfC, WhatComesOutOfOrderIsRefused) {
    serve();
    create();
    EXPECT_EQ(kvr_run(session), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_verify(session, 0), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_reboot(session), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_disable(session, "0", nullptr), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_preflight(session), KVR_ERROR_ORDER);
    ASSERT_EQ(kvr_prepare(session), KVR_SUCCESS);
    EXPECT_EQ(kvr_prepare(session), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_session_set_event_function(session, nullptr, nullptr), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_verify(session, 0), KVR_ERROR_ORDER);
    ASSERT_EQ(kvr_run(session), KVR_SUCCESS);
    EXPECT_EQ(kvr_run(session), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_disable(session, "0", nullptr), KVR_ERROR_ORDER);
    EXPECT_STREQ(kvr_last_error(), "the function must not be called now");
}

TEST_F(RulesOfC, ACallbackMayAskAndNothingElse) {
    serve();
    std::vector<std::int32_t> results;
    onEvent = [this, &results](const kvr_event& event) {
        if (event.kind == KVR_EVENT_LOCKED) {
            results = callWith(session);
            results.push_back(kvr_session_free(session));
        }
    };
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(kvr_run(session), KVR_FAILED);
    const std::int32_t no = KVR_ERROR_ORDER;
    const std::int32_t none = KVR_ERROR_ARGUMENT; // there are no faults, no errors
    EXPECT_THAT(results, testing::ElementsAre(no, no, no, no, no, 0, no, no, 0, 0, 0, 0, 0, 0, none, none, 0, none, no,
                                              no, no, 0, no));
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_STOPPED));
}

TEST_F(RulesOfC, TheLastErrorIsThatOfTheThread) {
    EXPECT_EQ(kvr_run(nullptr), KVR_ERROR_ARGUMENT);
    EXPECT_STRNE(kvr_last_error(), "");
    std::thread([] { EXPECT_STREQ(kvr_last_error(), ""); }).join();
    EXPECT_EQ(kvr_session_free(nullptr), KVR_SUCCESS);
    EXPECT_STREQ(kvr_last_error(), "");
}

TEST_F(RulesOfC, AStopMayBeRequestedByAnotherThread) {
    serve();
    onEvent = [this](const kvr_event& event) {
        if (event.kind == KVR_EVENT_LOCKED) {
            std::thread([this] { EXPECT_EQ(kvr_request_stop(session, KVR_STOP_GIVE_UP), 0); }).join();
        }
    };
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(kvr_run(session), KVR_FAILED);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_STOPPED));
}

TEST_F(RulesOfC, CodesAreTheWordsOfDocuments) {
    EXPECT_STREQ(kvr_code(KVR_CODE_FAILURE, KVR_FAILURE_ARCHIVE), "archive");
    EXPECT_STREQ(kvr_code(KVR_CODE_STAGE, KVR_STAGE_REBOOTED), "rebooted");
    EXPECT_STREQ(kvr_code(KVR_CODE_RESULT, KVR_RESULT_UPDATED), "updated");
    EXPECT_STREQ(kvr_code(KVR_CODE_VERIFIED, KVR_VERIFIED_DIFFERS), "differs");
    EXPECT_STREQ(kvr_code(KVR_CODE_RUN_STATE, KVR_RUN_BROKEN_OFF), "broken-off");
    for (const std::uint32_t enumeration :
         {KVR_CODE_FAILURE + 0U, KVR_CODE_STAGE + 0U, KVR_CODE_REASON + 0U, KVR_CODE_RESULT + 0U,
          KVR_CODE_VERIFIED + 0U, KVR_CODE_FAILED_CALL + 0U, KVR_CODE_SEVERITY + 0U, KVR_CODE_SEAL + 0U,
          KVR_CODE_CHANGE + 0U, KVR_CODE_RUN_STATE + 0U}) {
        EXPECT_STREQ(kvr_code(enumeration, 1000), "") << enumeration;
    }
    EXPECT_STREQ(kvr_code(1000, 0), "");
    EXPECT_EQ(kvr_exit_code(KVR_FAILURE_NONE), 0U);
    EXPECT_EQ(kvr_exit_code(KVR_FAILURE_STALE), 9U);
    EXPECT_EQ(kvr_exit_code(1000), 1U);
    EXPECT_STREQ(kvr_code(KVR_CODE_REASON, KVR_REASON_IN_DOUBT), "in-doubt");
    EXPECT_STREQ(kvr_code(KVR_CODE_REASON, KVR_REASON_CARRIER_BOARD_MISSING), "carrier-board-missing");
    EXPECT_STREQ(kvr_code(KVR_CODE_FAILED_CALL, KVR_FAILED_CALL_WRITE_FILE), "write-file");
    EXPECT_STREQ(kvr_code(KVR_CODE_SEAL, KVR_SEAL_SIGNED_BY_STRANGER), "signed-by-stranger");
    EXPECT_STREQ(kvr_code(KVR_CODE_CHANGE, KVR_CHANGE_DOWN), "down");
    EXPECT_EQ(kvr_abi_version(), KVR_ABI_VERSION);
    EXPECT_STRNE(kvr_version(), "");
}

} // namespace
