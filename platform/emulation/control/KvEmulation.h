#pragma once

#include "KvPlatformExport.h"

#include <cstdint>
#include <string>
#include <vector>

/// Control of the emulated device access service: which emulated targets it serves, and what clients still hold of
/// it. Not part of the imported interfaces: only a program that wants to emulate uses it.
namespace KvEmulation {

/// Outcome of serve().
struct KvTServeResult {
    /// False: the folder is not served, and `error` says why.
    bool served = false;
    /// "FILE: PATH: what was expected" of a description that was refused; no line end.
    std::string error;
    /// What is odd about the description but does not keep it from being served; one sentence each.
    std::vector<std::string> warnings;
    /// The addresses at which the target is served, in dotted form, in the order of the description.
    std::vector<std::string> addresses;
};

/// Everything that clients created and did not release, and the sleeps that they asked for.
struct KvTLedger {
    /// What is held, by kind.
    /// @{
    std::uint32_t errorLists = 0;
    std::uint32_t filters = 0;
    std::uint32_t deviceHandles = 0;
    std::uint32_t transferClients = 0;
    std::uint32_t rootHandles = 0;
    std::uint32_t inventoryTrees = 0;
    std::uint32_t locks = 0;
    std::uint32_t remoteFiles = 0;
    /// @}
    /// Unbalanced getErrorCountLock() calls of all lists.
    std::uint32_t countLocks = 0;
    /// Releases of something that does not exist (any more).
    std::uint32_t badReleases = 0;
    /// Calls that one or more faults hit since the last reset().
    std::uint32_t faultsMet = 0;
    /// Unscaled sum of all KvNRtosAbstraction::usleep() calls since the last reset().
    std::uint64_t sleptMicroseconds = 0;
    /// The number of those calls.
    std::uint32_t sleeps = 0;

    /// True when nothing is held and nothing was released twice.
    [[nodiscard]] bool isClean() const {
        return errorLists + filters + deviceHandles + transferClients + rootHandles + inventoryTrees + locks +
                   remoteFiles + countLocks + badReleases ==
               0;
    }
};

/// Loads the emulated target in `folder` (UTF-8) and serves it from now on, beside those served already.
[[nodiscard]] KV_PLATFORM_API KvTServeResult serve(const std::string& folder);

/// What is held at this moment.
[[nodiscard]] KV_PLATFORM_API KvTLedger ledger();

/// The names of the imported operations at which descriptions can put faults.
[[nodiscard]] KV_PLATFORM_API std::vector<std::string> faultOperations();

/// Serves no target any more, forgets call counts of faults and the ledger's sums, empties the master error list and
/// ends every lock. For tests, between sessions; handles still held are dead afterwards.
KV_PLATFORM_API void reset();

} // namespace KvEmulation
