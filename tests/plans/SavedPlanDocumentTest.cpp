#include "ExpectedDocuments.h"
#include "SavedPlans.h"

#include <gtest/gtest.h>

#include <string>

using namespace KvNReflasher;

namespace {

std::string reasonToRefuse(const std::string& document) {
    std::string reason;
    return readSavedPlan(document, reason) ? "accepted" : reason;
}

TEST(SavedPlanDocument, IsThatOfTheExpectedFile) {
    expectDocuments(KV_EXPECTED_DOCUMENTS, {{"saved-plan.json", [] { return savedPlanDocument(sampleSavedPlan()); }}});
}

TEST(SavedPlanDocument, IsReadAsItWasWritten) {
    const std::string document = savedPlanDocument(sampleSavedPlan());
    std::string reason;
    const std::optional<KvTSavedPlan> plan = readSavedPlan(document, reason);
    ASSERT_TRUE(plan) << reason;
    EXPECT_EQ(savedPlanDocument(*plan), document);
    EXPECT_EQ(plan->target, "rack-7");
    EXPECT_EQ(plan->options.disabledElements, (std::vector<std::string>{"3", "\u00C4"}));
    EXPECT_EQ(plan->plan.nodeSerialNumbers, (std::vector<std::uint32_t>{2815, 2816}));
    EXPECT_EQ(plan->files.at(1).size, 1ULL << 40U);
    EXPECT_EQ(plan->plan.elements.size(), sampleSavedPlan().plan.elements.size());
    EXPECT_EQ(plan->plan.elements.at(0).installed.version, sampleSavedPlan().plan.elements.at(0).installed.version);
}

TEST(SavedPlanDocument, ThatWasChangedAnywhereIsRefused) {
    const std::string document = savedPlanDocument(sampleSavedPlan());
    for (std::size_t place = 0; place < document.size(); ++place) {
        for (const char other : {'0', ' ', '"'}) {
            std::string changed = document;
            changed[place] = other;
            if (changed != document) {
                ASSERT_NE(reasonToRefuse(changed), "accepted") << place;
            }
        }
        std::string shorter = document;
        shorter.erase(place, 1);
        ASSERT_NE(reasonToRefuse(shorter), "accepted") << place;
        ASSERT_NE(reasonToRefuse(document.substr(0, place)), "accepted") << place;
    }
    EXPECT_EQ(reasonToRefuse(document + "\n"), "it was changed after it was saved");
    EXPECT_EQ(reasonToRefuse("\xEF\xBB\xBF" + document), "it was changed after it was saved");
}

TEST(SavedPlanDocument, OfAnotherKindIsNamed) {
    EXPECT_EQ(reasonToRefuse(""), "it is not a saved plan");
    EXPECT_EQ(reasonToRefuse("{}"), "it is not a saved plan");
    EXPECT_EQ(reasonToRefuse("[1]"), "it is not a saved plan");
    EXPECT_EQ(reasonToRefuse(R"({"format": {"name": "kvreflash.plan", "version": 1}})"), "it is not a saved plan");
    EXPECT_EQ(reasonToRefuse(R"({"format": {"name": "kvreflash.saved-plan", "version": 2}})"),
              "it was saved by another version of the tool, in a format that is not known");
    EXPECT_EQ(reasonToRefuse(R"({"format": {"name": "kvreflash.saved-plan", "version": 1}})"),
              "it was changed after it was saved");
}

TEST(SavedPlanDocument, WithBytesThatAreNotUtf8IsReadAsItWasWritten) {
    KvTSavedPlan plan = sampleSavedPlan();
    plan.plan.elements.at(0).displayName = "broken \xFF name";
    EXPECT_EQ(reasonToRefuse(savedPlanDocument(plan)), "accepted");
}

TEST(SavedPlanDocument, GivesTheOptionsOfItsSession) {
    const KvTOptions options = optionsFor(sampleSavedPlan(), {});
    EXPECT_EQ(options.mode, performUpdate);
    EXPECT_EQ(options.target, L"rack-7");
    EXPECT_EQ(options.archiveFolder, L"/archives/release");
    EXPECT_EQ(options.descriptionFileName, L"archive.json");
    EXPECT_EQ(options.boardTypeFilter, "QB4120");
    EXPECT_EQ(options.serialNumberFilter, "2815");
    EXPECT_EQ(options.elementNameFilter, "UserFirmware");
    EXPECT_TRUE(options.configurationElements);
    EXPECT_TRUE(options.disableCustomElements);
    EXPECT_TRUE(options.forceUpdate);
    EXPECT_EQ(optionsFor(sampleSavedPlan(), L"/moved").archiveFolder, L"/moved");
}

} // namespace
