#include "UpdateFileReaders.h"

#include "CallJudgement.h"
#include "Files.h"
#include "KvCInventoryData.h"
#include "KvCStringConversion.h"
#include "KvNInventoryIDs.h"
#include "OwnedErrorList.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace {

constexpr std::size_t wordSize = 4;

/// Layout of the head of a firmware image; numbers are big-endian.
namespace image {
constexpr std::size_t headSize = 1000;
constexpr std::size_t firstMagicOffset = 40;
constexpr std::uint32_t firstMagic = 0x1255AA34;
constexpr std::size_t secondMagicOffset = 44;
constexpr std::uint32_t secondMagic = 0xAA184755;
constexpr std::size_t checksumOffset = 60;
constexpr std::size_t majorOffset = 76;
constexpr std::size_t minorOffset = 77;
constexpr std::size_t microOffset = 78;
constexpr std::size_t releaseKindOffset = 79;
constexpr std::uint8_t alphaKind = 10;
constexpr std::uint8_t betaKind = 11;
constexpr std::size_t servicePackNumberOffset = 80;
constexpr std::size_t patchLevelOffset = 82;
constexpr std::size_t minHwCompatibilityOffset = 344;
constexpr std::size_t maxHwCompatibilityOffset = 348;
constexpr std::size_t minSwCompatibilityOffset = 352;
constexpr std::size_t maxSwCompatibilityOffset = 356;
constexpr std::size_t typeIdOffset = 360;
} // namespace image

/// Layout of the head of an FPGA bitstream; numbers are big-endian.
namespace bitstream {
constexpr std::size_t headSize = 92;
constexpr std::string_view magic = "kvFPGABS";
constexpr std::size_t headerSizeOffset = 8;
constexpr std::size_t formatVersionOffset = 12;
constexpr std::uint32_t formatVersion = 1;
constexpr std::size_t checksumOffset = 88;
} // namespace bitstream

std::uint16_t read16(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return static_cast<std::uint16_t>((bytes[offset] << 8) | bytes[offset + 1]);
}

std::uint32_t read32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return (std::uint32_t{read16(bytes, offset)} << 16) | read16(bytes, offset + 2);
}

bool isImage(std::span<const std::uint8_t> head) {
    return read32(head, image::firstMagicOffset) == image::firstMagic &&
           read32(head, image::secondMagicOffset) == image::secondMagic;
}

bool isBitstream(std::span<const std::uint8_t> head) {
    return std::string_view(reinterpret_cast<const char*>(head.data()), bitstream::magic.size()) == bitstream::magic;
}

/// The number of bytes that the header takes of which a file has `head`, with zeros behind its `size` bytes; 0 for a
/// file without a header that is known.
std::size_t headerSizeOf(std::span<const std::uint8_t> head, std::size_t size) {
    // The second magic word may be cut itself.
    const bool endsInMagic = size >= image::secondMagicOffset && size < image::secondMagicOffset + wordSize;
    if (isImage(head) || (endsInMagic && read32(head, image::firstMagicOffset) == image::firstMagic)) {
        return image::typeIdOffset + wordSize;
    }
    if (!isBitstream(head)) {
        return 0;
    }
    const bool statesSize = read32(head, bitstream::formatVersionOffset) == bitstream::formatVersion;
    const std::size_t stated = statesSize ? read32(head, bitstream::headerSizeOffset) : 0;
    return std::max(stated, bitstream::headSize);
}

KvEFileExtent extentOf(std::span<const std::uint8_t> head, std::size_t size) {
    if (size == 0) {
        return KvEFileExtent::empty;
    }
    // Of a longer file the end was not seen.
    const bool isShort = size < head.size() && size < headerSizeOf(head, size);
    return isShort ? KvEFileExtent::cutInHeader : KvEFileExtent::whole;
}

std::uint8_t servicePackBuild(std::uint8_t releaseKind) {
    switch (releaseKind) {
    case image::alphaKind:
        return 1;
    case image::betaKind:
        return 2;
    default:
        return 0;
    }
}

/// The value of a FIRMWARE parameter; `unknown` if it is missing or cannot be read, which makes the header incomplete.
template <typename Value>
Value readParameter(KvCErrorListPool& errors, const KvCInventoryItem& firmware, const KvCInventoryAddress& path,
                    const Value& unknown, KvTUpdateFileHeader& header) {
    if (firmware.getParameter(path) == nullptr) {
        return unknown;
    }
    Value value = unknown;
    const bool isRead = callSucceeds(errors, [&] { firmware.getValue(errors, path, value); });
    header.isWhole = header.isWhole && isRead;
    return isRead ? value : unknown;
}

/// The item after `item` in preorder; null at the end of the tree.
const KvCInventoryItem* nextInPreorder(const KvCInventoryItem* item) {
    if (const KvCInventoryItem* sub = item->getFirstSubItem(); sub != nullptr) {
        return sub;
    }
    while (item != nullptr && item->getNext() == nullptr) {
        item = item->getParent();
    }
    return item != nullptr ? item->getNext() : nullptr;
}

/// The first FIRMWARE node of a tree in preorder, the root included; null when there is none. Trees from files may be
/// deep, so it does not call itself.
const KvCInventoryItem* findFirmware(const KvCInventoryItem* root) {
    const KvCInventoryItem* item = root;
    while (item != nullptr && item->getID().getCategory() != KvNInventoryIDs::FIRMWARE.getCategory()) {
        item = nextInPreorder(item);
    }
    return item;
}

