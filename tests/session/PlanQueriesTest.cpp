#include "ObservedSessionTest.h"

#include "KvCInventoryItem.h"
#include "KvEmulation.h"

#include <gmock/gmock.h>

#include <array>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace KvNReflasher;
using Kind = SessionLog::Kind;

namespace {

class PlanQueriesTest : public ObservedSessionTest {
protected:
    void countTreesIn(int& count, std::uint32_t mode) {
        observedFor(mode).setTreeVisitor(
            [](const KvCInventoryItem& root, void* context) {
                ++*static_cast<int*>(context);
                EXPECT_EQ("ROOT[1]", std::string(root.getAddress().toString().view()));
            },
            &count);
    }
};

} // namespace

// When there is a plan.

TEST_F(PlanQueriesTest, BeforePrepareThereIsNoPlan) {
    EXPECT_EQ(nullptr, observed().plan());
    EXPECT_THAT(observed().archiveEntries(), IsEmpty());
    EXPECT_THAT(observed().hiddenElements(), IsEmpty());
    EXPECT_THAT(observed().foreignPaths(), IsEmpty());
    EXPECT_THAT(observed().explain(0).tried, IsEmpty());
    EXPECT_FALSE(observed().disableElement("0").isDone());
    EXPECT_THAT(observed().preflight(), IsEmpty());
}

TEST_F(PlanQueriesTest, OnlyModesThatScanTheTargetHaveAPlan) {
    addNodeElement(1, completeElement(1, "One"));
    for (std::uint32_t mode = 0; mode <= 8; ++mode) {
        EXPECT_EQ(0U, prepare(mode));
        const bool scans = mode >= showTargetElements && mode <= performUpdate;
        const bool plans = mode == showUpdatePlan || mode == performUpdate;
        ASSERT_EQ(scans, observed().plan() != nullptr) << mode;
        if (scans) {
            ASSERT_EQ(1U, plan().elements.size());
            EXPECT_EQ("NODE, One", plan().elements[0].displayName);
            EXPECT_EQ("127.0.0.1", plan().targetAddress);
            EXPECT_EQ(plans, plan().archive.has_value()) << mode;
            EXPECT_EQ(plans, plan().elements[0].decision.update) << mode;
            EXPECT_EQ(plans, !plan().elements[0].decision.reasons.empty()) << mode;
            EXPECT_EQ(plans, plan().elements[0].entry.has_value()) << mode;
            EXPECT_EQ(plans ? 1U : 0U, plan().phaseCount) << mode;
        }
        close();
    }
}

TEST_F(PlanQueriesTest, AFailedPrepareLeavesNoPlan) {
    addNodeElement(1, completeElement(1));
    addFault(fault("scan"));
    EXPECT_EQ(1U, prepare(performUpdate));
    EXPECT_EQ(nullptr, observed().plan());
    EXPECT_EQ(1U, observed().archiveEntries().size());
}

TEST_F(PlanQueriesTest, ATargetThatIsNotSupportedHasAPlanThatSaysSo) {
    node.element(completeElement(1, "One"));
    addBoard(1, completeElement(1));
    EXPECT_EQ(2U, prepare(performUpdate));
    EXPECT_FALSE(plan().supported);
    EXPECT_THAT(plan().unsupportedElements, ElementsAre(0U));
    EXPECT_EQ(KvEFailure::unsupported, verdictOf(plan()).failure);
}

TEST_F(PlanQueriesTest, ASecondPrepareThatFailsLeavesNoElementsAndTheAcceptedEntries) {
    addNodeElement(1, completeElement(1));
    archive.add(entry("b.bin").board("NODE", 2));
    EXPECT_EQ(0U, prepare(performUpdate));
    EXPECT_EQ(1U, updateElements().size());
    archive.add(entry("bad.bin").board("NODE", 3).mode("no mode"));
    archive.write();
    EXPECT_EQ(1U, prepare(performUpdate));
    EXPECT_EQ(nullptr, observed().plan());
    KvTUpdateElementInfo dummy;
    KvTUpdateElementInfo* elements = &dummy;
    std::uint32_t count = 99;
    session().getUpdateElements(elements, count);
    EXPECT_EQ(nullptr, elements);
    EXPECT_EQ(0U, count);
    EXPECT_EQ(2U, archiveFiles().size());
    EXPECT_EQ(2U, observed().archiveEntries().size());
    EXPECT_THAT(outcome().elements, IsEmpty());
    EXPECT_THAT(outcome().files, IsEmpty());
    EXPECT_EQ(KvEFailure::archive, outcome().verdict.failure);
}

