#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryManager.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Stands in for the inventory manager's lock, transfers and updates in the programs that are linked with it: keeps
/// every call with its arguments. Each call succeeds, and a started update has ended when it is first asked for.
class InventoryManagerStandIn {
public:
    static InventoryManagerStandIn& instance();

    struct Call {
        std::string operation;
        /// The operation with its arguments but for the error lists and the time stamp. The target's handle is "root",
        /// that of the lock "lock"; a remote file is "fileN", N counting the transfers from 1.
        std::string text;
        const KvCErrorListPool* errors = nullptr;
        /// The second list that updateErrors2 is given.
        const KvCErrorListPool* targetErrors = nullptr;
        /// How many error lists existed.
        std::uint32_t errorLists = 0;
    };
    [[nodiscard]] const std::vector<Call>& calls() const { return calls_; }
    [[nodiscard]] std::vector<std::string> texts() const;
    [[nodiscard]] std::vector<Call> callsOf(const std::string& operation) const;
    [[nodiscard]] std::vector<std::string> textsOf(const std::string& operation) const;
    /// The time stamps that updates were started with.
    [[nodiscard]] const std::vector<std::uint64_t>& timeStamps() const { return timeStamps_; }
    void forget();
    /// Called within each call, with its operation; null switches it off.
    void setVisitor(std::function<void(const std::string& operation)> visitor) { visitor_ = std::move(visitor); }

    // For the operations that this stands in for.

    void take(const std::string& operation, const std::vector<std::string>& arguments, const KvCErrorListPool& errors);
    void takeTargetErrors(const KvCErrorListPool& targetErrors) { calls_.back().targetErrors = &targetErrors; }
    void takeTimeStamp(std::uint64_t timeStamp) { timeStamps_.push_back(timeStamp); }
    [[nodiscard]] std::string nameOf(const KvCInventoryRootHandle* root);
    [[nodiscard]] std::string nameOf(const void* lockHandle) const;
    [[nodiscard]] void* makeLock() { return &lock_; }
    [[nodiscard]] KvNInventoryManager::KvSRemoteFileHandle makeFile();

private:
    InventoryManagerStandIn() = default;

    std::vector<Call> calls_;
    std::vector<std::uint64_t> timeStamps_;
    std::uint32_t transfers_ = 0;
    std::function<void(const std::string& operation)> visitor_;
    /// The handle of the first call, which all others are to name too.
    const KvCInventoryRootHandle* root_ = nullptr;
    /// Its address is the handle of the lock.
    char lock_ = 0;
};
