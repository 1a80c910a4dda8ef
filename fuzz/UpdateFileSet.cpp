#include "UpdateFileSet.h"

#include <cstddef>
#include <string>

namespace {

using namespace std::string_view_literals;

void put(std::string& bytes, std::size_t offset, std::string_view piece) {
    bytes.replace(offset, piece.size(), piece);
}

std::string image() {
    std::string bytes(400, '\0');
    put(bytes, 40, "\x12\x55\xAA\x34\xAA\x18\x47\x55"sv);
    put(bytes, 60, "\x12\x34\x56\x78"sv);
    put(bytes, 76, "\x17\x02\x01\x00\x00\x03"sv);
    return bytes;
}

std::string bitstream(char headerSize) {
    std::string bytes(100, '\0');
    put(bytes, 0, "kvFPGABS"sv);
    bytes[11] = headerSize;
    bytes[15] = 1;
    put(bytes, 88, "\xBA\xBE\x00\x01"sv);
    return bytes;
}

} // namespace

void writeUpdateFiles(const FuzzFolder& folder) {
    constexpr char wholeHead = 92;
    constexpr char shortHead = 80;
    folder.write("image", image());
    folder.write("tree", R"({"inventoryTree": {"id": "FIRMWARE", "parameters": {"CHECKSUM_CRC32": 22}}})");
    folder.write("bits", bitstream(wholeHead));
    folder.write("head", bitstream(shortHead));
    folder.write("text", "load motion\n");
}
