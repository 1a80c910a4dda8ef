#include "PlanValue.h"

#include "ArchiveEntries.h"
#include "ElementNames.h"
#include "UpdateDecision.h"

#include <algorithm>
#include <string>
#include <utility>

using namespace KvNReflasher;

namespace {

std::string utf8Of(const KvCString& text) {
    return std::string(text.view());
}

/// What was found, without a plan.
KvTPlannedElement foundElement(const KvTUpdateElement& element) {
    KvTPlannedElement found;
    found.index = element.index;
    found.boardType = utf8Of(element.boardType);
    found.boardVariant = utf8Of(element.boardVariant);
    found.boardId = element.boardId;
    found.serialNumber = element.serialNumber;
    found.boardName = utf8Of(element.boardName);
    found.unitName = utf8Of(element.unitName);
    found.unitInstanceName = utf8Of(element.unitInstanceName);
    found.rackName = utf8Of(element.rackName);
    found.unitPath = unitPathOf(element, utf8Of);
    found.slot = element.slot;
    found.slotCount = element.slotCount;
    found.displayName = utf8Of(element.displayName);
    found.typeName = utf8Of(element.typeName);
    found.name = utf8Of(element.name);
    found.address = utf8Of(element.elementAddress.toString());
    found.boardAddress = utf8Of(element.boardAddress.toString());
    found.elementId = element.elementId;
    found.isFileSystemElement = element.isFileSystemElement;
    found.targetPath = utf8Of(element.location);
    found.hwCompatibilityId = element.hwCompatibilityId;
    found.swCompatibilityId = element.swCompatibilityId;
    found.custom = element.custom != 0;
    found.installed = installedOn(element);
    found.disabled = element.disabled;
    return found;
}

/// The processor boards need an entry for each of their update elements.
bool isOnNode(const KvTUpdateElement& element, const KvCTargetInventory& inventory) {
    const KvCInventoryAddress* hcn = inventory.hcnAddress();
    const KvCInventoryAddress* cn = inventory.cnAddress();
    return (hcn != nullptr && element.boardAddress == *hcn) || (cn != nullptr && element.boardAddress == *cn);
}

} // namespace

KvTInstalled installedOn(const KvTUpdateElement& element) {
    KvTInstalled installed;
    installed.version = knownVersion(element.version);
    installed.hasVersion = element.hasVersion;
    if (element.hasChecksum) {
        installed.checksumCrc32 = element.checksumCrc32;
    }
    if (element.hasValid) {
        installed.valid = element.valid;
    }
    if (element.hasActive) {
        installed.active = element.active;
    }
    return installed;
}

KvTPlan makeElementList(const KvCTargetInventory& inventory, const KvCString& address) {
    KvTPlan plan;
    plan.targetAddress = utf8Of(address);
    plan.nodeSerialNumbers = inventory.nodeSerialNumbers();
    plan.elements.reserve(inventory.elements().size());
    std::transform(inventory.elements().begin(), inventory.elements().end(), std::back_inserter(plan.elements),
                   foundElement);
    return plan;
}

KvTPlan makePlan(const KvCFirmwareArchive& archive, const KvCTargetInventory& inventory, const KvCString& address,
                 std::uint32_t phaseCount, const KvTOptions& options) {
    KvTPlan plan = makeElementList(inventory, address);
    plan.archive = archiveIdentityOf(archive.info());
    plan.phaseCount = phaseCount;
    plan.configurationElements = options.configurationElements;
    auto planned = plan.elements.begin();
    for (const KvTUpdateElement& element : inventory.elements()) {
        const KvTArchiveFile* file = element.hasArchiveFile() ? &archive.files()[element.archiveFileIndex] : nullptr;
        planned->decision = decisionOn(element, file, options);
        planned->upToDate = element.upToDate;
        planned->isDowngrade = file != nullptr && isDowngrade(element, *file);
        if (file != nullptr) {
            planned->entry = archiveEntryOf(*file, element.archiveFileIndex);
        } else if (!element.isFileSystemElement && isOnNode(element, inventory)) {
            plan.unsupportedElements.push_back(element.index);
        }
        if (planned->decision.update) {
            planned->phase = element.phase;
        }
        ++planned;
    }
    plan.supported = plan.unsupportedElements.empty();
    return plan;
}

void disable(KvTPlannedElement& element, KvEReason reason) {
    std::vector<KvEReason>& reasons = element.decision.reasons;
    reasons.reserve(reasons.size() + 1); // without memory nothing changes
    if (element.decision.update) {
        reasons.clear();
    }
    const auto place = std::lower_bound(reasons.begin(), reasons.end(), reason);
    if (place == reasons.end() || *place != reason) {
        reasons.insert(place, reason);
    }
    element.decision.update = false;
    element.phase.reset();
    element.disabled = true;
}

std::string unsupportedMessage(const KvTPlan& plan) {
    std::string names;
    for (const std::uint32_t index : plan.unsupportedElements) {
        names.append(names.empty() ? "'" : ", '").append(plan.elements[index].displayName).append("'");
    }
    return "the archive does not support the target: it has no entry for " + names;
}