/// Reads what the FIRMWARE node tells. A checksum that the file states beside its tree takes the place of the node's.
void readFirmware(KvCErrorListPool& errors, const KvCInventoryItem& firmware, bool checksumStated,
                  KvTUpdateFileHeader& header) {
    using namespace KvNInventoryIDs;
    const auto readNumber = [&](const KvCInventoryAddress& path) {
        return readParameter(errors, firmware, path, unknownValue, header);
    };
    header.minHwCompatibilityId = readNumber(MIN_HW_COMPATIBILITY_ID);
    header.maxHwCompatibilityId = readNumber(MAX_HW_COMPATIBILITY_ID);
    header.minSwCompatibilityId = readNumber(MIN_SW_COMPATIBILITY_ID);
    header.maxSwCompatibilityId = readNumber(MAX_SW_COMPATIBILITY_ID);
    header.typeId = readNumber(TYPE_ID);
    if (!checksumStated) {
        header.checksum = readNumber(CHECKSUM_CRC32);
    }
    header.version = readParameter(errors, firmware, VERSION, unknownVersion(), header);
}

/// As readImageHeader(); states the extent, too, if the file can be read.
KvEReadStatus readImage(const std::wstring& path, KvTUpdateFileHeader& header, KvEFileExtent& extent) {
    // A shorter file reads as zeros beyond its end.
    std::array<std::uint8_t, image::headSize> head{};
    const std::optional<std::size_t> size = path.empty() ? std::nullopt : readBeginning(path, head);
    if (!size) {
        return KvEReadStatus::cannotOpen;
    }
    extent = extentOf(head, *size);
    if (!isImage(head)) {
        return KvEReadStatus::notThisKind;
    }
    header.minHwCompatibilityId = read32(head, image::minHwCompatibilityOffset);
    header.maxHwCompatibilityId = read32(head, image::maxHwCompatibilityOffset);
    header.minSwCompatibilityId = read32(head, image::minSwCompatibilityOffset);
    header.maxSwCompatibilityId = read32(head, image::maxSwCompatibilityOffset);
    header.typeId = read32(head, image::typeIdOffset);
    header.checksum = read32(head, image::checksumOffset);
    header.version = KvCVersion(head[image::majorOffset], head[image::minorOffset], head[image::microOffset],
                                servicePackBuild(head[image::releaseKindOffset]),
                                read16(head, image::servicePackNumberOffset), read16(head, image::patchLevelOffset));
    return KvEReadStatus::success;
}

} // namespace

KvEReadStatus readImageHeader(const std::wstring& path, KvTUpdateFileHeader& header) {
    KvEFileExtent ignored = KvEFileExtent::whole;
    return readImage(path, header, ignored);
}

KvEReadStatus readInventoryFile(const std::wstring& path, KvTUpdateFileHeader& header) {
    if (path.empty()) {
        return KvEReadStatus::notThisKind;
    }
    // A private list: an attempt on a file of another kind is nothing to report.
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvCInventoryItem* root = nullptr;
    bool hasChecksum = false;
    std::uint32_t checksum = 0;
    const bool extracted = callSucceeds(*errors, [&] {
        KvCInventoryData::extractInventoryTreeFromFile(*errors, toUtf8(path).c_str(), root, hasChecksum, checksum);
    });
    const std::unique_ptr<KvCInventoryItem> tree(root);
    if (!extracted || tree == nullptr) {
        return KvEReadStatus::notThisKind;
    }
    header = {};
    if (hasChecksum) {
        header.checksum = checksum;
    }
    if (const KvCInventoryItem* firmware = findFirmware(tree.get()); firmware != nullptr) {
        readFirmware(*errors, *firmware, hasChecksum, header);
    }
    return KvEReadStatus::success;
}

KvEReadStatus readBitstreamHeader(const std::wstring& path, std::uint32_t& checksum) {
    checksum = unknownValue;
    std::array<std::uint8_t, bitstream::headSize> head{};
    const bool complete = readBeginning(path, head) == head.size();
    if (!complete || !isBitstream(head) || read32(head, bitstream::formatVersionOffset) != bitstream::formatVersion) {
        return KvEReadStatus::notThisKind;
    }
    if (read32(head, bitstream::headerSizeOffset) >= bitstream::headSize) {
        checksum = read32(head, bitstream::checksumOffset);
    }
    return KvEReadStatus::success;
}

KvEReadStatus readUpdateFile(const std::wstring& path, KvTUpdateFileHeader& header) {
    KvEFileExtent extent = KvEFileExtent::whole;
    KvEReadStatus status = readImage(path, header, extent);
    if (status == KvEReadStatus::notThisKind) {
        status = readInventoryFile(path, header);
    }
    if (status == KvEReadStatus::notThisKind) {
        std::uint32_t checksum = unknownValue;
        status = readBitstreamHeader(path, checksum);
        if (status == KvEReadStatus::success) {
            header = {};
            header.checksum = checksum;
        }
    }
    if (status != KvEReadStatus::cannotOpen) {
        header.extent = extent;
    }
    return status;
}
