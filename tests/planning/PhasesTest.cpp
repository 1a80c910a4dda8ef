#include "PlanningTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

using testing::ElementsAre;

class Phases : public PlanningTest {
protected:
    /// The archive has an entry of each sequence, for the element whose identifier is the entry's position.
    void archiveHasSequences(const std::vector<std::uint32_t>& sequences) {
        std::vector<std::string> entries;
        entries.reserve(sequences.size());
        for (const std::uint32_t sequence : sequences) {
            entries.push_back("'boardType': 'X', 'id': " + std::to_string(entries.size()) +
                              ", 'sequence': " + std::to_string(sequence));
        }
        archiveHas(entries);
    }
};

TEST_F(Phases, WithoutAnElementToUpdateThereIsNone) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0', 'sequence': 5", "'boardType': 'X', 'id': 2"});
    targetHas(element("X", 1).version("2.0"));
    targetHas(element("X", 2).disabled());
    targetHas(element("Y", 1));
    for (std::uint32_t index = 0; index < elements().size(); ++index) {
        planOf(index).phase = 9;
    }
    plan();
    EXPECT_EQ(0U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(9, 9, 9));
}

TEST_F(Phases, ThereIsNoneBeforeThePlan) {
    EXPECT_EQ(0U, planner().phaseCount());
}

TEST_F(Phases, OneSequenceIsOnePhase) {
    archiveHasSequences({7, 7, 7});
    for (const std::uint32_t id : {2U, 0U, 1U, 1U}) {
        targetHas(element("X", id));
    }
    plan();
    EXPECT_EQ(1U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(0, 0, 0, 0));
}

TEST_F(Phases, SequencesWithGapsMakePhasesWithoutGaps) {
    archiveHasSequences({10, 10, 20, 35});
    for (const std::uint32_t id : {0U, 1U, 2U, 3U}) {
        targetHas(element("X", id));
    }
    plan();
    EXPECT_EQ(3U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(0, 0, 1, 2));
}

TEST_F(Phases, TheOrderOfTheElementsDoesNotMatter) {
    archiveHasSequences({35, 10, 20, 10});
    for (const std::uint32_t id : {3U, 0U, 2U, 1U, 0U}) {
        targetHas(element("X", id));
    }
    plan();
    EXPECT_THAT(phases(), ElementsAre(0, 2, 1, 0, 2));
}

TEST_F(Phases, SequencesAreUnsigned) {
    archiveHasSequences({0xFFFFFFFF, 0});
    targetHas(element("X", 0));
    targetHas(element("X", 1));
    plan();
    EXPECT_EQ(2U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(1, 0));
}

TEST_F(Phases, TheHighestSequenceAloneIsPhase0) {
    archiveHasSequences({0xFFFFFFFF});
    targetHas(element("X", 0));
    plan();
    EXPECT_EQ(1U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(0));
}

TEST_F(Phases, ElementsOfOneEntryShareItsPhase) {
    archiveHasSequences({2, 1});
    targetHas(element("X", 0));
    targetHas(element("X", 1));
    targetHas(element("X", 0));
    plan();
    EXPECT_THAT(phases(), ElementsAre(1, 0, 1));
}

TEST_F(Phases, SequencesOfEntriesWithoutElementsDoNotCount) {
    archiveHasSequences({1, 2, 3, 4});
    targetHas(element("X", 3));
    targetHas(element("X", 1));
    plan();
    EXPECT_EQ(2U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(1, 0));
}

TEST_F(Phases, DisabledAndUpToDateElementsDoNotCount) {
    archiveHasSequences({1, 2, 3});
    targetHas(element("X", 0).disabled());
    targetHas(element("X", 1).version("2.0"));
    targetHas(element("X", 2));
    plan();
    EXPECT_EQ(1U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(0, 0, 0));
}

TEST_F(Phases, ForcedUpToDateElementsCount) {
    options().forceUpdate = true;
    archiveHasSequences({1, 2});
    targetHas(element("X", 0).version("2.0"));
    targetHas(element("X", 1));
    plan();
    EXPECT_EQ(2U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(0, 1));
}

TEST_F(Phases, ClonedElementsCount) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a', 'sequence': 3", "'boardType': 'X', 'id': 1, 'sequence': 5",
                "'boardType': 'X', 'targetPath': '/b', 'sequence': 9"});
    targetHas(element("X", 1));
    targetTakesFiles(fileElement("X", "*").invalid());
    plan();
    EXPECT_EQ(3U, planner().phaseCount());
    EXPECT_THAT(phases(), ElementsAre(1, 0, 2));
}

TEST_F(Phases, TheListKeepsItsOrder) {
    archiveHasSequences({3, 2, 1});
    for (const std::uint32_t id : {0U, 1U, 2U, 0U}) {
        targetHas(element("X", id));
    }
    plan();
    std::vector<std::uint32_t> ids;
    for (const KvTUpdateElement& one : elements()) {
        ids.push_back(one.elementId);
    }
    EXPECT_THAT(ids, ElementsAre(0, 1, 2, 0));
}

TEST_F(Phases, EachPhaseIsTheRankOfItsSequence) {
    std::mt19937 random(7);
    std::vector<std::uint32_t> sequences(200);
    for (std::uint32_t& sequence : sequences) {
        sequence = static_cast<std::uint32_t>(random() % 40 * 0x05555555U);
    }
    archiveHasSequences(sequences);
    std::vector<std::uint32_t> used;
    for (int count = 0; count < 300; ++count) {
        const auto id = static_cast<std::uint32_t>(random() % sequences.size());
        targetHas(element("X", id));
        used.push_back(sequences[id]);
    }
    plan();
    std::sort(used.begin(), used.end());
    used.erase(std::unique(used.begin(), used.end()), used.end());
    EXPECT_EQ(used.size(), planner().phaseCount());
    for (const KvTUpdateElement& one : elements()) {
        const auto rank = std::lower_bound(used.begin(), used.end(), sequences[one.elementId]) - used.begin();
        EXPECT_EQ(static_cast<std::uint32_t>(rank), one.phase);
    }
}
