#include "KvEmulation.h"
#include "kvreflash_emulation.h"

#include <array>
#include <cstdio>
#include <exception>
#include <new>

namespace {

constexpr std::size_t longestError = 512;
constexpr std::uint32_t addressBytes = 16;

std::array<char, longestError>& lastError() {
    thread_local std::array<char, longestError> text{};
    return text;
}

std::int32_t fail(std::int32_t result, const char* why) {
    (void)std::snprintf(lastError().data(), lastError().size(), "%s", why);
    return result;
}

std::int32_t serve(const char* folder, char* address) {
    const KvEmulation::KvTServeResult served = KvEmulation::serve(folder);
    if (!served.served) {
        return fail(1, served.error.c_str());
    }
    if (address != nullptr) {
        const char* const first = served.addresses.empty() ? "" : served.addresses.front().c_str();
        (void)std::snprintf(address, addressBytes, "%s", first);
    }
    return 0;
}

/// Nothing leaves as an exception.
template <typename Operation>
std::int32_t guarded(const Operation& operation) {
    lastError().front() = '\0';
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return fail(-2, "out of memory");
    } catch (const std::exception& fault) {
        return fail(-1, fault.what());
    }
}

} // namespace

std::int32_t KVR_EMULATION_CALL kvr_emulation_serve(const char* folder, char* address, std::uint32_t address_size) {
    if (folder == nullptr || (address != nullptr && address_size < addressBytes)) {
        return fail(-1, "the folder is null, or the address has no room");
    }
    return guarded([&] { return serve(folder, address); });
}

std::int32_t KVR_EMULATION_CALL kvr_emulation_reset(void) {
    return guarded([] {
        KvEmulation::reset();
        return 0;
    });
}

const char* KVR_EMULATION_CALL kvr_emulation_last_error(void) {
    return lastError().data();
}
