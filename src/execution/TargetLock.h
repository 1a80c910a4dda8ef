#pragma once

#include "UpdateContext.h"

/// The update lock of the target. Destroyed while it is held, as when memory is exhausted, it gives the target back.
class KvCTargetLock {
public:
    /// `context` must outlive the lock.
    explicit KvCTargetLock(const KvTUpdateContext& context) : context_(context) {}
    KvCTargetLock(const KvCTargetLock&) = delete;
    KvCTargetLock& operator=(const KvCTargetLock&) = delete;
    ~KvCTargetLock();

    /// Locks the target. False, with the reason printed if the options ask for details, if that failed.
    [[nodiscard]] bool lockTarget();
    /// Closes the update session and unlocks the target once, whatever comes of it.
    void unlockTarget();
    /// Null unless the target is locked.
    [[nodiscard]] void* handle() const { return handle_; }

private:
    void finishUpdate();

    const KvTUpdateContext& context_;
    void* handle_ = nullptr;
    bool isHeld_ = false;
};
