#include "FailingMemory.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

/// Allocations to go until the one that fails; 0: none fails.
std::atomic<std::size_t> remaining{0};
std::atomic<bool> isLasting{false};
std::atomic<std::size_t> allocated{0};
std::atomic<bool> struck{false};
std::atomic<std::ptrdiff_t> inUse{0};

bool isToFail() {
    if (remaining == 0) {
        return false;
    }
    ++allocated;
    const bool fails = remaining == 1;
    if (!fails || !isLasting) {
        --remaining;
    }
    return fails;
}

void* allocate(std::size_t size) {
    if (isToFail()) {
        struck = true;
        throw std::bad_alloc();
    }
    void* const block = std::malloc(size > 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++inUse;
    return block;
}

void release(void* block) noexcept {
    if (block != nullptr) {
        --inUse;
        std::free(block);
    }
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}

void* operator new[](std::size_t size) {
    return allocate(size);
}

// The forms that yield null are replaced too: a sanitizer's own would not pair with the deletes below.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return ::operator new(size, tag);
}

void operator delete(void* block) noexcept {
    release(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    release(block);
}

void operator delete[](void* block) noexcept {
    release(block);
}

void operator delete[](void* block, std::size_t /*size*/) noexcept {
    release(block);
}

FailingMemory::FailingMemory(std::size_t number, Exhaustion exhaustion) {
    struck = false;
    allocated = 0;
    isLasting = exhaustion == Exhaustion::lasting;
    remaining = number;
}

FailingMemory::~FailingMemory() {
    remaining = 0;
}

std::size_t FailingMemory::allocations() {
    return allocated;
}

bool FailingMemory::hasStruck() {
    return struck;
}

std::ptrdiff_t FailingMemory::blocksInUse() {
    return inUse;
}
