#pragma once

#include "KvPlatformExport.h"

#include <cstdint>
#include <memory>
#include <string>

/// One collected error.
struct KvTErrorEntry {
    /// What went wrong, a number of the reporting module.
    std::uint32_t code = 0;
    /// The same as a sentence; UTF-8.
    std::string text;
    /// 0: the error arose on the host; otherwise the serial number of the target node that reported it.
    std::uint32_t originNode = 0;
    /// Ticks of KvCErrorManager::getTimeStampTickDuration() since the error manager's time base; 0: none.
    std::uint64_t timeStamp = 0;
    /// Module that reports the error.
    std::uint32_t mainModule = 0;
    /// Part of that module.
    std::uint32_t subModule = 0;
    /// Name of the reporting function; may be empty.
    std::string function;
    /// Line of its source; 0: unknown.
    std::uint32_t line = 0;
};

/// A list of collected errors. Every operation of the device access libraries takes one and appends to it when it
/// fails: a call is judged by comparing the error count before and after it. The pair getErrorCountLock() and
/// getErrorCountUnlock() keeps the list locked for other threads in between; the calling thread may go on using it.
/// Indices count from 0; beyond getNumberOfUsedEntries() there are 0 and empty texts. An error for which there is no
/// memory counts all the same; its entry says that memory is exhausted.
class KV_PLATFORM_API KvCErrorListPool {
public:
    KvCErrorListPool(const KvCErrorListPool&) = delete;
    KvCErrorListPool(KvCErrorListPool&&) = delete;
    KvCErrorListPool& operator=(const KvCErrorListPool&) = delete;
    KvCErrorListPool& operator=(KvCErrorListPool&&) = delete;

    /// Appends copies of all entries of `other`.
    KvCErrorListPool& operator+=(const KvCErrorListPool& other);
    /// Appends one entry.
    void addError(KvTErrorEntry entry);
    /// Removes all entries.
    void reset();

    /// The number of errors that were added since the list was made or reset.
    [[nodiscard]] std::uint32_t getErrorCount() const;
    /// Locks the list and returns its error count.
    [[nodiscard]] std::uint32_t getErrorCountLock();
    /// Returns the error count and unlocks the list; pairs with getErrorCountLock() on the same thread. Throws nothing.
    [[nodiscard]] std::uint32_t getErrorCountUnlock();

    /// The number of errors that can be looked at.
    [[nodiscard]] std::uint32_t getNumberOfUsedEntries() const;
    /// The values of an entry; see KvTErrorEntry.
    /// @{
    [[nodiscard]] std::uint32_t getOriginNode(std::uint32_t index) const;
    [[nodiscard]] std::uint32_t getErrorCode(std::uint32_t index) const;
    [[nodiscard]] std::uint64_t getTimeStamp(std::uint32_t index) const;
    [[nodiscard]] std::uint32_t getMainModuleNumber(std::uint32_t index) const;
    [[nodiscard]] std::uint32_t getSubModuleNumber(std::uint32_t index) const;
    [[nodiscard]] std::uint32_t getLineNumber(std::uint32_t index) const;
    /// @}
    /// Null when the entry names no function; valid until the list changes.
    [[nodiscard]] const char* getFunctionName(std::uint32_t index) const;
    /// Never null; valid until the list changes.
    [[nodiscard]] const char* getErrorText(std::uint32_t index) const;

protected:
    KvCErrorListPool();
    ~KvCErrorListPool();

private:
    friend class KvCErrorManager;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// An error list of its own, made and released by the error manager.
class KV_PLATFORM_API KvCErrorList final : public KvCErrorListPool {
public:
    KvCErrorList(const KvCErrorList&) = delete;
    KvCErrorList(KvCErrorList&&) = delete;
    KvCErrorList& operator=(const KvCErrorList&) = delete;
    KvCErrorList& operator=(KvCErrorList&&) = delete;

private:
    friend class KvCErrorManager;
    KvCErrorList() = default;
    ~KvCErrorList() = default;
};

/// The process's one error manager. Safe to use from several threads.
class KV_PLATFORM_API KvCErrorManager {
public:
    KvCErrorManager(const KvCErrorManager&) = delete;
    KvCErrorManager(KvCErrorManager&&) = delete;
    KvCErrorManager& operator=(const KvCErrorManager&) = delete;
    KvCErrorManager& operator=(KvCErrorManager&&) = delete;

    /// Never null; lives as long as the process.
    static KvCErrorManager* getInstance();

    /// The process's master list: owned by the manager, never deleted. Only calls that are given it add to it.
    [[nodiscard]] KvCErrorListPool& getMasterErrorList();

    /// Creates an empty list, to be released with deleteErrorList(). The sizes are reservations, not limits; owner and
    /// kind are numbers of the maker's logging.
    /// Throws std::bad_alloc when memory is exhausted; never null.
    [[nodiscard]] KvCErrorList* createErrorList(std::uint32_t ownerId, std::uint32_t listKind, std::uint32_t entryCount,
                                                std::uint32_t parametersPerEntry, std::uint32_t textSize);
    /// Releases a list of createErrorList(); null is ignored. Throws nothing.
    void deleteErrorList(KvCErrorList* list);
    /// Hands the entries of `list` to the system's error logging; `list` stays as it is and with its owner.
    void sendErrorList(KvCErrorList* list, std::uint32_t destination);

    /// Length of one time stamp tick in seconds.
    [[nodiscard]] double getTimeStampTickDuration() const;

private:
    KvCErrorManager();
    ~KvCErrorManager();
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
