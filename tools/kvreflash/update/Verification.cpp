#include "Verification.h"

#include "KnownValues.h"
#include "KvNRtosAbstraction.h"
#include "PlannedTarget.h"
#include "TableText.h"
#include "ToolOutput.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::uint32_t microsecondsPerSecond = 1000000;

/// The target reports nothing that speaks against the entry. Like the planner, it takes a checksum of 0 for none.
bool agrees(const KvTPlannedElement& element, const KvTInstalled& found) {
    const bool versionAgrees =
        !isKnown(element.availableVersion) || !isKnown(found.version) || found.version == element.availableVersion;
    const bool checksumAgrees =
        !element.availableChecksum || found.checksum.value_or(0) == 0 || found.checksum == element.availableChecksum;
    return versionAgrees && checksumAgrees && found.valid;
}

bool isUnchanged(const KvTInstalled& before, const KvTInstalled& after) {
    return before.version == after.version && before.checksum == after.checksum && before.valid == after.valid;
}

KvTVerifiedElement verified(const KvTPlannedElement& element, const KvTInstalledElements& installed, bool wasRebooted) {
    KvTVerifiedElement result{.element = &element, .found = {}, .result = KvEVerified::asExpected};
    const auto found = installed.find(element.address);
    if (element.address.empty()) {
        result.result = KvEVerified::notReported;
    } else if (found == installed.end()) {
        result.result = KvEVerified::missing;
    } else {
        result.found = found->second;
        if (!agrees(element, result.found)) {
            const bool isPending = !wasRebooted && isUnchanged(element.installed, result.found);
            result.result = isPending ? KvEVerified::activatesAtReboot : KvEVerified::differs;
        }
    }
    return result;
}

std::vector<KvCString> row(const KvTVerifiedElement& one) {
    const bool isFound = one.result == KvEVerified::differs || one.result == KvEVerified::activatesAtReboot;
    return {KvCString(one.element->index),
            KvCString(std::string_view(one.element->displayName)),
            versionCell(one.element->availableVersion),
            isFound ? versionCell(one.found.version) : KvCString(unknownCell),
            KvCString(checksumCell(one.element->availableChecksum)),
            KvCString(isFound ? checksumCell(one.found.checksum) : unknownCell),
            wordsFor(one.result)};
}

std::string summary(const std::vector<KvTVerifiedElement>& elements) {
    std::array<std::size_t, verifiedCount> counts{};
    for (const KvTVerifiedElement& one : elements) {
        ++counts.at(static_cast<std::size_t>(one.result));
    }
    std::string text = "\nVerification: ";
    const char* separator = "";
    for (std::size_t result = 0; result < counts.size(); ++result) {
        if (counts.at(result) != 0 || result == 0) {
            text += separator + std::to_string(counts.at(result)) + " " + wordsFor(static_cast<KvEVerified>(result));
            separator = ", ";
        }
    }
    return text + "\n";
}

} // namespace

std::optional<KvTInstalledElements> scanInstalled(const KvNReflasher::KvTOptions& options) {
    PlannedTarget target(options, KvNReflasher::showTargetElements);
    if (!target.prepare()) {
        return std::nullopt;
    }
    KvTInstalledElements installed;
    for (const KvTUpdateElement& element : target.preparation().inventory().elements()) {
        installed.emplace(element.elementAddress.toString().view(), installedOn(element));
    }
    return installed;
}

std::vector<KvTVerifiedElement> verifyElements(const std::vector<KvTPlannedElement>& elements,
                                               const KvTInstalledElements& found, bool wasRebooted) {
    std::vector<KvTVerifiedElement> result;
    for (const KvTPlannedElement& element : elements) {
        if (element.isUpdated()) {
            result.push_back(verified(element, found, wasRebooted));
        }
    }
    return result;
}

bool hasNoFault(const std::vector<KvTVerifiedElement>& elements) {
    return std::none_of(elements.begin(), elements.end(),
                        [](const KvTVerifiedElement& element) { return element.isFault(); });
}

std::optional<KvTInstalledElements> scanAfterReboot(const std::function<std::optional<KvTInstalledElements>()>& scan,
                                                    const std::vector<KvTPlannedElement>& elements,
                                                    std::uint32_t waitSeconds) {
    writeText(stdout, "Waiting for the target to answer after its reboot (at most " + std::to_string(waitSeconds) +
                          " s) ...\n");
    for (std::uint32_t second = 0;; ++second) {
        std::optional<KvTInstalledElements> installed = scan();
        if (second >= waitSeconds || (installed && hasNoFault(verifyElements(elements, *installed, true)))) {
            return installed;
        }
        KvNRtosAbstraction::usleep(microsecondsPerSecond);
    }
}

std::string verificationText(const std::vector<KvTVerifiedElement>& elements) {
    KvTTable table = {{"No.", "Update element", "Expected", "Found", "Expected checksum", "Found checksum", "Result"}};
    for (const KvTVerifiedElement& one : elements) {
        if (one.result != KvEVerified::asExpected) {
            table.push_back(row(one));
        }
    }
    const std::string differences = table.size() > 1 ? std::string("\n").append(tableText(table)) : std::string();
    return differences + summary(elements);
}

const char* wordsFor(KvEVerified result) {
    constexpr std::array words = {"as expected", "differs", "activates at reboot", "missing",
                                  "not reported by the target"};
    static_assert(words.size() == verifiedCount);
    return words.at(static_cast<std::size_t>(result));
}
