#include "UpdateFiles.h"

namespace {

/// Writes the lowest `width` bytes of `number`, most significant first.
void put(std::string& bytes, std::size_t offset, std::size_t width, std::uint64_t number) {
    for (std::size_t index = 0; index < width; ++index) {
        bytes[offset + index] = static_cast<char>((number >> (8 * (width - 1 - index))) & 0xFFU);
    }
}

} // namespace

std::string firmwareImage(const KvCVersion& version, std::uint32_t checksum, std::uint8_t kind) {
    constexpr std::size_t size = 400;
    std::string bytes(size, '\0');
    put(bytes, 40, 4, 0x1255AA34);
    put(bytes, 44, 4, 0xAA184755);
    put(bytes, 60, 4, checksum);
    put(bytes, 76, 1, version.getMar());
    put(bytes, 77, 1, version.getMir());
    put(bytes, 78, 1, version.getMai());
    put(bytes, 79, 1, kind);
    put(bytes, 80, 2, version.getSpn());
    put(bytes, 82, 2, version.getPlv());
    return bytes;
}

std::string withHardwareIds(std::string image, std::uint32_t lowest, std::uint32_t highest) {
    put(image, 344, 4, lowest);
    put(image, 348, 4, highest);
    return image;
}

std::string withSoftwareIds(std::string image, std::uint32_t lowest, std::uint32_t highest) {
    put(image, 352, 4, lowest);
    put(image, 356, 4, highest);
    return image;
}

std::string bitstream(std::uint32_t checksum, std::uint32_t headerSize) {
    constexpr std::size_t size = 200;
    std::string bytes(size, '\0');
    bytes.replace(0, 8, "kvFPGABS");
    put(bytes, 8, 4, headerSize);
    put(bytes, 12, 4, 1);
    put(bytes, 88, 4, checksum);
    return bytes;
}
