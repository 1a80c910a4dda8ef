#include "Records.h"
#include "SessionHandle.h"

#include <memory>
#include <utility>

// Sessions: what they do.

namespace {

/// Calls an operation that lets no other one begin with its session.
template <typename Operation>
std::int32_t callAlone(kvr_session* session, Operation&& operation) {
    return guarded([&] {
        const auto handle = objectOf<KvCSessionHandle>(session);
        const KvCExclusiveUse use(*handle);
        return std::forward<Operation>(operation)(*handle);
    });
}

} // namespace

std::int32_t KVR_CALL kvr_session_create(const kvr_session_options* options, kvr_session** session) {
    return guarded([&] {
        requireOut(session);
        *session = nullptr;
        *session = static_cast<kvr_session*>(addHandle(std::make_shared<KvCSessionHandle>(recordFrom(options))));
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_session_free(kvr_session* session) {
    return freeHandle<KvCSessionHandle>(session);
}

std::int32_t KVR_CALL kvr_session_set_event_function(kvr_session* session, kvr_event_function function, void* context) {
    return callAlone(session, [&](KvCSessionHandle& handle) {
        handle.setEventFunction(function, context);
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_prepare(kvr_session* session) {
    return callAlone(session, [](KvCSessionHandle& handle) { return handle.prepare(); });
}

std::int32_t KVR_CALL kvr_disable(kvr_session* session, const char* element, std::uint32_t* found) {
    return callAlone(session, [&](KvCSessionHandle& handle) {
        std::uint32_t count = 0;
        const std::int32_t result = handle.disable(textOf(element), count);
        giveIfWanted(found, count);
        return result;
    });
}

std::int32_t KVR_CALL kvr_preflight(kvr_session* session) {
    return callAlone(session, [](KvCSessionHandle& handle) { return handle.preflight(); });
}

std::int32_t KVR_CALL kvr_run(kvr_session* session) {
    return callAlone(session, [](KvCSessionHandle& handle) { return handle.run(); });
}

std::int32_t KVR_CALL kvr_request_stop(kvr_session* session, std::uint32_t how) {
    return guarded([&] {
        objectOf<KvCSessionHandle>(session)->requestStop(how);
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_verify(kvr_session* session, std::uint32_t was_rebooted) {
    return callAlone(session, [&](KvCSessionHandle& handle) { return handle.verify(was_rebooted != 0); });
}

std::int32_t KVR_CALL kvr_reboot(kvr_session* session) {
    return callAlone(session, [](KvCSessionHandle& handle) { return handle.reboot(); });
}
