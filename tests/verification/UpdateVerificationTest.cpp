#include "VerifiedPlan.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <vector>

using namespace KvNReflasher;

namespace {

constexpr auto asExpected = KvEVerified::asExpected;
constexpr auto differs = KvEVerified::differs;
constexpr auto unchanged = KvEVerified::unchanged;
constexpr auto notJudged = KvEVerified::notJudged;
constexpr auto gone = KvEVerified::gone;

/// The outcome of a session that has updated every element of the plan.
KvTOutcome allUpdated(const KvTPlan& plan) {
    KvTOutcome outcome;
    outcome.stage = KvEStage::ended;
    outcome.elements.resize(plan.elements.size());
    for (KvTElementOutcome& element : outcome.elements) {
        element.result = KvEResult::updated;
    }
    return outcome;
}

KvTLook lookThatFound(std::vector<std::optional<KvTInstalled>> elements) {
    KvTLook look;
    look.succeeded = true;
    look.elements = std::move(elements);
    return look;
}

/// The element of a plan with one element.
KvTVerifiedElement verifiedElement(const KvTPlan& plan, const std::optional<KvTInstalled>& now, bool wasRebooted) {
    const KvTVerification verification = verifyUpdate(plan, allUpdated(plan), lookThatFound({now}), wasRebooted);
    EXPECT_EQ(1U, verification.elements.size());
    return verification.elements.empty() ? KvTVerifiedElement() : verification.elements.front();
}

struct UpdateRow {
    const char* name;
    KvTArchiveEntry entry;
    KvTInstalled before;
    std::optional<KvTInstalled> now;
    KvEVerified result;
    /// After a reboot nothing is left to come: what is unchanged differs.
    KvEVerified afterReboot;

    friend void PrintTo(const UpdateRow& row, std::ostream* stream) { *stream << row.name; }
};

class UpdatedElement : public testing::TestWithParam<UpdateRow> {};

std::string nameOfRow(const testing::TestParamInfo<UpdateRow>& row) {
    return row.param.name;
}

} // namespace

TEST_P(UpdatedElement, IsHeldAgainstItsEntry) {
    const UpdateRow& row = GetParam();
    const KvTPlan plan = planOf(row.entry, row.before);
    EXPECT_EQ(nameOf(row.result), nameOf(verifiedElement(plan, row.now, false).result));
    EXPECT_EQ(nameOf(row.afterReboot), nameOf(verifiedElement(plan, row.now, true).result));
    EXPECT_EQ(row.now, verifiedElement(plan, row.now, false).found);
}

INSTANTIATE_TEST_SUITE_P(
    Version, UpdatedElement,
    testing::Values(
        UpdateRow{"ThatIsPlanned", offers("2.0"), reports("1.0"), reports("2.0"), asExpected, asExpected},
        UpdateRow{"ThatIsOlder", offers("2.0"), reports("1.0"), reports("1.5"), differs, differs},
        UpdateRow{"ThatIsNewer", offers("2.0"), reports("1.0"), reports("3.0"), differs, differs},
        UpdateRow{"ThatIsTheFormer", offers("2.0"), reports("1.0"), reports("1.0"), unchanged, differs},
        UpdateRow{"ThatIsGone", offers("2.0"), reports("1.0"), reports(""), differs, differs},
        UpdateRow{"ThatHasCome", offers("2.0"), reports(""), reports("2.0"), asExpected, asExpected},
        UpdateRow{"ThatHasComeAndIsAnother", offers("2.0"), reports(""), reports("1.0"), differs, differs},
        UpdateRow{"ThatTheElementNeverHad", offers("2.0"), reports(""), reports(""), notJudged, notJudged},
        UpdateRow{"ThatStaysZero", offers("2.0"), reports("0.0"), reports("0.0"), unchanged, differs},
        UpdateRow{"ThatStaysZeroBesideThePlannedChecksum", offers("2.0", 2), reports("0.0", 1), reports("0.0", 2),
                  differs, differs},
        UpdateRow{"ThatBecomesZero", offers("2.0", 2), reports("1.0", 1), reports("0.0", 2), differs, differs},
        UpdateRow{"ThatWasZero", offers("2.0"), reports("0.0"), reports("2.0"), asExpected, asExpected},
        UpdateRow{"ThatTheEntryDoesNotState", offers(""), reports("1.0"), reports("2.0"), notJudged, notJudged},
        UpdateRow{"ThatWasPlannedAlready", offers("2.0"), reports("2.0"), reports("2.0"), asExpected, asExpected}),
    nameOfRow);

