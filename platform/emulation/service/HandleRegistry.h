#pragma once

#include "Ledger.h"

#include <deque>
#include <optional>
#include <unordered_map>
#include <utility>

/// The handles of one kind that clients hold, each with its record. A handle's place in memory is never used for
/// another one, so that a handle is known as dead however long ago it was released.
template <class Handle, class Record>
class HandleRegistry {
public:
    [[nodiscard]] Handle* add(Record record) {
        Handle* const handle = &places_.emplace_back();
        records_.emplace(handle, std::move(record));
        return handle;
    }
    /// Null when the handle is dead or never was.
    [[nodiscard]] Record* find(const void* handle) {
        const auto found = records_.find(handle);
        return found != records_.end() ? &found->second : nullptr;
    }
    /// Ends a handle and returns its record; nothing, and a bad release in the ledger, if it is dead already.
    std::optional<Record> release(const void* handle) {
        const auto found = records_.find(handle);
        if (found == records_.end()) {
            ++Ledger::instance().badReleases;
            return std::nullopt;
        }
        std::optional<Record> record(std::move(found->second));
        records_.erase(found);
        return record;
    }
    void clear() { records_.clear(); }

private:
    std::deque<Handle> places_;
    std::unordered_map<const void*, Record> records_;
};
