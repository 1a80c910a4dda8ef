#pragma once

#include "KvCErrorManager.h"

/// A private error list for the duration of a scope.
class ErrorListGuard {
public:
    ErrorListGuard() : list_(KvCErrorManager::getInstance()->createErrorList(0, 1, 1, 1, 80)) {}
    ErrorListGuard(const ErrorListGuard&) = delete;
    ErrorListGuard(ErrorListGuard&&) = delete;
    ErrorListGuard& operator=(const ErrorListGuard&) = delete;
    ErrorListGuard& operator=(ErrorListGuard&&) = delete;
    ~ErrorListGuard() { KvCErrorManager::getInstance()->deleteErrorList(list_); }

    [[nodiscard]] KvCErrorList& list() const noexcept { return *list_; }

private:
    KvCErrorList* list_;
};
