#pragma once

#include "KvCVersion.h"
#include "KvTArchiveFile.h"

#include <cstdint>
#include <string>

/// How much of an update file there is.
enum class KvEFileExtent : std::uint8_t {
    /// As far as its beginning shows, nothing is missing.
    whole,
    empty,
    /// It ends before its header does.
    cutInHeader
};

/// Identifiers from `lowest` to `highest`; unknownValue for an end that is not stated.
struct KvTIdRange {
    std::uint32_t lowest = unknownValue;
    std::uint32_t highest = unknownValue;

    /// False if neither end is stated. A header that leaves its identifiers out has zeros in their place.
    [[nodiscard]] bool isStated() const {
        const bool isUnknown = lowest == unknownValue && highest == unknownValue;
        return !isUnknown && (lowest != 0 || highest != 0);
    }
    [[nodiscard]] bool contains(std::uint64_t id) const {
        return (lowest == unknownValue || id >= lowest) && (highest == unknownValue || id <= highest);
    }
};

/// What the header of an update file tells; what it does not tell is unknownValue or unknownVersion().
struct KvTUpdateFileHeader {
    std::uint32_t minHwCompatibilityId = unknownValue;
    std::uint32_t maxHwCompatibilityId = unknownValue;
    std::uint32_t minSwCompatibilityId = unknownValue;
    std::uint32_t maxSwCompatibilityId = unknownValue;
    std::uint32_t typeId = unknownValue;
    /// CRC-32 as stored in the file.
    std::uint32_t checksum = unknownValue;
    KvCVersion version = unknownVersion();
    /// False if the file states something that could not be read, which counts as not stated.
    bool isWhole = true;
    /// Set by readUpdateFile() alone, of every file that it could read.
    KvEFileExtent extent = KvEFileExtent::whole;

    /// The identifiers of elements that the file is for.
    /// @{
    [[nodiscard]] KvTIdRange hwCompatibilityIds() const { return {minHwCompatibilityId, maxHwCompatibilityId}; }
    [[nodiscard]] KvTIdRange swCompatibilityIds() const { return {minSwCompatibilityId, maxSwCompatibilityId}; }
    /// @}
};

enum class KvEReadStatus : std::uint8_t { success = 0, notThisKind = 1, cannotOpen = 2 };

// The readers fill `header` when they succeed, and leave it alone otherwise.

/// Reads the header of a firmware image, from the first 1000 bytes of the file.
[[nodiscard]] KvEReadStatus readImageHeader(const std::wstring& path, KvTUpdateFileHeader& header);

/// Reads the FIRMWARE node of an inventory tree file. Never cannotOpen.
[[nodiscard]] KvEReadStatus readInventoryFile(const std::wstring& path, KvTUpdateFileHeader& header);

/// Reads the checksum of an FPGA bitstream. Success with `checksum` unknown when the header is too short to hold one;
/// after any other result it is unknown too. Never cannotOpen.
[[nodiscard]] KvEReadStatus readBitstreamHeader(const std::wstring& path, std::uint32_t& checksum);

/// Tries the three kinds in turn: firmware image, inventory tree, bitstream. A file that cannot be opened is not
/// tried further. An image that is cut in its header reads as zeros beyond its end; a bitstream may be not of this kind
/// then.
[[nodiscard]] KvEReadStatus readUpdateFile(const std::wstring& path, KvTUpdateFileHeader& header);
