#include "KvCPreparation.h"

#include "ErrorReport.h"
#include "KvCConsoleWriter.h"
#include "ToolVersion.h"

#include <algorithm>

namespace {

using namespace KvNReflasher;

bool needsBanner(std::uint32_t mode) {
    return mode != showVersion && mode != showArchiveVersion && mode != dumpArchiveDescription;
}

bool needsArchive(std::uint32_t mode) {
    return mode == showArchiveVersion || mode == showArchiveContent || mode == dumpArchiveDescription ||
           mode == showUpdatePlan || mode == performUpdate;
}

bool needsTarget(std::uint32_t mode) {
    return mode >= showTargetElements && mode <= performUpdate;
}

bool needsPlan(std::uint32_t mode) {
    return mode == showUpdatePlan || mode == performUpdate;
}

} // namespace

KvEPrepareStatus KvCPreparation::prepare() {
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    const std::uint32_t mode = options_.mode;
    if (needsBanner(mode)) {
        printBanner();
    }
    if (needsArchive(mode) && !archive_.readArchive(errors)) {
        writer_.print(L"ERROR: Failed to read firmware archive.\n");
        return prepareFailed;
    }
    if (needsTarget(mode) && !connect(errors)) {
        return prepareFailed;
    }
    if (needsPlan(mode)) {
        planner_.plan();
    }
    if (mode == performUpdate && !isTargetSupported()) {
        disableAllElements();
        writer_.print(L"ERROR: The target system is not supported by this firmware archive.\n");
        return prepareTargetNotSupported;
    }
    return prepareReady;
}

void KvCPreparation::printBanner() const {
    writer_.print(L"\nKorvel Device Update Tool, Vs %hs\nCopyright (c) 2026 Korvel. All rights reserved.\n \n",
                  getToolVersion().getAsString().c_str());
}

bool KvCPreparation::connect(KvCErrorListPool& errors) {
    if (options_.target.empty()) {
        writer_.print(L"ERROR: No IP address or hostname specified!\n");
        return false;
    }
    if (!targetAccess_.resolveTarget(errors)) {
        writer_.print(L"ERROR: Invalid IP address or hostname (%s)!\n", options_.target.c_str());
        return false;
    }
    if (!targetAccess_.checkTargetAccessible(errors)) {
        writer_.print(L"ERROR: The target system is inaccessible!\n");
        printErrorReport(writer_, options_, errors, reportIndentation);
        return false;
    }
    if (!inventory_.scanInventory(errors, targetAccess_.ipAddress())) {
        writer_.print(L"ERROR: Cannot read target device information.\n\tPower-cycle the system and retry.\n\tIf the "
                      L"problem persists, contact Korvel support.\n");
        return false;
    }
    return true;
}

bool KvCPreparation::isTargetSupported() const {
    const KvCInventoryAddress* hcn = inventory_.hcnAddress();
    const KvCInventoryAddress* cn = inventory_.cnAddress();
    const auto& elements = inventory_.elements();
    return std::none_of(elements.begin(), elements.end(), [hcn, cn](const KvTUpdateElement& element) {
        const bool onNode =
            (hcn != nullptr && element.boardAddress == *hcn) || (cn != nullptr && element.boardAddress == *cn);
        return onNode && !element.isFileSystemElement && !element.hasArchiveFile();
    });
}

void KvCPreparation::disableAllElements() {
    for (KvTUpdateElement& element : inventory_.elements()) {
        element.disabled = true;
    }
}
