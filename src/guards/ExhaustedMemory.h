#pragma once

#include <new>
#include <utility>

// Memory may be exhausted at any allocation. Nothing but the construction of a session lets that leave as an exception.

/// Makes an operation fail as its result says when memory is exhausted.
template <typename Result, typename Operation>
Result withoutException(Result onExhaustedMemory, Operation&& operation) {
    try {
        return std::forward<Operation>(operation)();
    } catch (const std::bad_alloc&) {
        return onExhaustedMemory;
    }
}

/// Runs what exhausted memory may end early without anybody being told, such as a step of a release: the next step may
/// need no memory.
template <typename Step>
void attempt(Step&& step) noexcept {
    withoutException(false, [&] {
        std::forward<Step>(step)();
        return true;
    });
}
