// What a session of the interface in C does, and what it knows.

#include "SessionInCTest.h"

#include <gmock/gmock.h>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using UpdateInC = SessionInCTest;

TEST_F(UpdateInC, APlanSaysWhatWasFoundAndDecided) {
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(plan().elements, 3U);
    EXPECT_EQ(plan().changes, 3U);
    EXPECT_EQ(plan().phases, 3U);
    EXPECT_EQ(plan().entries, 3U);
    EXPECT_EQ(plan().supported, 1U);
    EXPECT_STREQ(plan().target_address, "127.0.0.1");
    EXPECT_STREQ(plan().archive_name, "Archive");
    const kvr_element one = element(0);
    EXPECT_STREQ(one.display_name, "NODE, One");
    EXPECT_EQ(one.element_id, 1U);
    EXPECT_EQ(one.updated, 1U);
    EXPECT_EQ(one.known & (KVR_KNOWS_ENTRY | KVR_KNOWS_PHASE), KVR_KNOWS_ENTRY | KVR_KNOWS_PHASE);
    EXPECT_STREQ(one.available_version, "2.0");
    auto entry = sized<kvr_entry>();
    ASSERT_EQ(kvr_session_get_entry(session, one.entry, &entry), KVR_SUCCESS);
    EXPECT_STREQ(entry.file_name, "node1.bin");
    std::uint32_t reason = 99;
    ASSERT_EQ(kvr_session_get_reason(session, 0, 0, &reason), KVR_SUCCESS);
    EXPECT_STRNE(kvr_code(KVR_CODE_REASON, reason), "");
    EXPECT_STREQ(element(2).target_path, "cfg/a.cfg");
    EXPECT_STREQ(element(2).address, "");
}

TEST_F(UpdateInC, AnUpdateIsNotifiedOfAndVerified) {
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(kvr_preflight(session), KVR_SUCCESS);
    EXPECT_EQ(kvr_run(session), KVR_SUCCESS);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_NONE));
    EXPECT_EQ(outcome().stage, static_cast<std::uint32_t>(KVR_STAGE_ENDED));
    EXPECT_EQ(outcome().exit_code, 0U);
    EXPECT_EQ(result(0).result, static_cast<std::uint32_t>(KVR_RESULT_UPDATED));
    EXPECT_EQ(events.front(), "3 0 1");
    EXPECT_EQ(events.back(), "4 0 1");
    EXPECT_THAT(events, Contains("0 0 1"));
    EXPECT_THAT(events, Contains("7 0 1"));
    EXPECT_THAT(messages, HasSubstr("Update completed successfully!"));
    static_cast<void>(kvr_verify(session, 0));
    auto verification = sized<kvr_verification>();
    ASSERT_EQ(kvr_session_get_verification(session, &verification), KVR_SUCCESS);
    ASSERT_EQ(verification.elements, 3U);
    auto verified = sized<kvr_verified_element>();
    ASSERT_EQ(kvr_session_get_verified(session, 2, &verified), KVR_SUCCESS);
    EXPECT_EQ(verified.result, static_cast<std::uint32_t>(KVR_VERIFIED_NOT_LISTED));
    EXPECT_EQ(verified.known, 0U);
    ASSERT_EQ(kvr_session_get_verified(session, 0, &verified), KVR_SUCCESS);
    EXPECT_EQ(verified.known & (KVR_KNOWS_VERSION | KVR_KNOWS_VALID), KVR_KNOWS_VERSION | KVR_KNOWS_VALID);
    EXPECT_STREQ(verified.version, "2.0");
    EXPECT_EQ(verified.valid, 1U);
    EXPECT_EQ(verified.active, 1U);
}