TEST_F(PlanQueriesTest, ASecondPrepareThatDoesNotFindTheTargetLeavesNoElements) {
    addNodeElement(1, completeElement(1));
    addFault(fault("KvHIM_applyFilter").occurrence(2));
    EXPECT_EQ(0U, prepare(performUpdate));
    EXPECT_EQ(1U, prepare(performUpdate));
    EXPECT_EQ(nullptr, observed().plan());
    EXPECT_THAT(updateElements(), IsEmpty());
    EXPECT_EQ(1U, archiveFiles().size());
    EXPECT_EQ(KvEFailure::target, outcome().verdict.failure);
}

TEST_F(PlanQueriesTest, ASecondPrepareThatSucceedsBeginsAnew) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    writeImage("node1.bin");
    EXPECT_TRUE(perform(performUpdate));
    EXPECT_EQ(KvEStage::ended, outcome().stage);
    EXPECT_EQ(0U, prepare(performUpdate));
    ASSERT_EQ(1U, plan().elements.size());
    EXPECT_EQ(KvEStage::prepared, outcome().stage);
    EXPECT_THAT(results(), ElementsAre("not planned"));
    EXPECT_THAT(fileResults(), IsEmpty());
    closeAfterSecondPrepare(1);
}

TEST_F(PlanQueriesTest, ASecondPrepareThatFailsAfterARunForgetsTheRun) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    EXPECT_TRUE(perform(performUpdate));
    archive.folder().write("archive.json", "{}");
    EXPECT_EQ(1U, prepare(performUpdate));
    EXPECT_EQ(KvEStage::created, outcome().stage);
    EXPECT_EQ(KvEFailure::archive, outcome().verdict.failure);
    EXPECT_THAT(fileResults(), IsEmpty());
    EXPECT_THAT(results(), IsEmpty());
}

// What the archive offers.

TEST_F(PlanQueriesTest, EntriesAreThoseOfTheArchive) {
    archive.add(entry("a.bin").board("NODE", 1).sequence(5).mode("upgrade"));
    archive.add(entry("b.bin").board("NODE", 2).noVersion().checksum(0xFFFFFFFF));
    EXPECT_EQ(0U, prepare(showArchiveContent));
    const std::vector<KvTArchiveEntry> entries = observed().archiveEntries();
    ASSERT_EQ(2U, entries.size());
    EXPECT_EQ("a.bin", entries[0].fileName);
    EXPECT_EQ("2.0", entries[0].version->text);
    EXPECT_EQ(2U, entries[0].checksumCrc32);
    EXPECT_EQ(KvEEntryMode::upgrade, entries[0].mode);
    EXPECT_EQ(5U, entries[0].sequence);
    EXPECT_EQ(1U, entries[1].fileIndex);
    EXPECT_EQ(1U, entries[1].descriptionIndex);
    EXPECT_EQ(std::nullopt, entries[1].version);
    EXPECT_EQ(0xFFFFFFFF, entries[1].checksumCrc32);
    EXPECT_EQ(KvEEntryMode::standard, entries[1].mode);
}

TEST_F(PlanQueriesTest, PathsThatLeadOutOfTheirPlaceAreFoundInTheArchiveThatWasRead) {
    addNodeElement(1, completeElement(1));
    archive.addWithoutFile(entry("../out.bin").board("NODE", 5));
    addFile("a.cfg", "../../etc/a.cfg");
    addFile("b.cfg", "cfg/b.cfg");
    EXPECT_EQ(0U, prepare(showUpdatePlan));
    const auto paths = [this] {
        std::vector<std::string> lines;
        for (const KvTForeignPath& path : observed().foreignPaths()) {
            lines.push_back(std::to_string(path.descriptionIndex) + (path.isRead ? " reads " : " writes ") + path.path);
        }
        return lines;
    };
    EXPECT_THAT(paths(), ElementsAre("1 reads ../out.bin", "2 writes ../../etc/a.cfg"));
    archive.folder().write("archive.json", "{}");
    EXPECT_THAT(paths(), ElementsAre("1 reads ../out.bin", "2 writes ../../etc/a.cfg"));
}

TEST_F(PlanQueriesTest, AnExplanationIsThatOfTheElement) {
    archive.add(entry("variant.bin").board("NODE", 1).variant("B"));
    archive.add(entry("other.bin").board("OTHER", 1));
    addNodeElement(1, completeElement(1));
    node.element(completeElement(2));
    EXPECT_EQ(0U, prepare(showUpdatePlan));
    const KvTExplanation first = observed().explain(0);
    ASSERT_EQ(2U, first.tried.size());
    EXPECT_EQ("variant.bin", first.tried[0].fileName);
    EXPECT_EQ(KvEMatchTest::boardVariant, first.tried[0].failedTest);
    EXPECT_EQ(KvEMatchTest::none, first.tried[1].failedTest);
    EXPECT_EQ(1U, first.otherBoardCount);
    EXPECT_EQ(1U, observed().explain(1).index);
    EXPECT_EQ(KvEMatchTest::id, observed().explain(1).tried.at(1).failedTest);
    EXPECT_THAT(observed().explain(2).tried, IsEmpty());
    EXPECT_THAT(observed().explain(0xFFFFFFFF).tried, IsEmpty());
}

