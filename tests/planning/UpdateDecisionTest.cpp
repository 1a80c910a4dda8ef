#include "UpdateDecision.h"
#include "PlanningTest.h"

#include <array>
#include <string>

using UpdateDecision = PlanningTest;

namespace {

/// Versions of element and entry, as texts and as what their comparison should tell. An empty text is no version.
struct VersionRow {
    const char* installed;
    const char* available;
    bool availableIsGreater;
    bool differ;
};

constexpr std::array versionRows = {VersionRow{"2.0", "1.9", false, true},  VersionRow{"2.0", "2.0", false, false},
                                    VersionRow{"2.0", "2.1", true, true},   VersionRow{"2.0", "2.0a1", false, true},
                                    VersionRow{"2.0a1", "2.0", true, true}, VersionRow{"2.0", "", false, true},
                                    VersionRow{"", "2.0", true, true},      VersionRow{"", "", false, false}};

struct ChecksumRow {
    bool hasChecksum;
    std::uint32_t installed;
    std::uint32_t available;
};

constexpr std::array checksumRows = {ChecksumRow{false, 0, 7}, ChecksumRow{false, 8, 7},        ChecksumRow{true, 0, 7},
                                     ChecksumRow{true, 7, 7},  ChecksumRow{true, 8, 7},         ChecksumRow{true, 0, 0},
                                     ChecksumRow{true, 7, 0},  ChecksumRow{true, 0xFFFFFFFF, 7}};

/// One element with an entry of its own.
struct Situation {
    bool upgrade = false;
    VersionRow version{};
    ChecksumRow checksum{};
    bool valid = false;
    bool active = false;
    bool isFileSystemElement = false;
    bool disabledBefore = false;
};

/// All that there are.
std::vector<Situation> allSituations() {
    std::vector<Situation> situations;
    for (const VersionRow& version : versionRows) {
        for (const ChecksumRow& checksum : checksumRows) {
            constexpr unsigned flagSets = 32;
            for (unsigned flags = 0; flags < flagSets; ++flags) {
                situations.push_back({.upgrade = (flags & 1U) != 0,
                                      .version = version,
                                      .checksum = checksum,
                                      .valid = (flags & 2U) != 0,
                                      .active = (flags & 4U) != 0,
                                      .isFileSystemElement = (flags & 8U) != 0,
                                      .disabledBefore = (flags & 16U) != 0});
            }
        }
    }
    return situations;
}

std::string entryOf(const Situation& situation, std::uint32_t number) {
    const std::string available = situation.version.available;
    return "'boardType': 'X', 'version': " + (available.empty() ? "null" : "'" + available + "'") +
           ", 'checksumCrc32': " + std::to_string(situation.checksum.available) +
           (situation.upgrade ? ", 'mode': 'upgrade', " : ", 'mode': 'standard', ") +
           (situation.isFileSystemElement ? "'targetPath': '" + std::to_string(number) + "'"
                                          : "'id': " + std::to_string(number));
}

KvTUpdateElement elementOf(const Situation& situation, std::uint32_t number) {
    KvTUpdateElement made = element("X", number).version(situation.version.installed).build();
    made.isFileSystemElement = situation.isFileSystemElement;
    made.location = situation.isFileSystemElement ? KvCString(number) : KvCString();
    made.hasChecksum = situation.checksum.hasChecksum;
    made.checksumCrc32 = situation.checksum.installed;
    made.valid = situation.valid;
    made.active = situation.active;
    made.disabled = situation.disabledBefore;
    return made;
}

/// The decision a second time: whether what is installed is what the archive offers.
bool isUpToDate(const Situation& situation, const KvNReflasher::KvTOptions& options) {
    const bool looksInactive = !situation.active && !situation.isFileSystemElement && !options.configurationElements;
    if (!situation.valid || looksInactive) {
        return false;
    }
    if (situation.upgrade) {
        return !situation.version.availableIsGreater;
    }
    const bool versionTells = situation.version.available[0] != '\0' && situation.version.differ;
    const bool checksumTells = situation.checksum.hasChecksum && situation.checksum.installed != 0 &&
                               situation.checksum.installed != situation.checksum.available;
    return !versionTells && !checksumTells;
}

std::string describe(const Situation& situation, const KvNReflasher::KvTOptions& options) {
    const auto flag = [](bool set, const char* name) { return set ? std::string(", ") + name : std::string(); };
    return std::string(situation.upgrade ? "upgrade" : "standard") + ", installed '" + situation.version.installed +
           "', available '" + situation.version.available + "', checksums " +
           (situation.checksum.hasChecksum ? std::to_string(situation.checksum.installed) : "none") + " and " +
           std::to_string(situation.checksum.available) + flag(!situation.valid, "invalid") +
           flag(!situation.active, "inactive") + flag(situation.isFileSystemElement, "file") +
           flag(situation.disabledBefore, "disabled before") + flag(options.forceUpdate, "forced") +
           flag(options.configurationElements, "configuration");
}

} // namespace

