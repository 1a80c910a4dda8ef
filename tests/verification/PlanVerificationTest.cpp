#include "VerifiedPlan.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

using namespace KvNReflasher;

namespace {

/// An element and what the plan has decided of it.
struct PlanRow {
    const char* name;
    KvTArchiveEntry entry;
    KvTInstalled installed;
    KvTDecision decision;
    KvEVerified result;

    friend void PrintTo(const PlanRow& row, std::ostream* stream) { *stream << row.name; }
};

class PlannedElement : public testing::TestWithParam<PlanRow> {};

KvTDecision leftFor(KvEReason reason) {
    return {.update = false, .reasons = {reason}};
}

KvTDecision updatedFor(KvEReason reason) {
    return {.update = true, .reasons = {reason}};
}

} // namespace

TEST_P(PlannedElement, IsHeldAgainstItsEntry) {
    const PlanRow& row = GetParam();
    KvTPlan plan = planOf(row.entry, row.installed);
    plan.elements.front().decision = row.decision;
    plan.elements.front().upToDate = !row.decision.update;
    const KvTVerification verification = verifyPlan(plan);
    EXPECT_TRUE(verification.look.succeeded);
    ASSERT_EQ(1U, verification.elements.size());
    EXPECT_EQ(nameOf(row.result), nameOf(verification.elements.front().result));
    EXPECT_EQ(row.installed, verification.elements.front().found);
}

INSTANTIATE_TEST_SUITE_P(Situations, PlannedElement,
                         testing::Values(PlanRow{"UpToDate", offers("2.0", 2), reports("2.0", 2, true, true),
                                                 leftFor(KvEReason::upToDate), KvEVerified::asExpected},
                                         PlanRow{"OfAnotherVersion", offers("2.0"), reports("1.0"),
                                                 updatedFor(KvEReason::versionDiffers), KvEVerified::differs},
                                         PlanRow{"OfAnotherChecksum", offers("2.0", 2), reports("2.0", 3),
                                                 updatedFor(KvEReason::checksumDiffers), KvEVerified::differs},
                                         PlanRow{"OfChecksum0", offers("2.0", 2), reports("2.0", 0),
                                                 leftFor(KvEReason::upToDate), KvEVerified::differs},
                                         PlanRow{"NotValid", offers("2.0"), reports("2.0", {}, false),
                                                 updatedFor(KvEReason::invalid), KvEVerified::differs},
                                         PlanRow{"NotActive", offers("2.0"), reports("2.0", {}, true, false),
                                                 updatedFor(KvEReason::inactive), KvEVerified::differs},
                                         PlanRow{"WithNothingToCompare", offers(""), reports("1.0", 1),
                                                 leftFor(KvEReason::upToDate), KvEVerified::notJudged},
                                         PlanRow{"WithNothingReported", offers("2.0", 2), reports(""),
                                                 updatedFor(KvEReason::versionDiffers), KvEVerified::notJudged},
                                         PlanRow{"OfVersionZero", offers("2.0", 2), reports("0.0", 2),
                                                 updatedFor(KvEReason::versionDiffers), KvEVerified::differs},
                                         PlanRow{"UpgradeFromVersionZero", upgradesTo("2.0"), reports("0.0", 1),
                                                 updatedFor(KvEReason::versionDiffers), KvEVerified::differs},
                                         PlanRow{"UpgradedAlready", upgradesTo("2.0", 2), reports("2.0", 9),
                                                 leftFor(KvEReason::upToDate), KvEVerified::asExpected},
                                         PlanRow{"NewerThanAnUpgrade", upgradesTo("2.0", 2), reports("3.0", 9),
                                                 leftFor(KvEReason::newerInstalled), KvEVerified::asExpected},
                                         PlanRow{"OlderThanAnUpgrade", upgradesTo("2.0"), reports("1.0"),
                                                 updatedFor(KvEReason::versionDiffers), KvEVerified::differs},
                                         PlanRow{"NewerThanAnUpgradeButInactive", upgradesTo("2.0"),
                                                 reports("3.0", {}, true, false), updatedFor(KvEReason::inactive),
                                                 KvEVerified::differs},
                                         PlanRow{"UpgradeOfAnElementWithoutVersion", upgradesTo("2.0"), reports("", 1),
                                                 updatedFor(KvEReason::versionDiffers), KvEVerified::notJudged},
                                         PlanRow{"NewerThanAStandardEntry", offers("2.0"), reports("3.0"),
                                                 updatedFor(KvEReason::versionDiffers), KvEVerified::differs}),
                         [](const auto& row) { return row.param.name; });

TEST(PlanVerification, LeavesOutWhatHasNoEntryOrTakesNoPart) {
    KvTPlan plan = planOf(offers("2.0"), reports("1.0"));
    addElement(plan, offers("2.0"), reports("1.0")).decision = {
        .update = false, .reasons = {KvEReason::upToDate, KvEReason::customLeftOut}};
    addElement(plan, offers("2.0"), reports("1.0")).decision = {.update = false, .reasons = {KvEReason::disabled}};
    KvTPlannedElement& without = addElement(plan, offers("2.0"), reports("1.0"));
    without.entry.reset();
    without.decision = {.update = false, .reasons = {KvEReason::noEntry}};
    addElement(plan, offers("2.0"), reports("2.0")).decision = {.update = false, .reasons = {KvEReason::upToDate}};
    std::vector<std::uint32_t> indices;
    for (const KvTVerifiedElement& element : verifyPlan(plan).elements) {
        indices.push_back(element.index);
    }
    EXPECT_EQ((std::vector<std::uint32_t>{0, 4}), indices);
}

TEST(PlanVerification, AFileThatTheInventoryDoesNotListIsNotListed) {
    KvTPlan plan = planOf(offers("2.0"), {});
    plan.elements.front().address.clear();
    plan.elements.front().isFileSystemElement = true;
    const KvTVerification verification = verifyPlan(plan);
    EXPECT_EQ(1U, verification.count(KvEVerified::notListed));
    EXPECT_TRUE(verdictOf(verification).isSuccess());
}

TEST(PlanVerification, AnElementOfChecksum0IsLeftByAPlanIfItIsUpToDateOtherwise) {
    KvTPlan plan = planOf(offers("2.0", 2), reports("2.0", 0));
    plan.elements.front().decision = {.update = false, .reasons = {KvEReason::upToDate}};
    plan.elements.front().upToDate = true;
    EXPECT_TRUE(verifyPlan(plan).elements.front().leftByPlan);
    // Another version lets a plan take it.
    plan.elements.front().installed = reports("1.0", 0);
    plan.elements.front().upToDate = false;
    EXPECT_FALSE(verifyPlan(plan).elements.front().leftByPlan);
    // Another checksum does that, too.
    plan.elements.front().installed = reports("2.0", 3);
    EXPECT_FALSE(verifyPlan(plan).elements.front().leftByPlan);
    // As expected, nothing is left.
    plan.elements.front().entry = offers("2.0", 0);
    plan.elements.front().installed = reports("2.0", 0);
    plan.elements.front().upToDate = true;
    EXPECT_FALSE(verifyPlan(plan).elements.front().leftByPlan);
}
