#include "UpdateControl.h"

using namespace KvNReflasher;

void KvCUpdateControl::requestStop(KvEStop how) noexcept {
    const std::uint8_t wanted = how == KvEStop::giveUp ? giveUpRequest : finishRequest;
    std::uint8_t level = level_;
    while (level < wanted && !level_.compare_exchange_weak(level, wanted)) {
    }
}

KvTActivity KvCUpdateControl::activity() const {
    const std::lock_guard lock(mutex_);
    return activity_;
}

void KvCUpdateControl::setActivity(const KvTActivity& activity) {
    const std::lock_guard lock(mutex_);
    activity_ = activity;
}
