#include "UpdateDecision.h"

namespace {

/// The FPGA element concerned, and the software compatibility of the carrier boards QB5150 and QB5170.
constexpr const char* carriedBoardType = "FPGA_TP1";
constexpr std::uint32_t carriedElementId = 1;
constexpr std::uint32_t firstCarrierCompatibility = 0x20100;
constexpr std::uint32_t secondCarrierCompatibility = 0x30100;

} // namespace

bool lacksCarrierBoard(const KvTUpdateElement& element) {
    return element.boardType == carriedBoardType && element.elementId == carriedElementId &&
           !element.hasArchiveFile() && element.swCompatibilityId != firstCarrierCompatibility &&
           element.swCompatibilityId != secondCarrierCompatibility;
}

bool leavesOutUpToDate(const KvTArchiveFile& file, const KvNReflasher::KvTOptions& options) {
    return !options.forceUpdate || file.mode == upgradeMode;
}

KvEDecision decideUpdate(const KvTUpdateElement& element, const KvTArchiveFile& file,
                         const KvNReflasher::KvTOptions& options) {
    if (!element.valid) {
        return KvEDecision::elementInvalid;
    }
    if (!element.isFileSystemElement && !options.configurationElements && !element.active) {
        return KvEDecision::elementInactive;
    }
    if (file.mode == upgradeMode) {
        return file.version > element.version ? KvEDecision::versionGreater : KvEDecision::upToDate;
    }
    if (file.version.getAsULong64() != 0 && element.version != file.version) {
        return KvEDecision::versionDiffers;
    }
    if (element.hasChecksum && element.checksumCrc32 != 0 && element.checksumCrc32 != file.checksumCrc32) {
        return KvEDecision::checksumDiffers;
    }
    return KvEDecision::upToDate;
}
