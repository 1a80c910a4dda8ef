#include "FailingMemory.h"
#include "KvEmulation.h"
#include "ObservedSessionTest.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <functional>

using testing::IsEmpty;
using namespace KvNReflasher;

namespace {

/// Lets each allocation of a query fail once.
class ExhaustedQueriesTest : public ObservedSessionTest {
protected:
    void arrange() {
        addNodeElement(1, completeElement(1, "An element with a long name").polls(1));
        writeImage("node1.bin");
        archive.add(entry("another_long_name.bin").board("NODE", 1).variant("A variant with a long name"));
        addFile("a_file_with_a_long_name.cfg", "a_folder_with_a_long_name/a_file_with_a_long_name.cfg");
        EXPECT_EQ(0U, prepare(performUpdate));
        stopRecording();
    }
    /// What the log allocates shall not count.
    void stopRecording() {
        session().setMessageCallback([](const std::wstring&) {});
        session().setPhaseCallback(nullptr);
        session().setElementErrorCallback(nullptr);
        session().setProgressCallback(nullptr);
    }
    /// Calls `query` with the allocation number 1, 2, ... failing until none fails any more, and `check` after each
    /// with whether one has failed.
    static void sweep(std::size_t least, const std::function<void()>& query, const std::function<void(bool)>& check) {
        std::size_t number = 1;
        for (bool struck = true; struck; ++number) {
            SCOPED_TRACE(number);
            {
                const FailingMemory failing(number);
                EXPECT_NO_THROW(query());
                struck = FailingMemory::hasStruck();
            }
            check(struck);
        }
        EXPECT_GT(number, least);
    }
};

} // namespace

TEST_F(ExhaustedQueriesTest, AnOutcomeOfSuccessIsCompleteOrAFailure) {
    arrange();
    EXPECT_TRUE(run());
    KvTOutcome now;
    sweep(
        3, [&] { now = outcome(); },
        [&](bool struck) {
            EXPECT_EQ(struck ? KvEFailure::errors : KvEFailure::none, now.verdict.failure);
            EXPECT_EQ(struck ? 0U : plan().elements.size(), now.elements.size());
        });
}

TEST_F(ExhaustedQueriesTest, AnOutcomeOfFailureIsAFailure) {
    addNodeElement(1, completeElement(1).polls(1).finalState(3).reports(7, "An error with a long text."));
    EXPECT_FALSE(perform(performUpdate));
    KvTOutcome now;
    sweep(
        3, [&] { now = outcome(); },
        [&](bool struck) { EXPECT_EQ(struck ? KvEFailure::errors : KvEFailure::elements, now.verdict.failure); });
}

TEST_F(ExhaustedQueriesTest, ALookFailsOrIsComplete) {
    arrange();
    EXPECT_TRUE(run());
    const KvEmulation::KvTLedger before = KvEmulation::ledger();
    KvTLook look;
    std::size_t failures = 0;
    sweep(
        20, [&] { look = observed().look(); },
        [&](bool struck) {
            failures += look.succeeded ? 0 : 1;
            EXPECT_TRUE(struck || look.succeeded);
            if (look.succeeded) {
                ASSERT_EQ(2U, look.elements.size());
                ASSERT_TRUE(look.elements[0].has_value());
                EXPECT_EQ("2.0", look.elements[0]->version->text);
            }
            const KvEmulation::KvTLedger now = KvEmulation::ledger();
            EXPECT_EQ(before.rootHandles, now.rootHandles);
            EXPECT_EQ(before.errorLists, now.errorLists);
            EXPECT_EQ(before.inventoryTrees, now.inventoryTrees);
            EXPECT_EQ(before.deviceHandles, now.deviceHandles);
            EXPECT_EQ(0U, now.filters);
            EXPECT_EQ(KvEFailure::none, outcome().verdict.failure);
        });
    EXPECT_LT(10U, failures);
}

TEST_F(ExhaustedQueriesTest, FindingsAreCompleteOrAnErrorOfTheOutcome) {
    archive.folder().write("a_file_with_a_long_name_that_no_entry_names.bin", "content");
    observedFor(performUpdate).keepDescription();
    arrange();
    std::vector<KvTFinding> findings;
    std::size_t failures = 0;
    sweep(
        20, [&] { findings = observed().findings(); },
        [&](bool struck) {
            ASSERT_EQ(1U, findings.size());
            const bool hasFailed = findings.front().code == "out-of-memory";
            failures += hasFailed ? 1 : 0;
            EXPECT_TRUE(hasFailed || findings.front().code == "unnamed-file");
            // A call of the platform that has no memory is one that has failed.
            EXPECT_TRUE(struck || !hasFailed);
            EXPECT_EQ(failures == 0 ? KvEFailure::none : KvEFailure::errors, outcome().verdict.failure);
        });
    EXPECT_LT(20U, failures);
}