TEST_F(UpdateInC, AFailureHasItsClassItsReasonAndItsErrors) {
    addFault(fault("update2"));
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(kvr_run(session), KVR_FAILED);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_ELEMENTS));
    EXPECT_EQ(outcome().exit_code, 1U);
    EXPECT_STRNE(outcome().message, "");
    const kvr_element_result failed = result(0);
    EXPECT_EQ(failed.result, static_cast<std::uint32_t>(KVR_RESULT_FAILED));
    EXPECT_STRNE(failed.reason, "");
    ASSERT_GE(failed.errors, 1U);
    EXPECT_EQ(failed.failed_call, static_cast<std::uint32_t>(KVR_FAILED_CALL_UPDATE2));
    auto error = sized<kvr_error>();
    EXPECT_EQ(kvr_session_get_element_error(session, 1, 0, &error), KVR_ERROR_ORDER);
    ASSERT_EQ(kvr_session_get_element_error(session, 0, 0, &error), KVR_SUCCESS);
    EXPECT_EQ(error.code, 0x2FFFU);
    EXPECT_STREQ(error.text, "Fault at update2.");
    EXPECT_EQ(kvr_session_get_element_error(session, 0, failed.errors, &error), KVR_ERROR_ARGUMENT);
}

TEST_F(UpdateInC, ATargetThatIsNotThereIsAFailureOfItsClass) {
    serve();
    options.target = "127.0.0.9";
    EXPECT_EQ(prepare(), KVR_FAILED);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_TARGET));
    EXPECT_EQ(outcome().retryable, 1U);
    EXPECT_EQ(outcome().exit_code, 4U);
    auto none = sized<kvr_plan>();
    EXPECT_EQ(kvr_session_get_plan(session, &none), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_run(session), KVR_ERROR_ORDER);
}

TEST_F(UpdateInC, FiltersThatLetNothingThroughAreAFailure) {
    serve();
    options.board_types = "NODE";
    EXPECT_EQ(prepare(), KVR_SUCCESS);
    close();
    options.element_names = "Three";
    EXPECT_EQ(prepare(), KVR_FAILED);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_SELECTION));
    EXPECT_EQ(outcome().exit_code, 8U);
    EXPECT_EQ(kvr_run(session), KVR_ERROR_ORDER);
}

TEST_F(UpdateInC, APlanWhoseFilesCannotBeReadIsNotSaved) {
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    archive.removeFile("node2.bin");
    const char* text = nullptr;
    EXPECT_EQ(kvr_session_get_document(session, KVR_DOCUMENT_SAVED_PLAN, &text), KVR_FAILED);
    EXPECT_STREQ(text, "");
    EXPECT_STREQ(kvr_last_error(), "the update file 'node2.bin' cannot be read");
}

TEST_F(UpdateInC, ElementsAreLeftOutByTheirNames) {
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    std::uint32_t found = 99;
    EXPECT_EQ(kvr_disable(session, "nothing of this name", &found), KVR_FAILED);
    EXPECT_EQ(found, 0U);
    EXPECT_EQ(kvr_disable(session, "NODE, Two", &found), KVR_SUCCESS);
    EXPECT_EQ(found, 1U);
    EXPECT_EQ(kvr_disable(session, "0", nullptr), KVR_SUCCESS);
    EXPECT_EQ(element(0).disabled, 1U);
    EXPECT_EQ(plan().changes, 1U);
    EXPECT_EQ(kvr_run(session), KVR_SUCCESS);
    EXPECT_EQ(result(0).result, static_cast<std::uint32_t>(KVR_RESULT_NOT_PLANNED));
}

TEST_F(UpdateInC, AFaultOfThePreflightRefusesTheUpdate) {
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    archive.removeFile("node1.bin");
    EXPECT_EQ(kvr_preflight(session), KVR_FAILED);
    EXPECT_EQ(outcome().exit_code, 3U);
    ASSERT_EQ(outcome().faults, 1U);
    const char* fault = nullptr;
    ASSERT_EQ(kvr_session_get_fault(session, 0, &fault), KVR_SUCCESS);
    EXPECT_THAT(fault, HasSubstr("node1.bin"));
    EXPECT_EQ(kvr_session_get_fault(session, 1, &fault), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_run(session), KVR_ERROR_ORDER);
}

TEST_F(UpdateInC, EndsWhenACallbackAsksForIt) {
    serve();
    onEvent = [this](const kvr_event& event) {
        if (event.kind == KVR_EVENT_ELEMENT_START) {
            EXPECT_EQ(kvr_request_stop(session, KVR_STOP_FINISH), KVR_SUCCESS);
            EXPECT_EQ(result(1).result, static_cast<std::uint32_t>(KVR_RESULT_NOT_STARTED));
        }
    };
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(kvr_run(session), KVR_FAILED);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_STOPPED));
    EXPECT_EQ(result(0).result, static_cast<std::uint32_t>(KVR_RESULT_UPDATED));
    EXPECT_EQ(result(1).result, static_cast<std::uint32_t>(KVR_RESULT_NOT_STARTED));
    EXPECT_EQ(kvr_request_stop(session, 2), KVR_ERROR_ARGUMENT);
}

