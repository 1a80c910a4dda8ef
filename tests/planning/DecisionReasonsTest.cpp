#include "PlanningTest.h"
#include "UpdateDecision.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>

using testing::ElementsAre;
using testing::IsEmpty;
using namespace KvNReflasher;

namespace {

constexpr const char* standardEntry = "'boardType': 'X', 'id': 1, 'version': '2.0', 'checksumCrc32': 2";
constexpr const char* upgradeEntry =
    "'boardType': 'X', 'id': 1, 'version': '2.0', 'checksumCrc32': 2, 'mode': 'upgrade'";

ElementBuilder upToDate() {
    return element("X", 1).version("2.0").checksum(2);
}

/// An element, its entry, and what a session with these options decides.
struct ReasonRow {
    const char* name;
    ElementBuilder element;
    const char* entry;
    bool forced;
    bool update;
    std::vector<KvEReason> reasons;

    friend void PrintTo(const ReasonRow& row, std::ostream* stream) { *stream << row.name; }
};

class DecisionReasons : public PlanningTest {
protected:
    /// The decision on the first element, once it was planned.
    KvTDecision decision() {
        const KvTUpdateElement& first = elementAt(0);
        return decisionOn(first, first.hasArchiveFile() ? &files()[first.archiveFileIndex] : nullptr, options());
    }
};

class DecisionReasonRow : public DecisionReasons, public testing::WithParamInterface<ReasonRow> {};

} // namespace

TEST_P(DecisionReasonRow, AreAllGivenInTheirOrder) {
    const ReasonRow& row = GetParam();
    options().forceUpdate = row.forced;
    if (row.entry != nullptr) {
        archiveHas({row.entry});
    }
    targetHas(row.element);
    plan();
    const KvTDecision decided = decision();
    EXPECT_EQ(row.update, decided.update);
    EXPECT_EQ(row.reasons, decided.reasons);
    EXPECT_TRUE(std::is_sorted(decided.reasons.begin(), decided.reasons.end()));
    EXPECT_EQ(row.update, planner().phaseCount() == 1);
}