TEST_F(ExhaustedQueriesTest, FilesAreWatchedOrThatIsAnErrorOfTheOutcome) {
    arrange();
    bool hasFailed = false;
    sweep(
        2, [&] { observed().watchFiles(); },
        [&](bool struck) {
            hasFailed = hasFailed || struck;
            EXPECT_EQ(hasFailed ? KvEFailure::errors : KvEFailure::none, outcome().verdict.failure);
        });
    EXPECT_TRUE(hasFailed);
}

TEST_F(ExhaustedQueriesTest, AnArchiveIsNotReadIfNobodyKnowsWhoIsTrusted) {
    serve();
    KvTReleaseOptions release;
    release.trustFolder = L"a folder with a name that is not short";
    observedFor(performUpdate);
    stopRecording();
    {
        const FailingMemory failing(1);
        observed().setRelease(release);
        EXPECT_TRUE(FailingMemory::hasStruck());
    }
    EXPECT_NE(0U, session().prepare());
    EXPECT_EQ(nullptr, observed().plan());
    EXPECT_EQ(KvEFailure::errors, outcome().verdict.failure);
}

TEST_F(ExhaustedQueriesTest, AnExplanationIsEmptyOrComplete) {
    arrange();
    KvTExplanation explanation;
    sweep(
        5,
        [&] {
            // The index is made anew for each.
            explanation = observed().explain(0);
        },
        [&](bool struck) { EXPECT_EQ(struck ? 0U : 1U, explanation.tried.size()); });
}

TEST_F(ExhaustedQueriesTest, APreparationLeavesAPlanOnlyIfItSucceeds) {
    addNodeElement(1, completeElement(1, "An element with a long name").polls(1));
    serve();
    options.mode = performUpdate;
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        SCOPED_TRACE(number);
        observedFor(performUpdate).findHiddenElements();
        stopRecording();
        std::uint32_t status = 0;
        {
            const FailingMemory failing(number);
            EXPECT_NO_THROW(status = session().prepare());
            struck = FailingMemory::hasStruck();
        }
        EXPECT_EQ(status == 0, observed().plan() != nullptr);
        EXPECT_EQ(status == 0, outcome().verdict.isSuccess());
        EXPECT_EQ(status == 0 ? 1U : 0U, updateElements().size());
        EXPECT_TRUE(struck || status == 0);
        close();
        EXPECT_TRUE(KvEmulation::ledger().isClean());
    }
    EXPECT_GT(number, 100U);
}

TEST_F(ExhaustedQueriesTest, ARunSucceedsInTheOutcomeIfItReturnsTrue) {
    addNodeElement(1, completeElement(1, "An element with a long name").polls(1));
    serve();
    options.mode = performUpdate;
    options.forceUpdate = true;
    std::size_t number = 1;
    for (bool struck = true; struck; ++number) {
        SCOPED_TRACE(number);
        stopRecording();
        EXPECT_EQ(0U, session().prepare());
        bool result = false;
        {
            const FailingMemory failing(number);
            EXPECT_NO_THROW(result = session().run());
            struck = FailingMemory::hasStruck();
        }
        EXPECT_TRUE(struck || result);
        EXPECT_EQ(result, outcome().verdict.isSuccess());
        EXPECT_EQ(KvEStage::ended, outcome().stage);
        close();
        log.clear();
    }
    EXPECT_GT(number, 30U);
}

TEST_F(ExhaustedQueriesTest, APreflightNeverPassesAFaultyFile) {
    addNodeElement(1, completeElement(1, "An element with a long name").polls(1));
    writeImage("node1.bin", "1.9");
    EXPECT_EQ(0U, prepare(performUpdate));
    std::vector<std::string> findings;
    sweep(
        3, [&] { findings = observed().preflight(); },
        [&](bool struck) {
            ASSERT_EQ(1U, findings.size());
            EXPECT_TRUE(struck || findings.front() == "node1.bin: its version is 1.9, the description says 2.0");
            EXPECT_FALSE(outcome().verdict.isSuccess());
        });
    EXPECT_EQ(KvEFailure::archive, outcome().verdict.failure);
}

TEST_F(ExhaustedQueriesTest, AnElementIsDisabledWhollyOrNotAtAll) {
    addNodeElement(1, completeElement(1, "An element with a long name"));
    addNodeElement(2, completeElement(2).parameter("VERSION", "2.0").parameter("CHECKSUM_CRC32", std::uint64_t(2)));
    EXPECT_EQ(0U, prepare(performUpdate));
    for (const std::uint32_t index : {0U, 1U}) {
        sweep(
            1, [&] { static_cast<void>(observed().disableElement(plan().elements[index].address)); },
            [&](bool struck) {
                const KvTPlannedElement& element = plan().elements[index];
                EXPECT_EQ(element.decision.has(KvEReason::disabled) || element.upToDate, element.disabled);
                EXPECT_EQ(!element.disabled && index == 0, element.decision.update);
                EXPECT_TRUE(struck || element.disabled);
            });
    }
}

TEST_F(ExhaustedQueriesTest, ListsAreEmptyOrComplete) {
    arrange();
    std::size_t count = 0;
    sweep(
        1, [&] { count = observed().archiveEntries().size(); },
        [&](bool struck) { EXPECT_EQ(struck ? 0U : 3U, count); });
}
