#pragma once

#include "UpdateFileReaders.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The big-endian number of `width` bytes at `offset`; bytes behind the end are 0.
[[nodiscard]] inline std::uint32_t bigEndian(std::string_view bytes, std::size_t offset, std::size_t width) {
    std::uint32_t number = 0;
    for (std::size_t position = offset; position < offset + width; ++position) {
        const unsigned byte = position < bytes.size() ? static_cast<unsigned char>(bytes[position]) : 0U;
        number = number << 8U | byte;
    }
    return number;
}

[[nodiscard]] inline bool isSameHeader(const KvTUpdateFileHeader& a, const KvTUpdateFileHeader& b) {
    return a.minHwCompatibilityId == b.minHwCompatibilityId && a.maxHwCompatibilityId == b.maxHwCompatibilityId &&
           a.minSwCompatibilityId == b.minSwCompatibilityId && a.maxSwCompatibilityId == b.maxSwCompatibilityId &&
           a.typeId == b.typeId && a.checksum == b.checksum && a.version == b.version;
}

/// A header that no file has, to see what a reader leaves alone.
[[nodiscard]] inline KvTUpdateFileHeader markedHeader() {
    KvTUpdateFileHeader header;
    header.minHwCompatibilityId = 0x11111111;
    header.maxHwCompatibilityId = 0x22222222;
    header.minSwCompatibilityId = 0x33333333;
    header.maxSwCompatibilityId = 0x44444444;
    header.typeId = 0x55555555;
    header.checksum = 0x66666666;
    header.version = KvCVersion(77, 77, 77, 7, 7777, 7777);
    return header;
}
