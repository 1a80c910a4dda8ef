#include "KvCReflasher.h"

#include "ErrorEntries.h"
#include "ErrorReport.h"
#include "ExhaustedMemory.h"
#include "KvCStringConversion.h"
#include "LibraryVersion.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using namespace KvNReflasher;

namespace {

/// Why a target with this reboot support status cannot be rebooted.
std::string reasonOf(std::uint32_t status) {
    switch (status) {
    case rebootNotDetermined:
        return "it has no active firmware to judge by";
    case rebootNotByFirmware:
        return "its firmware does not support that";
    case rebootNotByDevice:
        return "it does not support that";
    default:
        return "its support could not be checked";
    }
}

/// The errors that are new since `before` was taken down. Finding the device may have emptied the list meanwhile.
std::vector<KvTErrorInfo> errorsSince(const std::vector<KvTErrorInfo>& before, const KvCErrorListPool& errors) {
    std::vector<KvTErrorInfo> now = errorEntriesOf(errors);
    const auto isSame = [](const KvTErrorInfo& a, const KvTErrorInfo& b) {
        return a.code == b.code && a.seconds == b.seconds && a.text == b.text;
    };
    if (before.size() <= now.size() && std::equal(before.begin(), before.end(), now.begin(), isSame)) {
        now.erase(now.begin(), now.begin() + static_cast<std::ptrdiff_t>(before.size()));
    }
    return now;
}

} // namespace

KvIReflasher* KvIReflasher::createInstance(KvNReflasher::KvTOptions options) {
    return KvCReflasher::create(std::move(options), ::operator new);
}

KvISession* KvISession::createInstance(KvNReflasher::KvTOptions options) {
    return KvCReflasher::create(std::move(options), ::operator new);
}

std::string KvISession::version() {
    return std::string(getToolVersion().getAsString().view());
}

KvCReflasher* KvCReflasher::create(KvNReflasher::KvTOptions options, Allocate allocate) {
    // A compiler may take the ordinary operator new as never null and drop the test. It cannot know what this calls.
    Allocate volatile unknown = allocate;
    void* const block = unknown(sizeof(KvCReflasher));
    if (block == nullptr) {
        return nullptr;
    }
    try {
        return ::new (block) KvCReflasher(std::move(options));
    } catch (...) {
        ::operator delete(block);
        throw;
    }
}

KvCReflasher::KvCReflasher(KvNReflasher::KvTOptions options) : options_(std::move(options)) {}

void KvCReflasher::getArchiveInfo(std::wstring& archiveName, std::wstring& archiveVersion, std::wstring& productName,
                                  std::wstring& formatVersion, std::wstring& archiveVariant) {
    attempt([&] {
        const KvTArchiveInfo& info = preparation_.archive().info();
        archiveName = toWide(info.archiveName);
        archiveVersion = toWide(info.archiveVersion.getAsString());
        productName = toWide(info.productName);
        formatVersion = toWide(info.formatVersion.getAsString());
        archiveVariant = toWide(info.archiveVariant);
    });
}

void KvCReflasher::disableUpdateElement(std::uint32_t index) {
    attempt([this, index] {
        preparation_.disableElement(index);
        disabledElements_.push_back(std::to_string(index));
    });
}

bool KvCReflasher::getRebootSupportStatus(std::uint32_t& status) {
    status = preparation_.inventory().rebootSupportStatus();
    return withoutException(false, [&] {
        switch (status) {
        case rebootSupported:
            return true;
        case rebootNotDetermined:
            writer_.print(L"ERROR: Device cannot be rebooted automatically (wrong command sequence).\n");
            return false;
        case rebootNotByFirmware:
            writer_.print(L"WARNING: Device cannot be rebooted automatically (not supported by the firmware version "
                          L"installed on this device).\n");
            return false;
        case rebootNotByDevice:
            writer_.print(L"WARNING: Device cannot be rebooted automatically (not supported by this device).\n");
            return false;
        case rebootCheckFailed:
            writer_.print(L"ERROR: Device cannot be rebooted automatically (an error occurred while checking the "
                          L"reboot support status).\n");
            return false;
        default:
            return false;
        }
    });
}

bool KvCReflasher::reboot() {
    std::uint32_t status = 0;
    if (!beginJournal()) {
        return false;
    }
    if (!getRebootSupportStatus(status)) {
        noteFailure(KvEFailure::reboot, [status] { return "the target was not rebooted: " + reasonOf(status); });
        return false;
    }
    const bool isReset = withoutException(false, [this] { return resetTarget(); });
    attempt([&] { journal_.writeReboot(isReset); });
    if (isReset) {
        stage_ = KvEStage::rebooted;
    } else {
        noteFailure(KvEFailure::reboot, [] { return std::string("the target was not rebooted: the reset failed"); });
    }
    return isReset;
}

bool KvCReflasher::resetTarget() {
    std::vector<KvTErrorInfo> before;
    attempt([&] { before = errorEntriesOf(errors_); }); // a reboot does not need it
    if (preparation_.targetAccess().rebootDevice()) {
        return true;
    }
    writer_.print(L"ERROR: Device cannot be rebooted. Command failed.\n");
    printErrorReport(writer_, options_, errors_, reportIndentation);
    for (KvTErrorInfo& error : errorsSince(before, errors_)) {
        otherErrors_.push_back(std::move(error));
    }
    return false;
}
