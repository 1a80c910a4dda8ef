#pragma once

#include <cstddef>

/// While it lives, lets allocations of this program fail, which has an operator new of its own for that. What shared
/// libraries allocate counts as well, but for DLLs, which never see a program's operator new.
class FailingMemory {
public:
    enum class Exhaustion { once, lasting };

    /// The allocation number `number` from now on fails, counted from 1, and with Exhaustion::lasting all later ones
    /// too.
    explicit FailingMemory(std::size_t number, Exhaustion exhaustion = Exhaustion::once);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory(FailingMemory&&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    FailingMemory& operator=(FailingMemory&&) = delete;
    ~FailingMemory();

    /// Allocations that were asked for so far, up to the one that failed.
    [[nodiscard]] static std::size_t allocations();
    /// An allocation has failed.
    [[nodiscard]] static bool hasStruck();
    /// Allocations that were not given back, of all times.
    [[nodiscard]] static std::ptrdiff_t blocksInUse();
};
