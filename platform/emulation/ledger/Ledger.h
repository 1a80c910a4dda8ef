#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

/// Counts of the things that clients of this process hold, of their wrong releases, and of their sleeps.
struct Ledger {
    std::atomic<std::uint32_t> errorLists{0};
    std::atomic<std::uint32_t> filters{0};
    std::atomic<std::uint32_t> deviceHandles{0};
    std::atomic<std::uint32_t> transferClients{0};
    std::atomic<std::uint32_t> rootHandles{0};
    std::atomic<std::uint32_t> inventoryTrees{0};
    std::atomic<std::uint32_t> locks{0};
    std::atomic<std::uint32_t> remoteFiles{0};
    std::atomic<std::uint32_t> countLocks{0};
    std::atomic<std::uint32_t> badReleases{0};
    std::atomic<std::uint32_t> faultsMet{0};
    std::atomic<std::uint64_t> sleptMicroseconds{0};
    std::atomic<std::uint32_t> sleeps{0};

    static Ledger& instance() {
        static Ledger ledger;
        return ledger;
    }
};

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