TEST_F(UpdateInC, DocumentsAreThoseOfTheTool) {
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_THAT(document(KVR_DOCUMENT_PLAN), HasSubstr(R"("name": "kvreflash.plan")"));
    EXPECT_THAT(document(KVR_DOCUMENT_ELEMENTS), HasSubstr(R"("name": "kvreflash.elements")"));
    EXPECT_THAT(document(KVR_DOCUMENT_EXPLAIN), HasSubstr(R"("name": "kvreflash.explain")"));
    EXPECT_THAT(document(KVR_DOCUMENT_SAVED_PLAN), HasSubstr(R"("name": "kvreflash.saved-plan")"));
    EXPECT_EQ(kvr_run(session), KVR_SUCCESS);
    EXPECT_THAT(document(KVR_DOCUMENT_UPDATE), HasSubstr(R"("name": "kvreflash.update")"));
    EXPECT_THAT(document(KVR_DOCUMENT_UPDATE), HasSubstr(R"("exitCode": 0)"));
    static_cast<void>(kvr_verify(session, 0));
    EXPECT_THAT(document(KVR_DOCUMENT_VERIFY), HasSubstr(R"("name": "kvreflash.verify")"));
    const char* text = nullptr;
    EXPECT_EQ(kvr_session_get_document(session, 77, &text), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_session_get_document(session, KVR_DOCUMENT_SAVED_PLAN, &text), KVR_ERROR_ORDER);
}

TEST_F(UpdateInC, TheTargetIsRebooted) {
    serve();
    options.mode = KVR_MODE_CONNECT;
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    const std::int32_t result = kvr_reboot(session);
    EXPECT_EQ(result == KVR_SUCCESS, outcome().failure == KVR_FAILURE_NONE);
    EXPECT_EQ(kvr_verify(session, 1), KVR_SUCCESS);
}

// --- saved plans and runs ---

TEST_F(UpdateInC, ASavedPlanIsRunAsItStandsAndNotTwice) {
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(kvr_disable(session, "1", nullptr), KVR_SUCCESS);
    const std::string saved = document(KVR_DOCUMENT_SAVED_PLAN);
    close();
    auto record = sized<kvr_saved_plan>();
    ASSERT_EQ(kvr_read_saved_plan(saved.c_str(), &record), KVR_SUCCESS) << kvr_last_error();
    EXPECT_EQ(record.changes, 2U);
    EXPECT_STREQ(record.target, "127.0.0.1");
    EXPECT_EQ(kvr_read_saved_plan((saved + " ").c_str(), &record), KVR_FAILED);
    EXPECT_STRNE(kvr_last_error(), "");

    options = sized<kvr_session_options>();
    options.mode = KVR_MODE_UPDATE;
    options.saved_plan = saved.c_str();
    ASSERT_EQ(prepare(), KVR_SUCCESS) << outcome().message;
    EXPECT_EQ(element(1).disabled, 1U);
    EXPECT_EQ(kvr_disable(session, "0", nullptr), KVR_ERROR_ORDER);
    EXPECT_EQ(kvr_run(session), KVR_SUCCESS);
    close();
    ASSERT_EQ(prepare(), KVR_FAILED);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_STALE));
    EXPECT_EQ(outcome().exit_code, 9U);
    EXPECT_GE(outcome().faults, 1U);
}