TEST_F(UpdateDecision, EverySituationIsDecidedByTheRules) {
    const std::vector<Situation> situations = allSituations();
    std::vector<std::string> entries;
    for (std::uint32_t number = 0; number < situations.size(); ++number) {
        entries.push_back(entryOf(situations[number], number));
    }
    constexpr unsigned optionSets = 4;
    for (unsigned set = 0; set < optionSets; ++set) {
        options().forceUpdate = (set & 1U) != 0;
        options().configurationElements = (set & 2U) != 0;
        archiveHas(entries);
        forgetTarget();
        for (std::uint32_t number = 0; number < situations.size(); ++number) {
            targetHas(elementOf(situations[number], number));
        }
        plan();
        std::uint32_t number = 0;
        std::size_t upToDateCount = 0;
        for (const KvTUpdateElement& planned : elements()) {
            const Situation& situation = situations[number];
            const bool upToDate = isUpToDate(situation, options());
            const bool switchedOff = upToDate && (!options().forceUpdate || situation.upgrade);
            ASSERT_EQ(number, planned.archiveFileIndex) << describe(situation, options());
            EXPECT_EQ(upToDate, planned.upToDate) << describe(situation, options());
            EXPECT_EQ(situation.disabledBefore || switchedOff, planned.disabled) << describe(situation, options());
            upToDateCount += upToDate ? 1U : 0U;
            ++number;
        }
        EXPECT_LT(0U, upToDateCount);
        EXPECT_GT(situations.size(), upToDateCount);
    }
}

TEST_F(UpdateDecision, AnElementWithoutEntryIsNotDecided) {
    targetHas(element("X", 1).version("0"));
    plan();
    EXPECT_FALSE(elementAt(0).upToDate);
    EXPECT_FALSE(elementAt(0).disabled);
}

TEST_F(UpdateDecision, EqualVersionsAndAChecksumOf0AreUpToDate) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0', 'checksumCrc32': 2"});
    targetHas(element("X", 1).version("2.0").checksum(0));
    targetHas(element("X", 1).version("2.0").checksum(1));
    plan();
    EXPECT_TRUE(elementAt(0).upToDate);
    EXPECT_TRUE(elementAt(0).disabled);
    EXPECT_FALSE(elementAt(1).upToDate);
    EXPECT_FALSE(elementAt(1).disabled);
}

TEST_F(UpdateDecision, AnUpgradeNeverGoesBackEvenWhenForced) {
    options().forceUpdate = true;
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '1.0', 'mode': 'upgrade'"});
    targetHas(element("X", 1).version("2.0").checksum(99));
    plan();
    EXPECT_TRUE(elementAt(0).upToDate);
    EXPECT_TRUE(elementAt(0).disabled);
    EXPECT_EQ(0U, planner().phaseCount());
}

TEST_F(UpdateDecision, AStandardEntryGoesBackToAnOlderVersion) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '1.0'"});
    targetHas(element("X", 1).version("2.0"));
    plan();
    EXPECT_FALSE(elementAt(0).upToDate);
    EXPECT_EQ(1U, planner().phaseCount());
}

TEST_F(UpdateDecision, AForcedStandardElementIsUpToDateButUpdated) {
    options().forceUpdate = true;
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0'"});
    targetHas(element("X", 1).version("2.0"));
    plan();
    EXPECT_TRUE(elementAt(0).upToDate);
    EXPECT_FALSE(elementAt(0).disabled);
    EXPECT_EQ(1U, planner().phaseCount());
}

TEST_F(UpdateDecision, AnInactiveElementIsUpdatedUnlessConfigurationElementsAreLookedAt) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0'"});
    targetHas(element("X", 1).version("2.0").inactive());
    plan();
    EXPECT_FALSE(elementAt(0).upToDate);
    options().configurationElements = true;
    plan();
    EXPECT_TRUE(elementAt(0).upToDate);
}

TEST_F(UpdateDecision, AnInvalidElementIsUpdatedWhateverItsVersion) {
    options().configurationElements = true;
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0', 'mode': 'upgrade'", "'boardType': 'X', 'id': 2"});
    targetHas(element("X", 1).version("3.0").invalid());
    targetHas(element("X", 2).version("2.0").invalid());
    plan();
    EXPECT_FALSE(elementAt(0).upToDate);
    EXPECT_FALSE(elementAt(1).upToDate);
    EXPECT_EQ(1U, planner().phaseCount());
}

TEST_F(UpdateDecision, WithoutAVersionInTheEntryTheChecksumDecides) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': null, 'checksumCrc32': 2"});
    targetHas(element("X", 1).version("5.0").checksum(2));
    targetHas(element("X", 1).version("5.0").checksum(3));
    targetHas(element("X", 1).version("5.0"));
    plan();
    EXPECT_TRUE(elementAt(0).upToDate);
    EXPECT_FALSE(elementAt(1).upToDate);
    EXPECT_TRUE(elementAt(2).upToDate);
}

TEST_F(UpdateDecision, AnElementDisabledBeforeIsMarkedUpToDateToo) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': '2.0'"});
    targetHas(element("X", 1).version("2.0").disabled());
    targetHas(element("X", 1).version("1.0").disabled());
    plan();
    EXPECT_TRUE(elementAt(0).upToDate);
    EXPECT_FALSE(elementAt(1).upToDate);
    EXPECT_TRUE(elementAt(1).disabled);
}
