#pragma once

#include "KvCErrorManager.h"
#include "KvPlatformExport.h"

#include <cstddef>
#include <cstdint>

/// Operating system services of the maker's abstraction layer. An IPv4 address is a 32-bit number whose bytes in
/// memory are the address's bytes in order ("network byte order").
namespace KvNRtosAbstraction {

/// Suspends the calling thread for at least `microseconds`.
KV_PLATFORM_API void usleep(std::uint32_t microseconds);

/// Writes the dotted text of `address`, zero-terminated, into `buffer` of `length` usable characters; a text that
/// does not fit is cut.
KV_PLATFORM_API void ipToString(std::uint32_t address, char* buffer, std::size_t length);

/// Parses four decimal numbers of 0 to 255 with dots between. Anything else adds an error to `errors`, and the
/// result is 0.
[[nodiscard]] KV_PLATFORM_API std::uint32_t stringToIpV4(KvCErrorListPool& errors, const char* text);

} // namespace KvNRtosAbstraction