INSTANTIATE_TEST_SUITE_P(
    Checksum, UpdatedElement,
    testing::Values(
        UpdateRow{"ThatIsPlanned", offers("", 2), reports("", 1), reports("", 2), asExpected, asExpected},
        UpdateRow{"ThatIsAnother", offers("", 2), reports("", 1), reports("", 3), differs, differs},
        UpdateRow{"ThatIsTheFormer", offers("", 2), reports("", 1), reports("", 1), unchanged, differs},
        UpdateRow{"Of0", offers("", 2), reports("", 1), reports("", 0), differs, differs},
        UpdateRow{"Of0AsBefore", offers("", 2), reports("", 0), reports("", 0), unchanged, differs},
        UpdateRow{"Of0ThatIsPlanned", offers("", 0), reports("", 1), reports("", 0), asExpected, asExpected},
        UpdateRow{"ThatIsGone", offers("", 2), reports("", 1), reports(""), differs, differs},
        UpdateRow{"ThatTheElementNeverHad", offers("", 2), reports(""), reports(""), notJudged, notJudged},
        UpdateRow{"ThatTheEntryDoesNotState", offers(""), reports("", 1), reports("", 2), notJudged, notJudged},
        UpdateRow{"Of0BesideThePlannedVersion", offers("2.0", 2), reports("1.0", 1), reports("2.0", 0), differs,
                  differs},
        UpdateRow{"ThatIsAnotherBesideThePlannedVersion", offers("2.0", 2), reports("1.0", 1), reports("2.0", 3),
                  differs, differs},
        UpdateRow{"ThatIsPlannedBesideAnotherVersion", offers("2.0", 2), reports("1.0", 1), reports("1.0", 2), differs,
                  differs},
        UpdateRow{"ThatAloneTheElementHas", offers("2.0", 2), reports("", 1), reports("", 2), asExpected, asExpected},
        UpdateRow{"ThatIsGoneBesideThePlannedVersion", offers("2.0", 2), reports("1.0", 1), reports("2.0"), differs,
                  differs}),
    nameOfRow);

INSTANTIATE_TEST_SUITE_P(
    Flag, UpdatedElement,
    testing::Values(UpdateRow{"ValidAndActive", offers("2.0"), reports("1.0", {}, true, true),
                              reports("2.0", {}, true, true), asExpected, asExpected},
                    UpdateRow{"NotValid", offers("2.0"), reports("1.0", {}, true, true),
                              reports("2.0", {}, false, true), differs, differs},
                    UpdateRow{"NotActive", offers("2.0"), reports("1.0", {}, true, true),
                              reports("2.0", {}, true, false), differs, differs},
                    UpdateRow{"StillNotActive", offers("2.0"), reports("2.0", {}, true, false),
                              reports("2.0", {}, true, false), unchanged, differs},
                    UpdateRow{"StillNotValid", offers("2.0"), reports("2.0", {}, false, true),
                              reports("2.0", {}, false, true), unchanged, differs},
                    UpdateRow{"ActiveAtLast", offers("2.0"), reports("2.0", {}, true, false),
                              reports("2.0", {}, true, true), asExpected, asExpected},
                    UpdateRow{"ValidIsGone", offers("2.0"), reports("1.0", {}, true), reports("2.0"), differs, differs},
                    UpdateRow{"ActiveIsGone", offers("2.0"), reports("1.0", {}, {}, true), reports("2.0"), differs,
                              differs},
                    UpdateRow{"NoActiveAtAll", offers("2.0"), reports("1.0", {}, true), reports("2.0", {}, true),
                              asExpected, asExpected},
                    // Neither version nor checksum can be compared: the flags decide whether that is all.
                    UpdateRow{"NothingToCompareButAsPlanned", offers(""), reports("1.0", 1, true, true),
                              reports("1.0", 1, true, true), notJudged, notJudged},
                    UpdateRow{"NothingToCompareAndNotValid", offers(""), reports("1.0", 1, true, true),
                              reports("1.0", 1, false, true), differs, differs},
                    UpdateRow{"NothingToCompareAndStillNotActive", offers(""), reports("1.0", 1, true, false),
                              reports("1.0", 1, true, false), unchanged, differs}),
    nameOfRow);

INSTANTIATE_TEST_SUITE_P(Upgrade, UpdatedElement,
                         testing::Values(UpdateRow{"ToThePlannedVersion", upgradesTo("2.0", 2), reports("1.0", 1),
                                                   reports("2.0", 2), asExpected, asExpected},
                                         UpdateRow{"LooksAtNoChecksum", upgradesTo("2.0", 2), reports("1.0", 1),
                                                   reports("2.0", 3), asExpected, asExpected},
                                         UpdateRow{"LooksAtNoChecksumOf0", upgradesTo("2.0", 2), reports("1.0", 1),
                                                   reports("2.0", 0), asExpected, asExpected},
                                         UpdateRow{"ToANewerVersionThanTheEntrys", upgradesTo("2.0"), reports("1.0"),
                                                   reports("3.0"), differs, differs},
                                         UpdateRow{"ThatStays", upgradesTo("2.0"), reports("1.0"), reports("1.0"),
                                                   unchanged, differs},
                                         UpdateRow{"WithAChecksumAlone", upgradesTo("", 2), reports("", 1),
                                                   reports("", 2), notJudged, notJudged}),
                         nameOfRow);

