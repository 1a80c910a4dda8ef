#include "Handles.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

namespace {

struct Handles {
    std::mutex mutex;
    std::map<std::uintptr_t, std::shared_ptr<KvCHandled>> objects;
    std::uintptr_t last = 0;
};

/// Never destroyed: clients may free handles while the process ends.
Handles& handles() {
    static auto* const all = new Handles;
    return *all;
}

std::uintptr_t numberOf(const void* handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

} // namespace

void* addHandle(std::shared_ptr<KvCHandled> object) {
    Handles& all = handles();
    const std::lock_guard lock(all.mutex);
    all.objects.emplace(all.last + 1, std::move(object));
    ++all.last;
    return reinterpret_cast<void*>(all.last); // NOLINT(performance-no-int-to-ptr): it is never followed
}

std::shared_ptr<KvCHandled> findHandled(const void* handle) {
    Handles& all = handles();
    const std::lock_guard lock(all.mutex);
    const auto found = all.objects.find(numberOf(handle));
    return found != all.objects.end() ? found->second : nullptr;
}

void removeHandle(const void* handle) {
    Handles& all = handles();
    std::shared_ptr<KvCHandled> object;
    const std::lock_guard lock(all.mutex);
    const auto found = all.objects.find(numberOf(handle));
    if (found != all.objects.end()) {
        object = std::move(found->second); // ends with the caller, who has it, too
        all.objects.erase(found);
    }
}
