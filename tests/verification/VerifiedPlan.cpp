#include "VerifiedPlan.h"

#include "KvCVersion.h"

#include <array>

using namespace KvNReflasher;

KvTVersion versionOf(const std::string& text) {
    return {.number = KvCVersion(text.c_str()).getAsULong64(), .text = text};
}

KvTInstalled reports(const std::string& version, std::optional<std::uint32_t> checksum, std::optional<bool> valid,
                     std::optional<bool> active) {
    KvTInstalled installed;
    installed.hasVersion = !version.empty();
    if (!version.empty() && versionOf(version).number != 0) {
        installed.version = versionOf(version);
    }
    installed.checksumCrc32 = checksum;
    installed.valid = valid;
    installed.active = active;
    return installed;
}

KvTArchiveEntry offers(const std::string& version, std::optional<std::uint32_t> checksum) {
    KvTArchiveEntry entry;
    entry.fileName = "a.bin";
    if (!version.empty()) {
        entry.version = versionOf(version);
    }
    entry.checksumCrc32 = checksum;
    return entry;
}

KvTArchiveEntry upgradesTo(const std::string& version, std::optional<std::uint32_t> checksum) {
    KvTArchiveEntry entry = offers(version, checksum);
    entry.mode = KvEEntryMode::upgrade;
    return entry;
}

KvTPlan planOf(const KvTArchiveEntry& entry, const KvTInstalled& installed) {
    KvTPlan plan;
    plan.phaseCount = 1;
    addElement(plan, entry, installed);
    return plan;
}

KvTPlannedElement& addElement(KvTPlan& plan, const KvTArchiveEntry& entry, const KvTInstalled& installed) {
    KvTPlannedElement element;
    element.index = static_cast<std::uint32_t>(plan.elements.size());
    element.displayName = "Element " + std::to_string(element.index);
    element.address = "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[" + std::to_string(element.index + 1) + "]";
    element.installed = installed;
    element.entry = entry;
    element.decision = {.update = true, .reasons = {KvEReason::versionDiffers}};
    element.phase = 0;
    return plan.elements.emplace_back(element);
}

std::string nameOf(KvEVerified result) {
    constexpr std::array<const char*, verifiedCount> names{"not listed", "gone",      "as expected",
                                                           "not judged", "unchanged", "differs"};
    return names.at(static_cast<std::size_t>(result));
}
