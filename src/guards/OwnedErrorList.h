#pragma once

#include "KvCErrorManager.h"

#include <utility>

/// Owns an error list of the error manager and gives it back at the end. A copy owns nothing until it creates a list
/// of its own.
class KvCOwnedErrorList {
public:
    /// Owns nothing.
    KvCOwnedErrorList() = default;
    /// Owns a new list.
    [[nodiscard]] static KvCOwnedErrorList create() {
        KvCOwnedErrorList result;
        result.list_ = KvCErrorManager::getInstance()->createErrorList(0, 1, 20, 5, 300);
        return result;
    }

    KvCOwnedErrorList(const KvCOwnedErrorList& /*other*/) noexcept {}
    KvCOwnedErrorList& operator=(const KvCOwnedErrorList& other) noexcept {
        if (this != &other) {
            release();
        }
        return *this;
    }
    KvCOwnedErrorList(KvCOwnedErrorList&& other) noexcept : list_(std::exchange(other.list_, nullptr)) {}
    KvCOwnedErrorList& operator=(KvCOwnedErrorList&& other) noexcept {
        KvCOwnedErrorList taken(std::move(other));
        std::swap(list_, taken.list_);
        return *this;
    }
    ~KvCOwnedErrorList() { release(); }

    /// Null when nothing is owned.
    [[nodiscard]] KvCErrorList* get() const { return list_; }
    [[nodiscard]] KvCErrorList& operator*() const { return *list_; }
    [[nodiscard]] KvCErrorList* operator->() const { return list_; }

private:
    void release() {
        if (list_ != nullptr) {
            KvCErrorManager::getInstance()->deleteErrorList(std::exchange(list_, nullptr));
        }
    }

    KvCErrorList* list_ = nullptr;
};
