#include "KvCErrorManager.h"

#include "EmulationErrors.h"
#include "Ledger.h"

#include <iterator>
#include <mutex>
#include <new>
#include <unordered_set>
#include <utility>
#include <vector>

struct KvCErrorListPool::Impl {
    /// Guards everything below. getErrorCountLock() keeps it locked beyond the call.
    std::recursive_mutex mutex;
    std::vector<KvTErrorEntry> entries;
    /// Errors for which there was no memory. They count, and stand behind the entries as one that says so.
    std::uint32_t lost = 0;
    /// getErrorCountLock() calls without their getErrorCountUnlock(). Whoever holds `mutex` and finds it above 0 made
    /// them.
    std::uint32_t countLocks = 0;

    [[nodiscard]] std::uint32_t count() const { return static_cast<std::uint32_t>(entries.size()) + lost; }
    [[nodiscard]] const KvTErrorEntry& entryAt(std::uint32_t index) const {
        static const KvTErrorEntry none;
        static const KvTErrorEntry lostOne = memoryExhaustedError();
        if (index < entries.size()) {
            return entries[index];
        }
        return index < count() ? lostOne : none;
    }
};

KvCErrorListPool::KvCErrorListPool() : impl_(std::make_unique<Impl>()) {}

KvCErrorListPool::~KvCErrorListPool() {
    const std::lock_guard guard(impl_->mutex);
    // What is still locked stays in the ledger, which counts unbalanced calls; a mutex must not be destroyed locked.
    for (; impl_->countLocks > 0; --impl_->countLocks) {
        impl_->mutex.unlock();
    }
}

KvCErrorListPool& KvCErrorListPool::operator+=(const KvCErrorListPool& other) {
    std::vector<KvTErrorEntry> added;
    std::uint32_t lost = 0;
    {
        const std::lock_guard guard(other.impl_->mutex);
        lost = other.impl_->lost;
        try {
            added = other.impl_->entries;
        } catch (const std::bad_alloc&) {
            lost = other.impl_->count();
        }
    }
    const std::lock_guard guard(impl_->mutex);
    impl_->lost += lost;
    try {
        impl_->entries.insert(impl_->entries.end(), std::make_move_iterator(added.begin()),
                              std::make_move_iterator(added.end()));
    } catch (const std::bad_alloc&) {
        impl_->lost += static_cast<std::uint32_t>(added.size());
    }
    return *this;
}

void KvCErrorListPool::addError(KvTErrorEntry entry) {
    const std::lock_guard guard(impl_->mutex);
    try {
        impl_->entries.push_back(std::move(entry));
    } catch (const std::bad_alloc&) {
        ++impl_->lost;
    }
}

void KvCErrorListPool::reset() {
    const std::lock_guard guard(impl_->mutex);
    impl_->entries.clear();
    impl_->lost = 0;
}

std::uint32_t KvCErrorListPool::getErrorCount() const {
    const std::lock_guard guard(impl_->mutex);
    return impl_->count();
}

std::uint32_t KvCErrorListPool::getErrorCountLock() {
    impl_->mutex.lock();
    ++impl_->countLocks;
    ++Ledger::instance().countLocks;
    return impl_->count();
}

std::uint32_t KvCErrorListPool::getErrorCountUnlock() {
    const std::lock_guard guard(impl_->mutex);
    if (impl_->countLocks == 0) {
        ++Ledger::instance().badReleases;
    } else {
        --impl_->countLocks;
        --Ledger::instance().countLocks;
        impl_->mutex.unlock();
    }
    return impl_->count();
}

std::uint32_t KvCErrorListPool::getNumberOfUsedEntries() const {
    return getErrorCount();
}

std::uint32_t KvCErrorListPool::getOriginNode(std::uint32_t index) const {
    const std::lock_guard guard(impl_->mutex);
    return impl_->entryAt(index).originNode;
}

std::uint32_t KvCErrorListPool::getErrorCode(std::uint32_t index) const {
    const std::lock_guard guard(impl_->mutex);
    return impl_->entryAt(index).code;
}

std::uint64_t KvCErrorListPool::getTimeStamp(std::uint32_t index) const {
    const std::lock_guard guard(impl_->mutex);
    return impl_->entryAt(index).timeStamp;
}

std::uint32_t KvCErrorListPool::getMainModuleNumber(std::uint32_t index) const {
    const std::lock_guard guard(impl_->mutex);
    return impl_->entryAt(index).mainModule;
}

std::uint32_t KvCErrorListPool::getSubModuleNumber(std::uint32_t index) const {
    const std::lock_guard guard(impl_->mutex);
    return impl_->entryAt(index).subModule;
}

const char* KvCErrorListPool::getFunctionName(std::uint32_t index) const {
    const std::lock_guard guard(impl_->mutex);
    const std::string& name = impl_->entryAt(index).function;
    return name.empty() ? nullptr : name.c_str();
}

std::uint32_t KvCErrorListPool::getLineNumber(std::uint32_t index) const {
    const std::lock_guard guard(impl_->mutex);
    return impl_->entryAt(index).line;
}

const char* KvCErrorListPool::getErrorText(std::uint32_t index) const {
    const std::lock_guard guard(impl_->mutex);
    return impl_->entryAt(index).text.c_str();
}

struct KvCErrorManager::Impl {
    KvCErrorList masterList;
    std::mutex mutex;
    /// The lists of clients, guarded by `mutex`.
    std::unordered_set<KvCErrorList*> lists;
};

namespace {

/// Made when the library is loaded: later on memory may be exhausted.
[[maybe_unused]] const KvCErrorManager* const madeAtLoad = KvCErrorManager::getInstance();

} // namespace

KvCErrorManager::KvCErrorManager() : impl_(std::make_unique<Impl>()) {}
KvCErrorManager::~KvCErrorManager() = default;

KvCErrorManager* KvCErrorManager::getInstance() {
    // Never destroyed: destructors of static objects may still report errors.
    static auto* const manager = new KvCErrorManager;
    return manager;
}

KvCErrorListPool& KvCErrorManager::getMasterErrorList() {
    return impl_->masterList;
}

KvCErrorList* KvCErrorManager::createErrorList(std::uint32_t /*ownerId*/, std::uint32_t /*listKind*/,
                                               std::uint32_t /*entryCount*/, std::uint32_t /*parametersPerEntry*/,
                                               std::uint32_t /*textSize*/) {
    auto* const list = new KvCErrorList;
    try {
        const std::lock_guard guard(impl_->mutex);
        impl_->lists.insert(list);
    } catch (...) {
        delete list;
        throw;
    }
    ++Ledger::instance().errorLists;
    return list;
}

void KvCErrorManager::deleteErrorList(KvCErrorList* list) {
    if (list == nullptr) {
        return;
    }
    {
        const std::lock_guard guard(impl_->mutex);
        if (impl_->lists.erase(list) == 0) {
            ++Ledger::instance().badReleases;
            return;
        }
    }
    --Ledger::instance().errorLists;
    delete list;
}

void KvCErrorManager::sendErrorList(KvCErrorList* /*list*/, std::uint32_t /*destination*/) {
    // An emulated service has no system log to write to.
}

double KvCErrorManager::getTimeStampTickDuration() const {
    return 1.0e-6;
}
