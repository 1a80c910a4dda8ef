// The header of an FPGA bitstream.

#include "FuzzFolder.h"
#include "HeaderBytes.h"
#include "Property.h"
#include "ServiceState.h"
#include "UpdateFileReaders.h"

#include <string_view>

namespace {

constexpr std::size_t headSize = 92;

bool isBitstream(std::string_view bytes) {
    return bytes.size() >= headSize && bytes.starts_with("kvFPGABS") && bigEndian(bytes, 12, 4) == 1;
}

std::uint32_t expectedChecksum(std::string_view bytes) {
    return bigEndian(bytes, 8, 4) >= headSize ? bigEndian(bytes, 88, 4) : unknownValue;
}

} // namespace

/// The bytes of the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    static const std::wstring path = folder.wideText("bitstream");
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    folder.write("bitstream", bytes);

    const bool isOne = isBitstream(bytes);
    KvTUpdateFileHeader expected;
    expected.checksum = isOne ? expectedChecksum(bytes) : unknownValue;
    std::uint32_t checksum = 0x66666666;
    const KvEReadStatus status = readBitstreamHeader(path, checksum);
    require(status == (isOne ? KvEReadStatus::success : KvEReadStatus::notThisKind),
            "Magic, format version and a whole head make a bitstream.");
    require(checksum == expected.checksum, "The checksum is that of the header, or unknown.");

    KvTUpdateFileHeader any = markedHeader();
    const KvEReadStatus anyStatus = readUpdateFile(path, any);
    KvTUpdateFileHeader image;
    if (isOne && readImageHeader(path, image) != KvEReadStatus::success) {
        require(anyStatus == KvEReadStatus::success, "A bitstream is an update file.");
        require(isSameHeader(any, expected), "A bitstream tells its checksum and nothing else.");
    }
    require(readBitstreamHeader(folder.wideText("missing"), checksum) == KvEReadStatus::notThisKind &&
                checksum == unknownValue,
            "A file that is not there is no bitstream.");
    requireNothingHeld();
    return 0;
}
