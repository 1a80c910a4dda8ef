#pragma once

#include "KvIReflasher.h"

/// The client's notification functions; null: not wanted.
struct KvTCallbacks {
    KvNReflasher::KvTNumberCallback phase = nullptr;
    KvNReflasher::KvTNumberCallback elementError = nullptr;
    KvNReflasher::KvTNumberCallback progress = nullptr;
    KvNReflasher::KvTMessageCallback message = nullptr;

    /// Each calls its function when there is one.
    void notifyPhase(std::uint32_t value) const { notify(phase, value); }
    void notifyElementError(std::uint32_t index) const { notify(elementError, index); }
    void notifyProgress(std::uint32_t percentage) const { notify(progress, percentage); }

private:
    static void notify(KvNReflasher::KvTNumberCallback callback, std::uint32_t value) {
        if (callback != nullptr) {
            callback(value);
        }
    }
};
