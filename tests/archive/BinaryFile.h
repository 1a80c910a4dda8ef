#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The bytes of a binary file; numbers are written big-endian.
class BinaryFile {
public:
    /// A file of zeros.
    explicit BinaryFile(std::size_t size) : bytes_(size, '\0') {}

    BinaryFile& put8(std::size_t offset, std::uint8_t value);
    BinaryFile& put16(std::size_t offset, std::uint16_t value);
    BinaryFile& put32(std::size_t offset, std::uint32_t value);
    BinaryFile& putText(std::size_t offset, std::string_view text);
    /// Fills the file with bytes that differ from their neighbours and are never 0.
    BinaryFile& fillWithNoise();
    /// Cuts the file, or goes on with zeros.
    BinaryFile& resize(std::size_t size);

    [[nodiscard]] const std::string& bytes() const { return bytes_; }
    [[nodiscard]] std::uint8_t at(std::size_t offset) const { return static_cast<std::uint8_t>(bytes_.at(offset)); }

private:
    std::string bytes_;
};

/// A firmware image of 1000 bytes with its two magic words and this checksum.
[[nodiscard]] BinaryFile imageFile(std::uint32_t checksum);

/// An FPGA bitstream of 200 bytes: format version 1, this header size and, at its place, this checksum.
[[nodiscard]] BinaryFile bitstreamFile(std::uint32_t headerSize, std::uint32_t checksum);

/// An inventory tree file whose tree is a root with one FIRMWARE node below it; `parameters` are the members of the
/// node's "parameters" as JSON text, `more` is what follows the tree in the document (`, "checksumCrc32": 7`).
[[nodiscard]] std::string treeFile(std::string_view parameters, std::string_view more = "");
