// The header of a firmware image.

#include "FuzzFolder.h"
#include "HeaderBytes.h"
#include "Property.h"
#include "ServiceState.h"
#include "UpdateFileReaders.h"

#include <string_view>

namespace {

/// What a file of these bytes should be read as; false when it is no firmware image.
bool expectedHeader(std::string_view bytes, KvTUpdateFileHeader& header) {
    if (bigEndian(bytes, 40, 4) != 0x1255AA34 || bigEndian(bytes, 44, 4) != 0xAA184755) {
        return false;
    }
    const std::uint32_t kind = bigEndian(bytes, 79, 1);
    const int build = kind == 10 ? 1 : kind == 11 ? 2 : 0;
    header.checksum = bigEndian(bytes, 60, 4);
    header.version = KvCVersion(
        static_cast<std::uint8_t>(bigEndian(bytes, 76, 1)), static_cast<std::uint8_t>(bigEndian(bytes, 77, 1)),
        static_cast<std::uint8_t>(bigEndian(bytes, 78, 1)), static_cast<std::uint8_t>(build),
        static_cast<std::uint16_t>(bigEndian(bytes, 80, 2)), static_cast<std::uint16_t>(bigEndian(bytes, 82, 2)));
    header.minHwCompatibilityId = bigEndian(bytes, 344, 4);
    header.maxHwCompatibilityId = bigEndian(bytes, 348, 4);
    header.minSwCompatibilityId = bigEndian(bytes, 352, 4);
    header.maxSwCompatibilityId = bigEndian(bytes, 356, 4);
    header.typeId = bigEndian(bytes, 360, 4);
    return true;
}

} // namespace

/// The bytes of the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    static const std::wstring path = folder.wideText("image");
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    folder.write("image", bytes);

    KvTUpdateFileHeader expected = markedHeader();
    const bool isImage = expectedHeader(bytes, expected);
    KvTUpdateFileHeader header = markedHeader();
    const KvEReadStatus status = readImageHeader(path, header);
    require(status == (isImage ? KvEReadStatus::success : KvEReadStatus::notThisKind),
            "Two magic numbers make a firmware image.");
    require(isSameHeader(header, expected), "A header is read as it stands in the file, or left alone.");

    KvTUpdateFileHeader any = markedHeader();
    const KvEReadStatus anyStatus = readUpdateFile(path, any);
    require(!isImage || (anyStatus == KvEReadStatus::success && isSameHeader(any, expected)),
            "A firmware image is taken for one before anything else.");
    require(anyStatus != KvEReadStatus::cannotOpen, "A file that is there can be opened.");
    require(anyStatus == KvEReadStatus::success || isSameHeader(any, markedHeader()),
            "A file that is no update file leaves the header alone.");
    requireNothingHeld();
    return 0;
}