// Leaving elements out.

struct DisableRow {
    const char* name;
    std::string text;
    std::vector<std::uint32_t> elements;

    friend void PrintTo(const DisableRow& row, std::ostream* stream) { *stream << row.name; }
};

class DisableElementTest : public PlanQueriesTest, public testing::WithParamInterface<DisableRow> {
protected:
    void SetUp() override {
        PlanQueriesTest::SetUp();
        addNodeElement(1, completeElement(1, "One"));
        addNodeElement(2, completeElement(2, "Two"));
        addNodeElement(3, completeElement(3, "Two"));
        // Of this board the name is an address, and of the next one a number.
        boards.push_back(board("IOMODULE", "IO", 0)
                             .parameter("PRODUCT/SLOT_COUNT", std::uint64_t(0))
                             .element(completeElement(1, "Last")));
        addFile("a.cfg", "cfg/a.cfg");
    }
};

TEST_P(DisableElementTest, NamesElements) {
    EXPECT_EQ(0U, prepare(performUpdate));
    const KvTDisabling disabling = observed().disableElement(GetParam().text);
    EXPECT_EQ(GetParam().elements, disabling.elements);
    EXPECT_EQ(GetParam().elements.size() == 1, disabling.isDone());
    for (const KvTPlannedElement& element : plan().elements) {
        const bool isNamed = disabling.isDone() && element.index == disabling.elements.front();
        EXPECT_EQ(isNamed, element.disabled) << element.index;
        EXPECT_EQ(isNamed, element.decision.has(KvEReason::disabled)) << element.index;
        EXPECT_EQ(isNamed, updateElements().at(element.index).disabled) << element.index;
        EXPECT_TRUE(!isNamed || !element.decision.update) << element.index;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Names, DisableElementTest,
    testing::Values(DisableRow{"Number", "1", {1}}, DisableRow{"NumberWithZeros", "001", {1}},
                    DisableRow{"NumberPastTheEnd", "5", {}}, DisableRow{"NumberTooLarge", "99999999999999999999", {}},
                    DisableRow{"Address", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2]", {1}},
                    DisableRow{"TargetPath", "cfg/a.cfg", {4}}, DisableRow{"DisplayName", "NODE, One", {0}},
                    DisableRow{"DisplayNameOfAFile", "NODE, Updatable file (a.cfg)", {4}},
                    DisableRow{"DisplayNameOfTwo", "NODE, Two", {1, 2}}, DisableRow{"Unknown", "NODE, Three", {}},
                    DisableRow{"NameInventoryHas", "One", {}}, DisableRow{"OtherCase", "node, one", {}},
                    DisableRow{"AlmostANumber", "1 ", {}}, DisableRow{"Nothing", "", {}}),
    [](const auto& row) { return row.param.name; });

TEST_F(PlanQueriesTest, DigitsAreANumberEvenIfAFileIsNamedSo) {
    addNodeElement(1, completeElement(1, "One"));
    addFile("a.cfg", "0");
    EXPECT_EQ(0U, prepare(performUpdate));
    EXPECT_THAT(observed().disableElement("0").elements, ElementsAre(0U));
    EXPECT_THAT(observed().disableElement("2").elements, IsEmpty());
}

TEST_F(PlanQueriesTest, AnElementIsDisabledByEitherOperationAlike) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    addNodeElement(2, completeElement(2, "Two").polls(1));
    addNodeElement(3, completeElement(3, "Three").polls(1));
    EXPECT_EQ(0U, prepare(performUpdate));
    session().disableUpdateElement(0);
    EXPECT_TRUE(observed().disableElement("NODE, Three").isDone());
    session().disableUpdateElement(77);
    for (const std::uint32_t index : {0U, 2U}) {
        EXPECT_TRUE(plan().elements[index].disabled);
        EXPECT_THAT(plan().elements[index].decision.reasons, ElementsAre(KvEReason::disabled));
        EXPECT_EQ(std::nullopt, plan().elements[index].phase);
    }
    EXPECT_TRUE(run());
    EXPECT_THAT(log.callsOf("update2"), ElementsAre("update2 HCN[1] 2"));
    EXPECT_THAT(results(), ElementsAre("not planned", "updated", "not planned"));
}

// What the options hide.

