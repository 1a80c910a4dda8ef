#pragma once

#include "KvCErrorManager.h"

#include <cstdint>
#include <utility>

/// Keeps an error list locked and tells whether errors were added meanwhile.
class KvCErrorCountGuard {
public:
    explicit KvCErrorCountGuard(KvCErrorListPool& errors) : errors_(errors), before_(errors.getErrorCountLock()) {}
    KvCErrorCountGuard(const KvCErrorCountGuard&) = delete;
    KvCErrorCountGuard& operator=(const KvCErrorCountGuard&) = delete;
    ~KvCErrorCountGuard() {
        if (locked_) {
            (void)errors_.getErrorCountUnlock();
        }
    }

    /// Unlocks the list; true when its error count is still that of the construction. To be called once.
    [[nodiscard]] bool unchanged() {
        locked_ = false;
        return errors_.getErrorCountUnlock() == before_;
    }

private:
    KvCErrorListPool& errors_;
    std::uint32_t before_;
    bool locked_ = true;
};

/// The one rule by which calls of the device access libraries are judged: makes `call`, which is given `errors`, and
/// tells whether it succeeded, which is to say whether it added no error.
template <typename Call>
[[nodiscard]] bool callSucceeds(KvCErrorListPool& errors, Call&& call) {
    KvCErrorCountGuard guard(errors);
    std::forward<Call>(call)();
    return guard.unchanged();
}
