#pragma once

#include "KvTOptions.h"
#include "PlannedUpdate.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What the target reports of an updated element.
enum class KvEVerified : std::uint8_t {
    /// What was installed.
    asExpected,
    /// Something else.
    differs,
    /// What it reported before; it may show the update after a reboot.
    activatesAtReboot,
    /// It is gone.
    missing,
    /// It is a file that the inventory does not tell.
    notReported
};
inline constexpr std::size_t verifiedCount = 5;

/// An updated element beside what the target reports of it afterwards.
struct KvTVerifiedElement {
    const KvTPlannedElement* element = nullptr;
    KvTInstalled found;
    KvEVerified result = KvEVerified::asExpected;

    /// It speaks against the update.
    [[nodiscard]] bool isFault() const { return result == KvEVerified::differs || result == KvEVerified::missing; }
};

/// What the target has installed now, by the address of the element; nothing when it does not answer.
using KvTInstalledElements = std::map<std::string, KvTInstalled>;
[[nodiscard]] std::optional<KvTInstalledElements> scanInstalled(const KvNReflasher::KvTOptions& options);

/// Judges the updated elements. `elements` must outlive the result. What is the same as before the update may still
/// change at a reboot, unless the target `wasRebooted`. Unknown versions and checksums are not compared.
[[nodiscard]] std::vector<KvTVerifiedElement> verifyElements(const std::vector<KvTPlannedElement>& elements,
                                                             const KvTInstalledElements& found, bool wasRebooted);

/// None of the elements speaks against the update.
[[nodiscard]] bool hasNoFault(const std::vector<KvTVerifiedElement>& elements);

/// What a target that was rebooted has installed, as `scan` tells it. The target may still answer for a moment, and its
/// boards come up one after the other: it is asked once a second until nothing speaks against the update of `elements`,
/// for at most `waitSeconds`; then its last answer counts. Says what it waits for.
[[nodiscard]] std::optional<KvTInstalledElements>
scanAfterReboot(const std::function<std::optional<KvTInstalledElements>()>& scan,
                const std::vector<KvTPlannedElement>& elements, std::uint32_t waitSeconds);

/// The table of the elements that are not as expected, and a sentence that sums all up.
[[nodiscard]] std::string verificationText(const std::vector<KvTVerifiedElement>& elements);

/// "as expected", "differs", ...
[[nodiscard]] const char* wordsFor(KvEVerified result);
