#include "BinaryFile.h"

#include "ArchiveBuilder.h"

BinaryFile& BinaryFile::put8(std::size_t offset, std::uint8_t value) {
    bytes_.at(offset) = static_cast<char>(value);
    return *this;
}

BinaryFile& BinaryFile::put16(std::size_t offset, std::uint16_t value) {
    return put8(offset, static_cast<std::uint8_t>(value / 0x100)).put8(offset + 1, static_cast<std::uint8_t>(value));
}

BinaryFile& BinaryFile::put32(std::size_t offset, std::uint32_t value) {
    return put16(offset, static_cast<std::uint16_t>(value / 0x10000))
        .put16(offset + 2, static_cast<std::uint16_t>(value));
}

BinaryFile& BinaryFile::putText(std::size_t offset, std::string_view text) {
    bytes_.replace(offset, text.size(), text);
    return *this;
}

BinaryFile& BinaryFile::fillWithNoise() {
    for (std::size_t offset = 0; offset < bytes_.size(); ++offset) {
        put8(offset, static_cast<std::uint8_t>(1 + offset * 37 % 251));
    }
    return *this;
}

BinaryFile& BinaryFile::resize(std::size_t size) {
    bytes_.resize(size);
    return *this;
}

BinaryFile imageFile(std::uint32_t checksum) {
    return BinaryFile(1000).put32(40, 0x1255AA34).put32(44, 0xAA184755).put32(60, checksum);
}

BinaryFile bitstreamFile(std::uint32_t headerSize, std::uint32_t checksum) {
    return BinaryFile(200).putText(0, "kvFPGABS").put32(8, headerSize).put32(12, 1).put32(88, checksum);
}

std::string treeFile(std::string_view parameters, std::string_view more) {
    return joined(R"({"inventoryTree": {"id": "ROOT", "items": [{"id": "FIRMWARE", "parameters": {)", parameters,
                  "}}]}", more, "}");
}
