#include "UpdateDecision.h"

#include "ArchiveEntries.h"
#include "InventoryWalk.h"

namespace {

using namespace KvNReflasher;

/// The FPGA element concerned, and the software compatibility of the carrier boards QB5150 and QB5170.
constexpr const char* carriedBoardType = "FPGA_TP1";
constexpr std::uint32_t carriedElementId = 1;
constexpr std::uint32_t firstCarrierCompatibility = 0x20100;
constexpr std::uint32_t secondCarrierCompatibility = 0x30100;

/// Mode upgrade looks at versions alone, and takes the greater one only. A zero version of the entry leaves the
/// decision to the checksum.
bool callsForOtherVersion(const KvTUpdateElement& element, const KvTArchiveFile& file) {
    if (file.mode == upgradeMode) {
        return file.version > element.version;
    }
    return file.version.getAsULong64() != 0 && element.version != file.version;
}

/// A checksum of 0 counts as none.
bool callsForOtherChecksum(const KvTUpdateElement& element, const KvTArchiveFile& file) {
    return file.mode != upgradeMode && element.hasChecksum && element.checksumCrc32 != 0 &&
           element.checksumCrc32 != file.checksumCrc32;
}

} // namespace

bool lacksCarrierBoard(const KvTUpdateElement& element) {
    return element.boardType == carriedBoardType && element.elementId == carriedElementId &&
           !element.hasArchiveFile() && element.swCompatibilityId != firstCarrierCompatibility &&
           element.swCompatibilityId != secondCarrierCompatibility;
}

bool isDowngrade(const KvTUpdateElement& element, const KvTArchiveFile& file) {
    return knownVersion(file.version) && knownVersion(element.version) && file.version < element.version;
}

bool leavesOutUpToDate(const KvTArchiveFile& file, const KvTOptions& options) {
    return !options.forceUpdate || file.mode == upgradeMode;
}

std::vector<KvEReason> outOfDateReasons(const KvTUpdateElement& element, const KvTArchiveFile& file,
                                        const KvTOptions& options) {
    std::vector<KvEReason> reasons;
    if (callsForOtherVersion(element, file)) {
        reasons.push_back(KvEReason::versionDiffers);
    }
    if (callsForOtherChecksum(element, file)) {
        reasons.push_back(KvEReason::checksumDiffers);
    }
    if (!element.valid) {
        reasons.push_back(KvEReason::invalid);
    }
    if (!element.isFileSystemElement && !options.configurationElements && !element.active) {
        reasons.push_back(KvEReason::inactive);
    }
    return reasons;
}

KvTDecision decisionOn(const KvTUpdateElement& element, const KvTArchiveFile* file, const KvTOptions& options) {
    if (file != nullptr && !element.disabled) {
        return {.update = true,
                .reasons = element.upToDate ? std::vector{KvEReason::forced} : element.outOfDateReasons};
    }
    KvTDecision decision;
    if (file != nullptr && element.upToDate && leavesOutUpToDate(*file, options)) {
        const bool isNewer = file->mode == upgradeMode && element.version > file->version;
        decision.reasons.push_back(isNewer ? KvEReason::newerInstalled : KvEReason::upToDate);
    }
    if (file == nullptr) {
        decision.reasons.push_back(element.matchesIgnoredEntry ? KvEReason::featureLevel : KvEReason::noEntry);
    }
    if (isLeftOutAsCustom(element, options)) {
        decision.reasons.push_back(KvEReason::customLeftOut);
    }
    if (lacksCarrierBoard(element)) {
        decision.reasons.push_back(KvEReason::carrierBoardMissing);
    }
    return decision;
}
