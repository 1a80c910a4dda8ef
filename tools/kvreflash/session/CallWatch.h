#pragma once

#include "KvISession.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// What is to be said about a call into the device access libraries that does not return.
class BlockedCall {
public:
    /// Returns a sentence when the call has lasted for 30 s, and then once a minute; an empty text otherwise. `plan`:
    /// the elements; null if there is none.
    [[nodiscard]] std::string textFor(const KvNReflasher::KvTActivity& activity, const KvNReflasher::KvTPlan* plan,
                                      std::chrono::steady_clock::time_point now);

private:
    /// Of the call that was seen last.
    std::chrono::steady_clock::time_point begin_;
    std::chrono::seconds next_{0};
};

/// Names calls of a running update that do not return, on standard error, from a thread of its own.
class CallWatch {
public:
    /// `session` must outlive the watch.
    explicit CallWatch(const KvISession& session);
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;
    ~CallWatch();

private:
    void watch();

    const KvISession& session_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool hasEnded_ = false;
    std::thread thread_;
};
