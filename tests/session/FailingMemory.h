#pragma once

#include <cstddef>

/// While it lives, lets one allocation of the program fail. This program's operator new is its own for that.
class FailingMemory {
public:
    /// The allocation number `number` from now on fails, counted from 1.
    explicit FailingMemory(std::size_t number);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory(FailingMemory&&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    FailingMemory& operator=(FailingMemory&&) = delete;
    ~FailingMemory();

    /// The allocation has been asked for.
    [[nodiscard]] static bool hasStruck();
    /// Allocations that were not given back, of all times.
    [[nodiscard]] static std::ptrdiff_t blocksInUse();
};
