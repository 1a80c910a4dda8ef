#pragma once

#include <atomic>
#include <cstdint>

/// Process-wide counts behind KvEmulation::ledger(): what clients created and did not release.
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

    static Ledger& instance();
};
