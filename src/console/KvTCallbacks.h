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

    /// The session's own: it has written an event down before a client can be stopped by it.
    KvNReflasher::KvTEventFunction journalFunction = nullptr;
    void* journalContext = nullptr;

    // Each calls the functions that there are.
    void notifyPhase(std::uint32_t value) const { notifyWith(phase, {KvNReflasher::KvEEvent::phase, value}); }
    void notifyElementError(std::uint32_t index) const {
        notifyWith(elementError, {KvNReflasher::KvEEvent::elementError, index});
    }
    void notifyProgress(std::uint32_t percentage) const {
        notifyWith(progress, {KvNReflasher::KvEEvent::progress, percentage});
    }
    void notifyEvent(const KvNReflasher::KvTEvent& event) const { notifyWith(nullptr, event); }

private:
    void notifyWith(KvNReflasher::KvTNumberCallback callback, const KvNReflasher::KvTEvent& event) const {
        if (journalFunction != nullptr) {
            journalFunction(event, journalContext);
        }
        notify(callback, event.value);
        if (eventFunction != nullptr) {
            eventFunction(event, eventContext);
        }
    }
    static void notify(KvNReflasher::KvTNumberCallback callback, std::uint32_t value) {
        if (callback != nullptr) {
            callback(value);
        }
    }
};
