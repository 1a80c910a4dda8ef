#include "PlanValue.h"
#include "PlanningTest.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;
using namespace KvNReflasher;

namespace {

class PlanValue : public PlanningTest {
protected:
    /// What the planner's decisions look like to clients.
    KvTPlan planValue() {
        plan();
        return makePlan(archive(), inventory(), "127.0.0.1", planner().phaseCount(), options());
    }
};

} // namespace

TEST_F(PlanValue, ShowsOfEachElementWhatWasFoundChosenAndDecided) {
    archiveHas({"'boardType': 'X', 'id': 7, 'boardVariant': 'V', 'boardId': 3, 'version': '2.0', 'checksumCrc32': 2, "
                "'hwCompatibilityId': 4, 'swCompatibilityId': 5, 'sequence': 9"});
    targetHas(element("X", 7)
                  .variant("V")
                  .boardId(3)
                  .hardware(4)
                  .software(5)
                  .version("1.0")
                  .checksum(6)
                  .named("UserFirmware")
                  .board("Board (V)", 11)
                  .shownAs("Board (V), SN 11, Firmware"));
    const KvTPlan value = planValue();
    EXPECT_EQ("127.0.0.1", value.targetAddress);
    EXPECT_EQ(1U, value.phaseCount);
    EXPECT_FALSE(value.configurationElements);
    ASSERT_EQ(1U, value.elements.size());
    const KvTPlannedElement& only = value.elements[0];
    EXPECT_EQ(0U, only.index);
    EXPECT_EQ("X", only.boardType);
    EXPECT_EQ("V", only.boardVariant);
    EXPECT_EQ(3U, only.boardId);
    EXPECT_EQ(11U, only.serialNumber);
    EXPECT_EQ("Board (V)", only.boardName);
    EXPECT_EQ("Board (V), SN 11, Firmware", only.displayName);
    EXPECT_EQ("UserFirmware", only.name);
    EXPECT_EQ(7U, only.elementId);
    EXPECT_EQ(4U, only.hwCompatibilityId);
    EXPECT_EQ(5U, only.swCompatibilityId);
    EXPECT_EQ("1.0", only.installed.version->text);
    EXPECT_EQ(6U, only.installed.checksumCrc32);
    ASSERT_TRUE(only.entry.has_value());
    EXPECT_EQ("a.bin", only.entry->fileName);
    EXPECT_EQ("2.0", only.entry->version->text);
    EXPECT_EQ(2U, only.entry->checksumCrc32);
    EXPECT_EQ(9U, only.entry->sequence);
    EXPECT_TRUE(only.decision.update);
    EXPECT_EQ(0U, only.phase);
    EXPECT_FALSE(only.disabled);
    EXPECT_FALSE(only.upToDate);
}

TEST_F(PlanValue, WhatAnElementDoesNotHaveIsNothing) {
    KvTUpdateElement bare = element("X", 1).version("0").build();
    for (const bool has : {false, true}) {
        bare.hasValid = has;
        bare.hasActive = has;
        bare.hasChecksum = has;
        const KvTInstalled installed = installedOn(bare);
        EXPECT_EQ(std::nullopt, installed.version);
        EXPECT_EQ(has, installed.valid.has_value());
        EXPECT_EQ(has, installed.active.has_value());
        EXPECT_EQ(has ? std::optional<std::uint32_t>(0) : std::nullopt, installed.checksumCrc32);
    }
}

TEST_F(PlanValue, OnlyElementsThatAreUpdatedHaveAPhase) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0', 'sequence': 2",
                "'boardType': 'X', 'id': 2, 'sequence': 1", "'boardType': 'X', 'id': 3, 'sequence': 3"});
    targetHas(element("X", 1).version("2.0"));
    targetHas(element("X", 2));
    targetHas(element("X", 3));
    targetHas(element("X", 4));
    const KvTPlan value = planValue();
    EXPECT_EQ(2U, value.phaseCount);
    EXPECT_EQ(std::nullopt, value.elements[0].phase);
    EXPECT_TRUE(value.elements[0].upToDate);
    EXPECT_TRUE(value.elements[0].disabled);
    EXPECT_EQ(0U, value.elements[1].phase);
    EXPECT_EQ(1U, value.elements[2].phase);
    EXPECT_EQ(std::nullopt, value.elements[3].phase);
    EXPECT_EQ(std::nullopt, value.elements[3].entry);
}

TEST_F(PlanValue, AListOfElementsHasNoDecisions) {
    targetHas(element("X", 1).shownAs("One"));
    const KvTPlan value = makeElementList(inventory(), "127.0.0.1");
    ASSERT_EQ(1U, value.elements.size());
    EXPECT_EQ("One", value.elements[0].displayName);
    EXPECT_FALSE(value.archive.has_value());
    EXPECT_TRUE(value.supported);
    EXPECT_FALSE(value.elements[0].decision.update);
    EXPECT_THAT(value.elements[0].decision.reasons, IsEmpty());
}

// Leaving an element out.

TEST_F(PlanValue, ADisabledElementHasNoPhaseAndTheReasonInItsPlace) {
    struct Row {
        bool update;
        std::vector<KvEReason> before;
        std::vector<KvEReason> after;
    };
    const std::vector<Row> rows{{true, {KvEReason::versionDiffers, KvEReason::inactive}, {KvEReason::disabled}},
                                {true, {KvEReason::forced}, {KvEReason::disabled}},
                                {false, {KvEReason::upToDate}, {KvEReason::upToDate, KvEReason::disabled}},
                                {false,
                                 {KvEReason::upToDate, KvEReason::customLeftOut},
                                 {KvEReason::upToDate, KvEReason::customLeftOut, KvEReason::disabled}},
                                {false,
                                 {KvEReason::noEntry, KvEReason::carrierBoardMissing},
                                 {KvEReason::noEntry, KvEReason::disabled, KvEReason::carrierBoardMissing}},
                                {false, {}, {KvEReason::disabled}}};
    for (const Row& row : rows) {
        KvTPlannedElement one;
        one.decision = {.update = row.update, .reasons = row.before};
        one.phase = row.update ? std::optional<std::uint32_t>(2) : std::nullopt;
        for (int time = 0; time < 2; ++time) {
            disable(one, KvEReason::disabled);
            EXPECT_FALSE(one.decision.update);
            EXPECT_EQ(row.after, one.decision.reasons);
            EXPECT_EQ(std::nullopt, one.phase);
            EXPECT_TRUE(one.disabled);
        }
    }
}
