#include "ClientRecords.h"
#include "Records.h"
#include "SessionHandle.h"

#include <utility>

// Sessions: what they know. Callbacks may ask, too.

using namespace KvNReflasher;

namespace {

template <typename Query>
std::int32_t ask(kvr_session* session, Query&& query) {
    return guarded([&] {
        std::forward<Query>(query)(*objectOf<KvCSessionHandle>(session));
        return KVR_SUCCESS;
    });
}

} // namespace

std::int32_t KVR_CALL kvr_session_get_plan(kvr_session* session, kvr_plan* plan) {
    return ask(session, [&](const KvCSessionHandle& handle) {
        const std::size_t entries = handle.session().archiveEntries().size();
        fill(plan, recordOf(handle.plan(), static_cast<std::uint32_t>(entries)));
    });
}

std::int32_t KVR_CALL kvr_session_get_node(kvr_session* session, std::uint32_t index, std::uint32_t* serial_number) {
    return ask(session, [&](const KvCSessionHandle& handle) {
        requireOut(serial_number);
        *serial_number = itemOf(handle.plan().nodeSerialNumbers, index);
    });
}

std::int32_t KVR_CALL kvr_session_get_element(kvr_session* session, std::uint32_t index, kvr_element* element) {
    return ask(session,
               [&](const KvCSessionHandle& handle) { fill(element, recordOf(itemOf(handle.plan().elements, index))); });
}

std::int32_t KVR_CALL kvr_session_get_reason(kvr_session* session, std::uint32_t element, std::uint32_t index,
                                             std::uint32_t* reason) {
    return ask(session, [&](const KvCSessionHandle& handle) {
        requireOut(reason);
        *reason = static_cast<std::uint32_t>(itemOf(itemOf(handle.plan().elements, element).decision.reasons, index));
    });
}

std::int32_t KVR_CALL kvr_session_get_entry(kvr_session* session, std::uint32_t index, kvr_entry* entry) {
    return ask(session, [&](KvCSessionHandle& handle) {
        if (handle.entries.empty()) {
            handle.entries = handle.session().archiveEntries();
        }
        fill(entry, recordOf(itemOf(handle.entries, index)));
    });
}

std::int32_t KVR_CALL kvr_session_get_outcome(kvr_session* session, kvr_outcome* outcome) {
    return ask(session, [&](KvCSessionHandle& handle) {
        handle.outcome = handle.session().outcome();
        const KvTVerdict verdict = handle.verdict();
        handle.message = verdict.message;
        handle.runId = handle.session().runId();
        kvr_outcome record{};
        record.stage = static_cast<std::uint32_t>(handle.outcome->stage);
        record.failure = static_cast<std::uint32_t>(verdict.failure);
        record.retryable = verdict.isRetryable() ? 1 : 0;
        record.exit_code = static_cast<std::uint32_t>(exitCodeOf(verdict.failure));
        record.errors = static_cast<std::uint32_t>(handle.outcome->errors.size());
        record.faults = static_cast<std::uint32_t>(handle.faults().size());
        record.message = handle.message.c_str();
        record.run = handle.runId.c_str();
        fill(outcome, record);
    });
}

std::int32_t KVR_CALL kvr_session_get_fault(kvr_session* session, std::uint32_t index, const char** text) {
    return ask(session, [&](const KvCSessionHandle& handle) {
        requireOut(text);
        *text = itemOf(handle.faults(), index).c_str();
    });
}

std::int32_t KVR_CALL kvr_session_get_error(kvr_session* session, std::uint32_t index, kvr_error* error) {
    return ask(session, [&](KvCSessionHandle& handle) {
        handle.require(handle.outcome.has_value());
        fill(error, recordOf(itemOf(handle.outcome->errors, index)));
    });
}

std::int32_t KVR_CALL kvr_session_get_result(kvr_session* session, std::uint32_t element, kvr_element_result* result) {
    return ask(session, [&](KvCSessionHandle& handle) {
        requireIndex(element, handle.plan().elements.size());
        handle.elementOutcome = handle.session().outcomeOf(element);
        handle.elementOfOutcome = element;
        fill(result, recordOf(*handle.elementOutcome));
    });
}

std::int32_t KVR_CALL kvr_session_get_element_error(kvr_session* session, std::uint32_t element, std::uint32_t index,
                                                    kvr_error* error) {
    return ask(session, [&](KvCSessionHandle& handle) {
        requireIndex(element, handle.plan().elements.size());
        handle.require(handle.elementOutcome && handle.elementOfOutcome == element);
        fill(error, recordOf(itemOf(handle.elementOutcome->errors, index)));
    });
}

std::int32_t KVR_CALL kvr_session_get_verification(kvr_session* session, kvr_verification* verification) {
    return ask(session, [&](KvCSessionHandle& handle) {
        const KvTVerification& judged = handle.verification();
        const KvTVerdict verdict = verdictOf(judged);
        handle.verificationMessage = verdict.message;
        kvr_verification record{};
        record.failure = static_cast<std::uint32_t>(verdict.failure);
        record.elements = static_cast<std::uint32_t>(judged.elements.size());
        record.errors = static_cast<std::uint32_t>(judged.look.errors.size());
        record.message = handle.verificationMessage.c_str();
        fill(verification, record);
    });
}

std::int32_t KVR_CALL kvr_session_get_verified(kvr_session* session, std::uint32_t index,
                                               kvr_verified_element* verified) {
    return ask(session, [&](const KvCSessionHandle& handle) {
        fill(verified, recordOf(itemOf(handle.verification().elements, index)));
    });
}

std::int32_t KVR_CALL kvr_session_get_look_error(kvr_session* session, std::uint32_t index, kvr_error* error) {
    return ask(session, [&](const KvCSessionHandle& handle) {
        fill(error, recordOf(itemOf(handle.verification().look.errors, index)));
    });
}

std::int32_t KVR_CALL kvr_session_get_document(kvr_session* session, std::uint32_t kind, const char** text) {
    return guarded([&] {
        const auto handle = objectOf<KvCSessionHandle>(session);
        requireOut(text);
        std::string reason;
        std::optional<std::string> document = handle->document(kind, reason);
        handle->documentText = document ? std::move(*document) : std::string();
        *text = handle->documentText.c_str();
        return document ? KVR_SUCCESS : failed(reason.c_str());
    });
}
