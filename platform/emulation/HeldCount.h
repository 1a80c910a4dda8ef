#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

/// One of what a count of the ledger counts: raises it at once, lowers it when released or destroyed.
class HeldCount {
public:
    explicit HeldCount(std::atomic<std::uint32_t>& count) noexcept : count_(&count) { ++count; }
    HeldCount(HeldCount&& other) noexcept : count_(std::exchange(other.count_, nullptr)) {}
    HeldCount& operator=(HeldCount&& other) noexcept {
        if (this != &other) {
            release();
            count_ = std::exchange(other.count_, nullptr);
        }
        return *this;
    }
    HeldCount(const HeldCount&) = delete;
    HeldCount& operator=(const HeldCount&) = delete;
    ~HeldCount() { release(); }

    /// Does nothing when released already.
    void release() noexcept {
        if (count_ != nullptr) {
            --*count_;
            count_ = nullptr;
        }
    }

private:
    std::atomic<std::uint32_t>* count_;
};
