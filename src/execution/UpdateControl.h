#pragma once

#include "KvISession.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>

/// What a running update is asked from outside, and what it lets others see of itself.
class KvCUpdateControl {
public:
    // Any thread.

    /// Never takes a request back, and takes no lock: a signal handler may call it.
    void requestStop(KvNReflasher::KvEStop how) noexcept;
    [[nodiscard]] KvNReflasher::KvTActivity activity() const;

    // The thread of the session.

    /// 0: none.
    void setStallLimit(std::uint32_t seconds) { stallLimit_ = seconds; }
    /// The client has asked the update to end.
    [[nodiscard]] bool isStopRequested() const { return level_ != noRequest; }
    /// Nothing new may begin.
    [[nodiscard]] bool startsNothing() const { return isStopRequested() || isStalled_; }
    /// Nothing is awaited any more.
    [[nodiscard]] bool givesUp() const { return level_ == giveUpRequest || isStalled_; }
    /// Waiting was given up because nothing has changed for too long.
    [[nodiscard]] bool isStalled() const { return isStalled_; }
    /// Gives up waiting if nothing has changed for as long as the limit is.
    void noteStall(std::uint32_t seconds) { isStalled_ = isStalled_ || (stallLimit_ != 0 && seconds >= stallLimit_); }
    /// A run begins.
    void forgetStall() { isStalled_ = false; }

private:
    friend class KvCCallUnderWay;
    void setActivity(const KvNReflasher::KvTActivity& activity);

    enum Level : std::uint8_t { noRequest, finishRequest, giveUpRequest };
    std::atomic<std::uint8_t> level_{noRequest};
    static_assert(std::atomic<std::uint8_t>::is_always_lock_free);
    std::uint32_t stallLimit_ = 0;
    bool isStalled_ = false;
    mutable std::mutex mutex_;
    KvNReflasher::KvTActivity activity_;
};

/// Lets others see that a call into the device access libraries is under way, until the end of its scope.
class KvCCallUnderWay {
public:
    /// `control` and `call` must outlive the object.
    KvCCallUnderWay(KvCUpdateControl& control, const char* call, std::optional<std::uint32_t> element = {})
        : control_(control) {
        control_.setActivity({call, element, std::chrono::steady_clock::now()});
    }
    KvCCallUnderWay(const KvCCallUnderWay&) = delete;
    KvCCallUnderWay& operator=(const KvCCallUnderWay&) = delete;
    ~KvCCallUnderWay() { control_.setActivity({}); }

private:
    KvCUpdateControl& control_;
};
