#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// A package is a ustar archive (POSIX.1-1988) that can be written in one way only: each file has a header of 512 bytes
// that its name, its size and the moment of sealing determine, and zeros to the next multiple of 512; 1024 zeros end
// it. So that whatever differs in a single byte is refused.

/// A header, and what sizes are multiples of.
inline constexpr std::size_t packageBlock = 512;
/// The zeros at the end.
inline constexpr std::size_t packageEnd = 2 * packageBlock;

using KvTPackageHeader = std::array<char, packageBlock>;

/// The values of a header.
struct KvTPackedFile {
    /// At most longestPackedName bytes.
    std::string name;
    /// In bytes, at most largestPackedFile.
    std::uint64_t size = 0;
    /// At most 8^11 - 1 seconds after 1970, which is in the year 2242.
    std::chrono::sys_seconds time;
};

/// The header of a file.
[[nodiscard]] KvTPackageHeader headerOf(const KvTPackedFile& file);

/// The values of a header; nothing unless it is the one that headerOf() makes of them.
[[nodiscard]] std::optional<KvTPackedFile> readHeader(const KvTPackageHeader& header);

/// Number of zeros behind a file of this size.
[[nodiscard]] constexpr std::uint64_t paddingOf(std::uint64_t size) {
    return (packageBlock - size % packageBlock) % packageBlock;
}