TEST_F(PlanQueriesTest, HiddenElementsComeWithEveryFilterThatHidesThemFromTheScanOfTheSession) {
    addNodeElement(1, completeElement(1, "One"));
    addBoard(1, completeElement(1, "Two"));
    boards.push_back(completeBoard("IOMODULE", "IO2", 9)
                         .element(completeElement(1, "Settings").parameter("CONFIGURATION", std::uint64_t(1))));
    struct Row {
        std::string KvTOptions::*filter;
        const char* text;
        KvEHiddenBy reason;
    };
    const std::array rows{Row{&KvTOptions::boardTypeFilter, "NODE", KvEHiddenBy::boardTypeFilter},
                          Row{&KvTOptions::serialNumberFilter, "0", KvEHiddenBy::serialNumberFilter},
                          Row{&KvTOptions::elementNameFilter, "One", KvEHiddenBy::elementNameFilter}};
    for (const Row& row : rows) {
        options.*row.filter = row.text;
        observedFor(showUpdatePlan).findHiddenElements();
        EXPECT_EQ(0U, prepare(showUpdatePlan));
        const std::vector<KvTHiddenElement> hidden = observed().hiddenElements();
        const bool hidesBoth = row.filter != &KvTOptions::serialNumberFilter;
        ASSERT_EQ(hidesBoth ? 2U : 1U, hidden.size());
        EXPECT_EQ("IO2, SN 9, Settings", hidden.back().displayName);
        EXPECT_EQ("IOMODULE[2]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]", hidden.back().address);
        EXPECT_THAT(hidden.back().hiddenBy, testing::UnorderedElementsAre(KvEHiddenBy::configuration, row.reason));
        if (hidesBoth) {
            EXPECT_THAT(hidden.front().hiddenBy, ElementsAre(row.reason));
        }
        EXPECT_EQ(1U, log.callsOf("scan").size());
        (options.*row.filter).clear();
        log.clear();
        close();
    }
}

TEST_F(PlanQueriesTest, NothingIsHiddenUnlessItWasAskedFor) {
    addNodeElement(1, completeElement(1, "One"));
    addBoard(1, completeElement(1, "Two"));
    options.boardTypeFilter = "NODE";
    EXPECT_EQ(0U, prepare(showUpdatePlan));
    EXPECT_THAT(observed().hiddenElements(), IsEmpty());
}

TEST_F(PlanQueriesTest, LookingForHiddenElementsChangesNeitherErrorsNorMessages) {
    addNodeElement(1, completeElement(1, "One"));
    boards.push_back(board("IOMODULE", "IO", 0).element(updateElement(1, "Incomplete"))); // its scan meets an error
    options.verbose = true;
    options.boardTypeFilter = "NODE";
    EXPECT_EQ(0U, prepare(showUpdatePlan));
    const std::string text = log.text();
    const std::vector<std::string> errors = errorTexts();
    close();
    KvEmulation::reset();
    ASSERT_TRUE(target.serveAgain().served);
    log.clear();
    observedFor(showUpdatePlan).findHiddenElements();
    EXPECT_EQ(0U, prepare(showUpdatePlan));
    EXPECT_EQ(text, log.text());
    EXPECT_EQ(errors, errorTexts());
    EXPECT_EQ(1U, observed().hiddenElements().size());
}

// The scanned tree.

TEST_F(PlanQueriesTest, TheTreeIsShownOnceBeforePrepareEnds) {
    addNodeElement(1, completeElement(1, "One"));
    int count = 0;
    countTreesIn(count, performUpdate);
    EXPECT_EQ(0U, prepare(performUpdate));
    EXPECT_EQ(1, count);
    EXPECT_TRUE(run());
    EXPECT_TRUE(observed().look().succeeded);
    EXPECT_EQ(1, count);
}

TEST_F(PlanQueriesTest, WithoutAScanNoTreeIsShown) {
    addFault(fault("scan"));
    int count = 0;
    countTreesIn(count, connectOnly);
    EXPECT_EQ(1U, prepare(connectOnly));
    EXPECT_EQ(0, count);
}

TEST_F(PlanQueriesTest, ASavedPlanThatLeavesOutWhatIsNotThereDoesNotHold) {
    addNodeElement(1, completeElement(1));
    writeImage("node1.bin");
    ASSERT_EQ(0U, prepare(showUpdatePlan));
    std::string reason;
    std::optional<KvTSavedPlan> saved = observed().planToSave(reason);
    ASSERT_TRUE(saved) << reason;
    saved->options.disabledElements = {"nothing of this name"};
    close();
    ASSERT_EQ(0U, prepare(performUpdate));
    EXPECT_THAT(observed().holdTo(*saved, {}),
                testing::Contains("'nothing of this name', which was left out, does not name one element any more"));
}
