#include "VerificationText.h"

#include "TextTable.h"
#include "Texts.h"
#include "ValueTexts.h"

#include <array>
#include <cstddef>

using namespace KvNReflasher;

namespace {

/// In the order of KvEVerified.
constexpr std::array words = {"not listed", "gone", "as expected", "not judged", "unchanged", "differs"};
static_assert(words.size() == verifiedCount);

/// In which the results are counted up.
constexpr std::array orderOfCounts = {KvEVerified::asExpected, KvEVerified::differs,   KvEVerified::unchanged,
                                      KvEVerified::gone,       KvEVerified::notJudged, KvEVerified::notListed};

/// What VALID and ACTIVE speak against.
std::string stateText(const KvTInstalled& found) {
    std::string text;
    if (!found.valid.value_or(true)) {
        text += ", not valid";
    }
    if (!found.active.value_or(true)) {
        text += ", not active";
    }
    return text;
}

std::vector<std::string> rowOf(const KvTPlannedElement& element, const KvTVerifiedElement& one) {
    const KvTInstalled found = one.found.value_or(KvTInstalled());
    return {std::to_string(element.index),
            element.displayName,
            versionCell(element.entry->version),
            versionCell(found.version),
            checksumCell(element.entry->checksumCrc32),
            checksumCell(found.checksumCrc32),
            wordsFor(one.result) + (one.found ? stateText(found) : std::string()) +
                (one.fileChanged ? ", its update file has changed" : "")};
}

std::string differences(const KvTPlan& plan, const KvTVerification& verification) {
    KvTTextTable table = {
        {"No.", "Update element", "Expected", "Found", "Expected checksum", "Found checksum", "Result"}};
    for (const KvTVerifiedElement& one : verification.elements) {
        if (one.result != KvEVerified::asExpected) {
            table.push_back(rowOf(plan.elements[one.index], one));
        }
    }
    return table.size() > 1 ? std::string("\n").append(tableText(table)) : std::string();
}

/// Elements that a plan takes for up to date although they differ.
std::string leftByPlan(const KvTPlan& plan, const KvTVerification& verification) {
    std::string text;
    for (const KvTVerifiedElement& one : verification.elements) {
        if (one.leftByPlan) {
            text.append("'").append(visibleInLine(plan.elements[one.index].displayName));
            text += "' reports the checksum 0: a plan leaves it, and update --force installs it.\n";
        }
    }
    return text;
}

std::string summary(const KvTVerification& verification) {
    std::string text = "\nVerification: ";
    const char* separator = "";
    for (const KvEVerified result : orderOfCounts) {
        const std::size_t count = verification.count(result);
        if (count != 0 || result == KvEVerified::asExpected) {
            text.append(separator).append(std::to_string(count)).append(" ").append(wordsFor(result));
            separator = ", ";
        }
    }
    return text + "\n";
}

} // namespace

std::string verificationText(const KvTPlan& plan, const KvTVerification& verification) {
    if (!verification.look.succeeded) {
        const std::string reason = visibleInLine(verification.look.message) + "\n";
        return "\nVerification: the target cannot be looked at: " + reason + errorsText(verification.look.errors);
    }
    return differences(plan, verification) + leftByPlan(plan, verification) + summary(verification) +
           errorsText(verification.look.errors);
}

std::string elementsWithoutEntryText(const KvTPlan& plan) {
    std::string text;
    for (const KvTPlannedElement& element : plan.elements) {
        if (!element.entry) {
            text.append("        ").append(visibleInLine(element.displayName)).append("\n");
        }
    }
    return text.empty() ? text : "\nThe archive has no entry for these elements:\n" + text;
}

const char* wordsFor(KvEVerified result) {
    return words.at(static_cast<std::size_t>(result));
}
