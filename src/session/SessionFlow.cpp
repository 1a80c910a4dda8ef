#include "ErrorReport.h"
#include "ExhaustedMemory.h"
#include "KvCReflasher.h"
#include "ToolVersion.h"

#include <algorithm>

namespace {

using namespace KvNReflasher;

/// Results of prepare.
enum PrepareStatus : std::uint32_t { ready = 0, failed = 1, targetNotSupported = 2 };

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

/// A function of its own: inside a switch, clang++ 14 destroys a temporary argument of a consteval-checked call at the
/// end of the switch, whichever case ran.
void printToolVersion(const KvCConsoleWriter& writer) {
    writer.print(L"%hs\n", getToolVersion().getAsString().c_str());
}

} // namespace

std::uint32_t KvCReflasher::prepare() {
    return withoutException<std::uint32_t>(failed, [this] { return prepareSession(); });
}

bool KvCReflasher::run() {
    return withoutException(false, [this] { return runSession(); });
}

std::uint32_t KvCReflasher::prepareSession() {
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    const std::uint32_t mode = options_.mode;
    if (needsBanner(mode)) {
        printBanner();
    }
    if (needsArchive(mode) && !archive_.readArchive(errors)) {
        writer_.print(L"ERROR: Failed to read firmware archive.\n");
        return failed;
    }
    if (needsTarget(mode) && !connect(errors)) {
        return failed;
    }
    if (needsPlan(mode)) {
        planner_.plan();
    }
    if (mode == performUpdate && !isTargetSupported()) {
        disableAllElements();
        writer_.print(L"ERROR: The target system is not supported by this firmware archive.\n");
        return targetNotSupported;
    }
    return ready;
}

void KvCReflasher::printBanner() const {
    writer_.print(L"\nKorvel Device Update Tool, Vs %hs\nCopyright (c) 2026 Korvel. All rights reserved.\n \n",
                  getToolVersion().getAsString().c_str());
}

/// Finds and scans the target; prints why that failed.
bool KvCReflasher::connect(KvCErrorListPool& errors) {
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

/// The processor boards need an archive entry for each of their update elements.
bool KvCReflasher::isTargetSupported() const {
    const KvCInventoryAddress* hcn = inventory_.hcnAddress();
    const KvCInventoryAddress* cn = inventory_.cnAddress();
    const auto& elements = inventory_.elements();
    return std::none_of(elements.begin(), elements.end(), [hcn, cn](const KvTUpdateElement& element) {
        const bool onNode =
            (hcn != nullptr && element.boardAddress == *hcn) || (cn != nullptr && element.boardAddress == *cn);
        return onNode && !element.isFileSystemElement && !element.hasArchiveFile();
    });
}

void KvCReflasher::disableAllElements() {
    for (KvTUpdateElement& element : inventory_.elements()) {
        element.disabled = true;
    }
}

bool KvCReflasher::runSession() {
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    const bool result = runMode(errors);
    if (errors.getErrorCount() == 0) {
        return result;
    }
    writer_.print(L"\nReported errors:\n");
    printErrorReport(writer_, options_, errors, reportIndentation);
    return false;
}

bool KvCReflasher::runMode(KvCErrorListPool& errors) {
    switch (options_.mode) {
    case showVersion:
        printToolVersion(writer_);
        return true;
    case showArchiveVersion:
        archive_.printArchiveVersion();
        return true;
    case showArchiveContent:
        archive_.printArchiveContent();
        return true;
    case dumpArchiveDescription:
        archive_.dumpDescription();
        return true;
    case showTargetElements:
        inventory_.printElementTable();
        return true;
    case showUpdatePlan:
        planner_.printUpdatePlan();
        return true;
    case performUpdate:
        return driver_.run(errors);
    default: // connectOnly and unknown modes print nothing
        return true;
    }
}
