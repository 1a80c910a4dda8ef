#include "UpdateFileContents.h"

#include "FileBytes.h"
#include "InventoryTreeFile.h"
#include "KvCVersion.h"
#include "KvNInventoryIDs.h"

#include <boost/crc.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

/// The first bytes of a file; what is beyond its end reads as 0.
class FileHead {
public:
    static constexpr std::size_t capacity = 1000;

    explicit FileHead(std::FILE& file) : size_(std::fread(bytes_.data(), 1, bytes_.size(), &file)) {}

    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] std::uint8_t byteAt(std::size_t offset) const { return bytes_[offset]; }
    [[nodiscard]] std::uint16_t wordAt(std::size_t offset) const {
        return static_cast<std::uint16_t>(byteAt(offset) << 8U | byteAt(offset + 1));
    }
    [[nodiscard]] std::uint32_t longAt(std::size_t offset) const {
        return static_cast<std::uint32_t>(wordAt(offset)) << 16U | wordAt(offset + 2);
    }
    [[nodiscard]] bool beginsWith(std::string_view text) const {
        return std::string_view(reinterpret_cast<const char*>(bytes_.data()), bytes_.size()).substr(0, text.size()) ==
               text;
    }

private:
    std::array<std::uint8_t, capacity> bytes_{};
    std::size_t size_;
};

/// Layout of the headers: offsets of big-endian numbers.
namespace Image {
constexpr std::size_t firstMagicAt = 40;
constexpr std::size_t secondMagicAt = 44;
constexpr std::uint32_t firstMagic = 0x1255AA34;
constexpr std::uint32_t secondMagic = 0xAA184755;
constexpr std::size_t checksumAt = 60;
constexpr std::size_t majorAt = 76;
constexpr std::size_t minorAt = 77;
constexpr std::size_t maintenanceAt = 78;
constexpr std::size_t releaseKindAt = 79;
constexpr std::size_t servicePackAt = 80;
constexpr std::size_t patchLevelAt = 82;
constexpr std::uint8_t alphaKind = 10;
constexpr std::uint8_t betaKind = 11;
} // namespace Image

namespace Bitstream {
constexpr std::string_view magic = "kvFPGABS";
constexpr std::size_t headerSizeAt = 8;
constexpr std::size_t formatVersionAt = 12;
constexpr std::uint32_t formatVersion = 1;
constexpr std::size_t checksumAt = 88;
constexpr std::size_t fullHeaderSize = 92;
} // namespace Bitstream

bool isImage(const FileHead& head) {
    return head.longAt(Image::firstMagicAt) == Image::firstMagic &&
           head.longAt(Image::secondMagicAt) == Image::secondMagic;
}

std::uint8_t servicePackBuildOf(std::uint8_t releaseKind) {
    if (releaseKind == Image::alphaKind) {
        return 1;
    }
    return releaseKind == Image::betaKind ? 2 : 0;
}

InstalledValues imageContents(const FileHead& head) {
    const KvCVersion version(head.byteAt(Image::majorAt), head.byteAt(Image::minorAt),
                             head.byteAt(Image::maintenanceAt), servicePackBuildOf(head.byteAt(Image::releaseKindAt)),
                             head.wordAt(Image::servicePackAt), head.wordAt(Image::patchLevelAt));
    InstalledValues values;
    values.version = std::string(version.getAsString().view());
    values.checksum = head.longAt(Image::checksumAt);
    return values;
}

/// True when the header states a checksum.
bool isBitstreamWithChecksum(const FileHead& head) {
    return head.size() >= Bitstream::fullHeaderSize && head.beginsWith(Bitstream::magic) &&
           head.longAt(Bitstream::formatVersionAt) == Bitstream::formatVersion &&
           head.longAt(Bitstream::headerSizeAt) >= Bitstream::fullHeaderSize;
}

InstalledValues treeContents(const InventoryTreeFile& tree) {
    InstalledValues values;
    values.checksum = tree.checksum;
    const ItemDescription* const firmware = tree.firmware();
    if (firmware == nullptr) {
        return values;
    }
    const KvCInventoryParameter* const version = firmware->parameter(KvNInventoryIDs::VERSION);
    if (version != nullptr && version->text() != nullptr) {
        values.version = *version->text();
    }
    const KvCInventoryParameter* const checksum = firmware->parameter(KvNInventoryIDs::CHECKSUM_CRC32);
    if (!values.checksum && checksum != nullptr) {
        values.checksum = checksum->number32();
    }
    return values;
}

std::optional<InstalledValues> plainContents(std::FILE& file) {
    boost::crc_32_type crc;
    const bool isRead = forEachPiece(&file, [&crc](std::string_view piece) {
        crc.process_bytes(piece.data(), piece.size());
        return true;
    });
    if (!isRead) {
        return std::nullopt;
    }
    InstalledValues values;
    values.checksum = crc.checksum();
    return values;
}

} // namespace

std::optional<InstalledValues> readUpdateFileContents(std::FILE& file) {
    const FileHead head(file);
    if (isImage(head)) {
        return imageContents(head);
    }
    if (isBitstreamWithChecksum(head)) {
        InstalledValues values;
        values.checksum = head.longAt(Bitstream::checksumAt);
        return values;
    }
    std::rewind(&file);
    std::string reason;
    if (const InventoryTreeFile tree = readInventoryTreeFile(file, reason); tree.root != nullptr) {
        return treeContents(tree);
    }
    std::rewind(&file);
    return plainContents(file);
}
