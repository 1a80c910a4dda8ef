#pragma once

#include "CallFailure.h"

#include <atomic>
#include <memory>

// Handles are numbers that clients take for pointers. What they stand for is looked up, so that a handle that is null,
// of another kind or freed is found out, and is never an address.

/// What a handle stands for.
class KvCHandled {
public:
    KvCHandled() = default;
    KvCHandled(const KvCHandled&) = delete;
    KvCHandled& operator=(const KvCHandled&) = delete;
    virtual ~KvCHandled() = default;

    /// A function is under way that lets no other one begin.
    std::atomic_flag isBusy{};
};

/// Keeps an object alive under a new number.
[[nodiscard]] void* addHandle(std::shared_ptr<KvCHandled> object);
/// The object of a handle; null if there is none.
[[nodiscard]] std::shared_ptr<KvCHandled> findHandled(const void* handle);
/// Forgets a handle.
void removeHandle(const void* handle);

/// The object of a handle, of its kind. Throws KvCCallFailure.
template <typename Object>
[[nodiscard]] std::shared_ptr<Object> objectOf(const void* handle) {
    std::shared_ptr<Object> object = std::dynamic_pointer_cast<Object>(findHandled(handle));
    if (object == nullptr) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "the handle is null, of another kind, or was freed");
    }
    return object;
}

/// Lets no other function begin with an object. Throws KvCCallFailure if one is under way.
class KvCExclusiveUse {
public:
    explicit KvCExclusiveUse(KvCHandled& object) : object_(object) {
        if (object_.isBusy.test_and_set()) {
            throw KvCCallFailure(KVR_ERROR_ORDER, "another function is under way with this handle");
        }
    }
    KvCExclusiveUse(const KvCExclusiveUse&) = delete;
    KvCExclusiveUse& operator=(const KvCExclusiveUse&) = delete;
    ~KvCExclusiveUse() { object_.isBusy.clear(); }

private:
    KvCHandled& object_;
};

/// Frees the object of a handle; null is nothing to free.
template <typename Object>
std::int32_t freeHandle(const void* handle) {
    return guarded([handle] {
        if (handle == nullptr) {
            return KVR_SUCCESS;
        }
        const std::shared_ptr<Object> object = objectOf<Object>(handle);
        const KvCExclusiveUse use(*object);
        removeHandle(handle);
        return KVR_SUCCESS;
    });
}