TEST_F(UpdateInC, ARunIsRememberedAndGoesOn) {
    const ScratchFolder journal;
    const std::string folder = journal.text() + "/journal";
    serve();
    options.journal_folder = folder.c_str();
    options.journal_place = "bench 7";
    onEvent = [this](const kvr_event& event) {
        if (event.kind == KVR_EVENT_ELEMENT_START) {
            static_cast<void>(kvr_request_stop(session, KVR_STOP_FINISH));
        }
    };
    EXPECT_EQ(update(), KVR_FAILED);
    onEvent = nullptr;

    kvr_runs* runs = nullptr;
    std::uint32_t count = 0;
    ASSERT_EQ(kvr_runs_create(folder.c_str(), &runs, &count), KVR_SUCCESS);
    ASSERT_EQ(count, 1U);
    auto run = sized<kvr_run_info>();
    ASSERT_EQ(kvr_runs_get(runs, 0, &run), KVR_SUCCESS);
    EXPECT_EQ(run.state, static_cast<std::uint32_t>(KVR_RUN_STOPPED));
    EXPECT_EQ(run.resumable, 1U);
    EXPECT_EQ(run.exit_code, 7U);
    EXPECT_STREQ(run.command, "update");
    const std::string id = run.id;
    const char* text = nullptr;
    EXPECT_EQ(kvr_runs_get_document(runs, id.c_str(), &text), KVR_SUCCESS);
    EXPECT_THAT(text, HasSubstr(R"("name": "kvreflash.run")"));
    EXPECT_THAT(text, HasSubstr(R"("bench 7")"));
    EXPECT_EQ(kvr_runs_get_document(runs, nullptr, &text), KVR_SUCCESS);
    EXPECT_THAT(text, HasSubstr(R"("name": "kvreflash.history")"));
    EXPECT_EQ(kvr_runs_get_document(runs, "none of this name", &text), KVR_FAILED);
    EXPECT_STREQ(kvr_last_error(), "there is no run 'none of this name' that can be read");
    EXPECT_EQ(kvr_runs_get(runs, 1, &run), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_runs_free(runs), KVR_SUCCESS);

    options.resumed_run = id.c_str();
    options.target = nullptr;
    options.archive = nullptr;
    ASSERT_EQ(prepare(), KVR_SUCCESS) << outcome().message;
    EXPECT_EQ(element(0).updated, 0U);
    EXPECT_EQ(element(1).updated, 1U);
    EXPECT_EQ(kvr_run(session), KVR_SUCCESS);
    EXPECT_STRNE(outcome().run, "");
    EXPECT_STRNE(outcome().run, id.c_str());
    close(); // the folder goes, and the session holds a file of it
}

TEST_F(UpdateInC, WithoutAnArchiveAPlanCannotBeSaved) {
    serve();
    options.mode = KVR_MODE_ELEMENTS;
    options.archive = nullptr;
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    const char* text = nullptr;
    EXPECT_EQ(kvr_session_get_document(session, KVR_DOCUMENT_SAVED_PLAN, &text), KVR_FAILED);
    EXPECT_STREQ(kvr_last_error(), "the session has not planned an update");
}

TEST_F(UpdateInC, WithATrustFolderAnArchiveMustBeSealedUnlessThatIsAccepted) {
    serve();
    const ScratchFolder trust;
    const std::string folder = trust.text();
    static_cast<void>(trust.write("allowed_signers", ""));
    options.trust_folder = folder.c_str();
    EXPECT_EQ(prepare(), KVR_FAILED);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_ARCHIVE));
    close();
    options.flags = KVR_ACCEPT_UNSEALED;
    EXPECT_EQ(prepare(), KVR_SUCCESS);
}

TEST_F(UpdateInC, LowerVersionsAreLeftOutIfThatIsAskedFor) {
    archive.add(entry("old.bin").board("IO1", 1).version("0.1"));
    boards.push_back(completeBoard("IOMODULE", "IO1", 1).element(completeElement(1)));
    serve();
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(element(2).downgrade, 1U);
    EXPECT_EQ(element(2).updated, 1U);
    close();
    options.flags = KVR_NO_DOWNGRADE;
    ASSERT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_EQ(element(2).updated, 0U);
}

TEST_F(UpdateInC, AJournalThatIsRequiredRefusesTheUpdate) {
    const ScratchFolder journal;
    static_cast<void>(journal.write("file", ""));
    const std::string folder = journal.text() + "/file";
    serve();
    options.journal_folder = folder.c_str();
    options.flags = KVR_JOURNAL_REQUIRED;
    EXPECT_EQ(prepare(), KVR_FAILED);
    EXPECT_EQ(outcome().failure, static_cast<std::uint32_t>(KVR_FAILURE_OUTPUT));
    close();
    options.flags = 0;
    EXPECT_EQ(prepare(), KVR_SUCCESS);
    EXPECT_STREQ(outcome().run, "");
}

} // namespace
