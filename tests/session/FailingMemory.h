#pragma once

#include <cstddef>

/// While it lives, lets one allocation of this program fail, which has an operator new of its own for that. What the
/// device access libraries allocate for themselves does not count.
class FailingMemory {
public:
    /// The allocation number `number` from now on fails, counted from 1.
    explicit FailingMemory(std::size_t number);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory(FailingMemory&&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    FailingMemory& operator=(FailingMemory&&) = delete;
    ~FailingMemory();

    /// Allocations so far, as far as they count.
    [[nodiscard]] static std::size_t allocations();
    /// The allocation has been asked for.
    [[nodiscard]] static bool hasStruck();
    /// Allocations that were not given back, of all times.
    [[nodiscard]] static std::ptrdiff_t blocksInUse();
};

/// True when the caller was called, however indirectly, by the device access libraries and these call this program's
/// operator new. One source per system.
[[nodiscard]] bool isCalledByPlatform();
