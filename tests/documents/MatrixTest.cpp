#include "SampleValues.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace KvNReflasher;

KvTPlannedElement elementThat(bool isUpdated, bool isUpToDate, bool isDisabled) {
    KvTPlannedElement element;
    element.decision.update = isUpdated;
    element.upToDate = isUpToDate;
    element.disabled = isDisabled;
    return element;
}

struct OutlookRow {
    const char* situation;
    KvTPlannedElement element;
    KvEOutlook outlook;
};

TEST(Outlook, SaysWhatBecomesOfAnElement) {
    const std::vector<OutlookRow> rows = {
        {"differs", elementThat(true, false, false), KvEOutlook::wouldUpdate},
        {"up to date, but forced", elementThat(true, true, false), KvEOutlook::wouldUpdate},
        {"up to date", elementThat(false, true, true), KvEOutlook::upToDate},
        {"left out", elementThat(false, false, true), KvEOutlook::disabled},
        {"no entry", elementThat(false, false, false), KvEOutlook::noEntry}};
    for (const OutlookRow& row : rows) {
        EXPECT_STREQ(codeOf(row.outlook), codeOf(outlookOf(row.element))) << row.situation;
    }
}

std::vector<std::uint32_t> unmatchedIndices(const std::vector<KvTMatrixTarget>& targets) {
    std::vector<std::uint32_t> indices;
    for (const KvTArchiveEntry& entry : unmatchedEntries(sampleContent(), targets)) {
        indices.push_back(entry.descriptionIndex);
    }
    return indices;
}

/// A target whose only element takes the entry of this file index.
KvTMatrixTarget targetThatTakes(std::uint32_t fileIndex) {
    KvTMatrixTarget target;
    target.plan.emplace().elements.emplace_back().entry.emplace().fileIndex = fileIndex;
    return target;
}

TEST(UnmatchedEntries, AreThoseThatNoTargetTakes) {
    EXPECT_EQ((std::vector<std::uint32_t>{1, 4}),
              unmatchedIndices({targetThatTakes(3), KvTMatrixTarget(), targetThatTakes(1)}));
}

TEST(UnmatchedEntries, AreAllOfThemForATargetWithoutElements) {
    KvTMatrixTarget target;
    target.plan.emplace();
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 4, 5}), unmatchedIndices({target}));
}

TEST(UnmatchedEntries, AreNotKnownWithoutAPlan) {
    EXPECT_EQ(std::vector<std::uint32_t>(), unmatchedIndices({}));
    EXPECT_EQ(std::vector<std::uint32_t>(), unmatchedIndices({KvTMatrixTarget()}));
}

} // namespace
