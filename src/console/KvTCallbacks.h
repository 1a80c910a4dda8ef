#pragma once

#include "KvISession.h"

/// The client's notification functions; null: not wanted.
struct KvTCallbacks {
    KvNReflasher::KvTNumberCallback phase = nullptr;
    KvNReflasher::KvTNumberCallback elementError = nullptr;
    KvNReflasher::KvTNumberCallback progress = nullptr;
    KvNReflasher::KvTMessageCallback message = nullptr;
    KvNReflasher::KvTEventFunction eventFunction = nullptr;
    void* eventContext = nullptr;
    /// Goes before `message`.
    KvNReflasher::KvTMessageFunction messageFunction = nullptr;
    void* messageContext = nullptr;

    // Each calls the functions that there are.
    void notifyPhase(std::uint32_t value) const {
        notify(phase, value);
        notifyEvent({KvNReflasher::KvEEvent::phase, value});
    }
    void notifyElementError(std::uint32_t index) const {
        notify(elementError, index);
        notifyEvent({KvNReflasher::KvEEvent::elementError, index});
    }
    void notifyProgress(std::uint32_t percentage) const {
        notify(progress, percentage);
        notifyEvent({KvNReflasher::KvEEvent::progress, percentage});
    }
    void notifyEvent(const KvNReflasher::KvTEvent& event) const {
        if (eventFunction != nullptr) {
            eventFunction(event, eventContext);
        }
    }

private:
    static void notify(KvNReflasher::KvTNumberCallback callback, std::uint32_t value) {
        if (callback != nullptr) {
            callback(value);
        }
    }
};
