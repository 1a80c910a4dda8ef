#include "KvIReflasher.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

// A client with an operator new of its own, which may yield null. Optimised programs count: only there do compilers
// rely on operator new never being null.

namespace {

/// What happens to the client's memory while it lives.
struct Memory {
    bool yieldsNull = false;
    std::size_t refused = 0;
    std::ptrdiff_t blocksInUse = 0;
};

Memory memory;

/// The compiler must not see when this is null.
void* allocate(std::size_t size) {
    if (memory.yieldsNull) {
        ++memory.refused;
        return nullptr;
    }
    void* const block = std::malloc(size > 0 ? size : 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++memory.blocksInUse;
    return block;
}

void release(void* block) noexcept {
    if (block != nullptr) {
        --memory.blocksInUse;
        std::free(block);
    }
}

void* (*volatile const unknownAllocate)(std::size_t) = allocate;

} // namespace

void* operator new(std::size_t size) {
    return unknownAllocate(size);
}

void* operator new[](std::size_t size) {
    return unknownAllocate(size);
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

TEST(NullBlock, CreateInstanceYieldsNullAndLeavesNothingAllocated) {
    KvNReflasher::KvTOptions options{};
    options.archiveFolder.assign(100, L'a');
    options.boardTypeFilter.assign(100, 'b');
    const std::ptrdiff_t before = memory.blocksInUse;
    // Its texts move into the call, so that only the session's block is asked for.
    KvNReflasher::KvTOptions copy = options;
    memory.yieldsNull = true;
    const KvIReflasher* const made = KvIReflasher::createInstance(std::move(copy));
    memory.yieldsNull = false;
    EXPECT_EQ(made, nullptr);
    EXPECT_EQ(memory.refused, 1U);
    EXPECT_EQ(memory.blocksInUse, before);
}

TEST(NullBlock, WithMemoryTheSessionIsMadeAndReleased) {
    const std::ptrdiff_t before = memory.blocksInUse;
    delete KvIReflasher::createInstance({});
    EXPECT_EQ(memory.blocksInUse, before);
}
