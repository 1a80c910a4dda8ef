#include "KvISession.h"
#include "PlanValue.h"

#include <algorithm>
#include <array>
#include <utility>

using namespace KvNReflasher;

namespace {

/// How a value that the target reports fits what was planned.
enum class Fit : std::uint8_t { notCompared, asPlanned, otherwise };

/// The standard against which an element is held.
enum class Standard : std::uint8_t {
    /// Exactly what the entry installs.
    installed,
    /// What a plan leaves: an entry of the mode upgrade is met by a newer version, too.
    left
};

/// The value of a parameter that the element has or had; one that is gone is not as planned.
template <typename Value>
Fit fitOf(const std::optional<Value>& before, const std::optional<Value>& now, const Value& planned) {
    if (!before && !now) {
        return Fit::notCompared;
    }
    return now == planned ? Fit::asPlanned : Fit::otherwise;
}

/// A version that the element states as zero is compared, too: a plan would take it for another one.
Fit fitOfVersion(const KvTPlannedElement& element, const KvTInstalled& now, Standard standard) {
    if (!element.entry->version || (!element.installed.hasVersion && !now.hasVersion)) {
        return Fit::notCompared;
    }
    if (standard == Standard::left && element.entry->mode == KvEEntryMode::upgrade) {
        return element.decision.has(KvEReason::versionDiffers) ? Fit::otherwise : Fit::asPlanned;
    }
    return now.version == element.entry->version ? Fit::asPlanned : Fit::otherwise;
}

/// Mode upgrade does not look at checksums.
Fit fitOfChecksum(const KvTPlannedElement& element, const KvTInstalled& now) {
    if (!element.entry->checksumCrc32 || element.entry->mode == KvEEntryMode::upgrade) {
        return Fit::notCompared;
    }
    return fitOf(element.installed.checksumCrc32, now.checksumCrc32, *element.entry->checksumCrc32);
}

struct Fits {
    Fit version = Fit::notCompared;
    Fit checksum = Fit::notCompared;
    Fit valid = Fit::notCompared;
    Fit active = Fit::notCompared;