INSTANTIATE_TEST_SUITE_P(
    Updates, DecisionReasonRow,
    testing::Values(
        ReasonRow{"Version", upToDate().version("1.0"), standardEntry, false, true, {KvEReason::versionDiffers}},
        ReasonRow{"GreaterVersion", upToDate().version("3.0"), standardEntry, false, true, {KvEReason::versionDiffers}},
        ReasonRow{"Checksum", upToDate().checksum(1), standardEntry, false, true, {KvEReason::checksumDiffers}},
        ReasonRow{"Invalid", upToDate().invalid(), standardEntry, false, true, {KvEReason::invalid}},
        ReasonRow{"Inactive", upToDate().inactive(), standardEntry, false, true, {KvEReason::inactive}},
        ReasonRow{"Everything",
                  element("X", 1).checksum(1).invalid().inactive(),
                  standardEntry,
                  false,
                  true,
                  {KvEReason::versionDiffers, KvEReason::checksumDiffers, KvEReason::invalid, KvEReason::inactive}},
        ReasonRow{"VersionAndInactive",
                  element("X", 1).checksum(2).inactive(),
                  standardEntry,
                  false,
                  true,
                  {KvEReason::versionDiffers, KvEReason::inactive}},
        ReasonRow{"Forced", upToDate(), standardEntry, true, true, {KvEReason::forced}},
        // A reason of its own goes before force.
        ReasonRow{
            "ForcedAndOutOfDate", upToDate().checksum(1), standardEntry, true, true, {KvEReason::checksumDiffers}},
        ReasonRow{"Upgrade", element("X", 1).checksum(1), upgradeEntry, false, true, {KvEReason::versionDiffers}},
        ReasonRow{"UpgradeOfWhatIsInactive",
                  upToDate().version("3.0").inactive(),
                  upgradeEntry,
                  false,
                  true,
                  {KvEReason::inactive}}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    None, DecisionReasonRow,
    testing::Values(
        ReasonRow{"UpToDate", upToDate(), standardEntry, false, false, {KvEReason::upToDate}},
        ReasonRow{"UpToDateWithoutChecksum",
                  element("X", 1).version("2.0"),
                  standardEntry,
                  false,
                  false,
                  {KvEReason::upToDate}},
        ReasonRow{"UpToDateWithChecksum0", upToDate().checksum(0), standardEntry, false, false, {KvEReason::upToDate}},
        ReasonRow{"UpgradeThatIsThere", upToDate().checksum(9), upgradeEntry, false, false, {KvEReason::upToDate}},
        ReasonRow{
            "NewerThanTheUpgrade", upToDate().version("3.0"), upgradeEntry, false, false, {KvEReason::newerInstalled}},
        // Force does not go back, and does not repeat an upgrade.
        ReasonRow{"NewerThanTheForcedUpgrade",
                  upToDate().version("3.0"),
                  upgradeEntry,
                  true,
                  false,
                  {KvEReason::newerInstalled}},
        ReasonRow{"ForcedUpgradeThatIsThere", upToDate(), upgradeEntry, true, false, {KvEReason::upToDate}},
        ReasonRow{"NoEntry", upToDate(), nullptr, false, false, {KvEReason::noEntry}},
        ReasonRow{"NoEntryForIt", element("X", 2), standardEntry, true, false, {KvEReason::noEntry}},
        ReasonRow{"NoCarrier",
                  element("FPGA_TP1", 1),
                  nullptr,
                  false,
                  false,
                  {KvEReason::noEntry, KvEReason::carrierBoardMissing}}),
    [](const auto& row) { return row.param.name; });

TEST_F(DecisionReasons, AnEntryThatIsIgnoredForItsFeatureLevelWouldMatch) {
    archiveReads({"'boardType': 'X', 'id': 1, 'featureLevel': 3"});
    EXPECT_TRUE(files().empty());
    targetHas(element("X", 1));
    targetHas(element("X", 2));
    plan();
    EXPECT_FALSE(decision().update);
    EXPECT_THAT(decision().reasons, ElementsAre(KvEReason::featureLevel));
    EXPECT_THAT(decisionOn(elementAt(1), nullptr, options()).reasons, ElementsAre(KvEReason::noEntry));
}

TEST_F(DecisionReasons, AnEntryThatIsReadGoesBeforeAnIgnoredOne) {
    archiveReads({"'boardType': 'X', 'id': 1, 'featureLevel': 3", "'boardType': 'X', 'id': 1, 'featureLevel': 2"});
    EXPECT_EQ(1U, files().size());
    targetHas(element("X", 1));
    plan();
    EXPECT_TRUE(decision().update);
    EXPECT_FALSE(elementAt(0).matchesIgnoredEntry);
}

TEST_F(DecisionReasons, ACustomElementThatIsLeftOutSaysSoBesideTheRest) {
    struct Row {
        ElementBuilder element;
        const char* entry;
        std::vector<KvEReason> reasons;
    };
    const std::vector<Row> rows{{element("X", 1), standardEntry, {KvEReason::customLeftOut}},
                                {upToDate(), standardEntry, {KvEReason::upToDate, KvEReason::customLeftOut}},
                                {element("X", 2), standardEntry, {KvEReason::noEntry, KvEReason::customLeftOut}},
                                {element("FPGA_TP1", 1),
                                 standardEntry,
                                 {KvEReason::noEntry, KvEReason::customLeftOut, KvEReason::carrierBoardMissing}}};
    options().disableCustomElements = true;
    for (const Row& row : rows) {
        forgetTarget();
        archiveHas({row.entry});
        targetHas(ElementBuilder(row.element).custom().disabled()); // as a scan leaves it
        plan();
        EXPECT_FALSE(decision().update);
        EXPECT_EQ(row.reasons, decision().reasons);
    }
    options().disableCustomElements = false;
    planOf(0).disabled = false;
    EXPECT_THAT(decision().reasons, ElementsAre(KvEReason::noEntry, KvEReason::carrierBoardMissing));
}

TEST_F(DecisionReasons, AFileNeedsNoActiveAndAConfigurationElementNeither) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a', 'version': '2.0'"});
    targetHas(fileElement("X", "/a").version("2.0").inactive());
    plan();
    EXPECT_THAT(decision().reasons, ElementsAre(KvEReason::upToDate));
    options().configurationElements = true;
    archiveHas({standardEntry});
    forgetTarget();
    targetHas(upToDate().inactive());
    plan();
    EXPECT_THAT(decision().reasons, ElementsAre(KvEReason::upToDate));
}

TEST_F(DecisionReasons, AnEntryWithoutVersionLeavesTheVersionOutOfIt) {
    archiveHas({"'boardType': 'X', 'id': 1, 'version': null, 'checksumCrc32': 2"});
    targetHas(element("X", 1).version("5.0").checksum(3));
    plan();
    EXPECT_THAT(decision().reasons, ElementsAre(KvEReason::checksumDiffers));
}