INSTANTIATE_TEST_SUITE_P(
    Element, UpdatedElement,
    testing::Values(UpdateRow{"ThatIsGone", offers("2.0"), reports("1.0"), std::nullopt, gone, gone},
                    UpdateRow{"ThatIsGoneAndCouldNotBeCompared", offers(""), reports("1.0"), std::nullopt, gone, gone},
                    UpdateRow{"ThatReportsNothing", offers("2.0", 2), reports(""), reports(""), notJudged, notJudged},
                    UpdateRow{"ThatReportsNothingMore", offers("2.0", 2), reports("1.0", 1, true, true), reports(""),
                              differs, differs}),
    nameOfRow);

TEST(UpdateVerification, AFileThatTheInventoryDoesNotListIsNotListedWhateverTheLookSays) {
    KvTPlan plan = planOf(offers("2.0"), {});
    plan.elements.front().address.clear();
    plan.elements.front().isFileSystemElement = true;
    for (const auto& now : {std::optional<KvTInstalled>(), std::optional(reports("2.0"))}) {
        EXPECT_EQ(nameOf(KvEVerified::notListed), nameOf(verifiedElement(plan, now, false).result));
        EXPECT_EQ(std::nullopt, verifiedElement(plan, now, false).found);
    }
}

TEST(UpdateVerification, AConfigurationElementNeedNotBeActive) {
    KvTPlan plan = planOf(offers("2.0"), reports("1.0", {}, true, false));
    const KvTInstalled now = reports("2.0", {}, true, false);
    EXPECT_EQ(nameOf(differs), nameOf(verifiedElement(plan, now, false).result));
    plan.configurationElements = true;
    EXPECT_EQ(nameOf(asExpected), nameOf(verifiedElement(plan, now, false).result));
    EXPECT_EQ(nameOf(differs), nameOf(verifiedElement(plan, reports("2.0", {}, false, false), false).result));
}

TEST(UpdateVerification, AFileOfTheInventoryNeedNotBeActive) {
    KvTPlan plan = planOf(offers("2.0"), reports("1.0", {}, true, false));
    plan.elements.front().isFileSystemElement = true;
    EXPECT_EQ(nameOf(asExpected), nameOf(verifiedElement(plan, reports("2.0", {}, true, false), false).result));
    EXPECT_EQ(nameOf(differs), nameOf(verifiedElement(plan, reports("2.0", {}, false, false), false).result));
}

TEST(UpdateVerification, OnlyElementsThatWereUpdatedAreLookedFor) {
    constexpr std::array others{KvEResult::notPlanned, KvEResult::notStarted, KvEResult::fileMissing,
                                KvEResult::cancelled,  KvEResult::failed,     KvEResult::inProgress};
    KvTPlan plan = planOf(offers("2.0"), reports("1.0"));
    addElement(plan, offers("2.0"), reports("1.0"));
    KvTOutcome outcome = allUpdated(plan);
    for (const KvEResult other : others) {
        outcome.elements.front().result = other;
        const KvTVerification verification =
            verifyUpdate(plan, outcome, lookThatFound({reports("1.0"), reports("2.0")}), false);
        ASSERT_EQ(1U, verification.elements.size());
        EXPECT_EQ(1U, verification.elements.front().index);
        EXPECT_EQ(nameOf(asExpected), nameOf(verification.elements.front().result));
    }
}

TEST(UpdateVerification, ALookThatFailedJudgesNothingAndStays) {
    const KvTPlan plan = planOf(offers("2.0"), reports("1.0"));
    KvTLook look;
    look.message = "the target is away";
    look.errors.resize(2);
    const KvTVerification verification = verifyUpdate(plan, allUpdated(plan), look, false);
    EXPECT_TRUE(verification.elements.empty());
    EXPECT_FALSE(verification.look.succeeded);
    EXPECT_EQ("the target is away", verification.look.message);
    EXPECT_EQ(2U, verification.look.errors.size());
}

TEST(UpdateVerification, AnOutcomeOrALookWithoutElementsMakesNothingAsExpected) {
    const KvTPlan plan = planOf(offers("2.0"), reports("1.0"));
    EXPECT_TRUE(verifyUpdate(plan, KvTOutcome(), lookThatFound({reports("2.0")}), false).elements.empty());
    const KvTVerification verification = verifyUpdate(plan, allUpdated(plan), lookThatFound({}), false);
    ASSERT_EQ(1U, verification.elements.size());
    EXPECT_EQ(nameOf(gone), nameOf(verification.elements.front().result));
}

TEST(UpdateVerification, CountsItsResults) {
    KvTPlan plan = planOf(offers("2.0"), reports("1.0"));
    addElement(plan, offers("2.0"), reports("1.0"));
    addElement(plan, offers("2.0"), reports("1.0"));
    const KvTVerification verification =
        verifyUpdate(plan, allUpdated(plan), lookThatFound({reports("2.0"), std::nullopt, reports("2.0")}), false);
    EXPECT_EQ(2U, verification.count(asExpected));
    EXPECT_EQ(1U, verification.count(gone));
    EXPECT_EQ(0U, verification.count(differs));
}
