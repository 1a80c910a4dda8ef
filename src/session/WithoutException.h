#pragma once

#include <new>
#include <utility>

/// Makes an interface operation fail as its result says when memory is exhausted: no exception leaves the library.
template <typename Result, typename Operation>
Result withoutException(Result onExhaustedMemory, Operation&& operation) {
    try {
        return std::forward<Operation>(operation)();
    } catch (const std::bad_alloc&) {
        return onExhaustedMemory;
    }
}