    [[nodiscard]] bool isSound() const { return valid != Fit::otherwise && active != Fit::otherwise; }
    [[nodiscard]] bool isCompared() const { return version != Fit::notCompared || checksum != Fit::notCompared; }
    [[nodiscard]] bool isAsPlanned() const {
        return isSound() && isCompared() && version != Fit::otherwise && checksum != Fit::otherwise;
    }
};

Fits fitsOf(const KvTPlan& plan, const KvTPlannedElement& element, const KvTInstalled& now, Standard standard) {
    Fits fits{.version = fitOfVersion(element, now, standard),
              .checksum = fitOfChecksum(element, now),
              .valid = fitOf(element.installed.valid, now.valid, true)};
    if (!element.isFileSystemElement && !plan.configurationElements) {
        fits.active = fitOf(element.installed.active, now.active, true);
    }
    return fits;
}

KvEVerified judge(const Fits& fits, bool isUnchanged) {
    if (fits.isAsPlanned()) {
        return KvEVerified::asExpected;
    }
    if (!fits.isCompared() && fits.isSound()) {
        return KvEVerified::notJudged;
    }
    return isUnchanged ? KvEVerified::unchanged : KvEVerified::differs;
}

/// An element beside what `look` has found. `mayChange`: what is unchanged may still show the update at a reboot.
KvTVerifiedElement verified(const KvTPlan& plan, const KvTPlannedElement& element, const KvTLook& look,
                            Standard standard, bool mayChange) {
    KvTVerifiedElement result{.index = element.index, .found = {}};
    if (!element.isListed()) {
        result.result = KvEVerified::notListed;
        return result;
    }
    result.found = element.index < look.elements.size() ? look.elements[element.index] : std::nullopt;
    if (!result.found) {
        result.result = KvEVerified::gone;
        return result;
    }
    const bool isUnchanged = mayChange && *result.found == element.installed;
    result.result = judge(fitsOf(plan, element, *result.found, standard), isUnchanged);
    result.leftByPlan =
        result.result == KvEVerified::differs && element.upToDate && result.found->checksumCrc32 == std::uint32_t{0};
    return result;
}

/// Whatever the target reports: nobody knows what was installed.
void noteChangedFile(KvTVerifiedElement& verified, const KvTElementOutcome& outcome) {
    if (outcome.fileChanged) {
        verified.fileChanged = true;
        verified.result = KvEVerified::differs;
    }
}

/// An element that the archive says something of and that the options do not leave out.
bool isMeant(const KvTPlannedElement& element) {
    return element.entry && !element.decision.has(KvEReason::customLeftOut) &&
           !element.decision.has(KvEReason::disabled);
}

std::string faultMessage(const KvTVerification& verification) {
    constexpr std::array<std::pair<KvEVerified, const char*>, 3> faults{
        {{KvEVerified::differs, "different"}, {KvEVerified::unchanged, "unchanged"}, {KvEVerified::gone, "gone"}}};
    std::string message;
    for (const auto& [result, word] : faults) {
        if (const std::size_t count = verification.count(result); count != 0) {
            message.append(message.empty() ? "" : ", ").append(std::to_string(count)).append(" ").append(word);
        }
    }
    if (!message.empty()) {
        message.insert(0, "the target does not report what it should: ");
        const auto changed = std::count_if(verification.elements.begin(), verification.elements.end(),
                                           [](const KvTVerifiedElement& element) { return element.fileChanged; });
        message += changed != 0 ? "; update files changed during the update" : "";
    }
    return message;
}

KvTVerdict judgeElements(const KvTVerification& verification) {
    if (std::string message = faultMessage(verification); !message.empty()) {
        return {KvEFailure::verification, std::move(message)};
    }
    const std::size_t listed = verification.elements.size() - verification.count(KvEVerified::notListed);
    if (listed != 0 && verification.count(KvEVerified::asExpected) == 0) {
        return {KvEFailure::verification, "nothing that the target reports can be compared with the archive: " +
                                              std::to_string(listed) + " not judged"};
    }
    return {};
}

} // namespace

KvTVerification KvNReflasher::verifyUpdate(const KvTPlan& plan, const KvTOutcome& outcome, KvTLook look,
                                           bool wasRebooted) {
    KvTVerification verification;
    verification.look = std::move(look);
    if (!verification.look.succeeded) {
        return verification;
    }
    for (const KvTPlannedElement& element : plan.elements) {
        const bool isKnown = element.index < outcome.elements.size();
        if (isKnown && outcome.elements[element.index].result == KvEResult::updated) {
            verification.elements.push_back(
                verified(plan, element, verification.look, Standard::installed, !wasRebooted));
            noteChangedFile(verification.elements.back(), outcome.elements[element.index]);
        }
    }
    return verification;
}

KvTVerification KvNReflasher::verifyPlan(const KvTPlan& plan) {
    KvTVerification verification;
    verification.look.succeeded = true;
    for (const KvTPlannedElement& element : plan.elements) {
        verification.look.elements.push_back(element.isListed() ? std::optional(element.installed) : std::nullopt);
    }
    for (const KvTPlannedElement& element : plan.elements) {
        if (isMeant(element)) {
            verification.elements.push_back(verified(plan, element, verification.look, Standard::left, false));
        }
    }
    return verification;
}

KvTVerdict KvNReflasher::verdictOf(const KvTPlan& plan) {
    if (plan.supported) {
        return {};
    }
    return {KvEFailure::unsupported, unsupportedMessage(plan)};
}

KvTVerdict KvNReflasher::verdictOf(const KvTVerification& verification) {
    const KvTLook& look = verification.look;
    if (!look.succeeded) {
        return {KvEFailure::verification, "the target could not be looked at: " + look.message};
    }
    KvTVerdict verdict = judgeElements(verification);
    if (verdict.isSuccess() && !look.errors.empty()) {
        return {KvEFailure::errors, "the look at the target met " + std::to_string(look.errors.size()) +
                                        (look.errors.size() == 1 ? " error" : " errors")};
    }
    return verdict;
}
