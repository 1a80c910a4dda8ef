#include "ObservedSessionTest.h"

#include <gmock/gmock.h>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using namespace KvNReflasher;

namespace {

class OutcomeTest : public ObservedSessionTest {
protected:
    void expectOutcome(KvEStage stage, KvEFailure failure, const std::string& message) {
        const KvTOutcome now = outcome();
        EXPECT_EQ(stage, now.stage);
        EXPECT_EQ(failure, now.verdict.failure);
        EXPECT_THAT(now.verdict.message, HasSubstr(message));
        EXPECT_EQ(failure == KvEFailure::none, now.verdict.message.empty()) << now.verdict.message;
        EXPECT_THAT(now.verdict.message, Not(HasSubstr("\n")));
    }
    /// Of the element of this index.
    KvTElementOutcome elementOutcome(std::size_t index) {
        const KvTOutcome now = outcome();
        EXPECT_LT(index, now.elements.size());
        return index < now.elements.size() ? now.elements[index] : KvTElementOutcome();
    }
    /// A node that can be rebooted, with an element that is updated.
    void makeRebootable() {
        node = completeBoard("HCN", "QB4120", 0)
                   .element(completeElement(1, "UserFirmware").parameter("VERSION", "23.2.1").polls(1));
        archive.add(entry("a.bin").board("QB4120", 1).version("24.0"));
    }
};

} // namespace

// How far a session came.

TEST_F(OutcomeTest, ASessionBegins) {
    expectOutcome(KvEStage::created, KvEFailure::none, "");
    EXPECT_THAT(outcome().elements, IsEmpty());
    EXPECT_THAT(outcome().files, IsEmpty());
    EXPECT_THAT(outcome().errors, IsEmpty());
}

TEST_F(OutcomeTest, AnArchiveIsRefused) {
    archive.add(entry("a.bin").board("NODE", 1).mode("none"));
    EXPECT_EQ(1U, prepare(performUpdate));
    expectOutcome(KvEStage::created, KvEFailure::archive, "mode");
}

TEST_F(OutcomeTest, AnArchiveIsMissing) {
    options.descriptionFileName = L"none.json";
    EXPECT_EQ(1U, prepare(performUpdate));
    expectOutcome(KvEStage::created, KvEFailure::archive, "none.json");
}

struct TargetRow {
    const char* name;
    const wchar_t* target;
    std::vector<FaultBuilder> faults;
    KvEStage stage;
    const char* message;

    friend void PrintTo(const TargetRow& row, std::ostream* stream) { *stream << row.name; }
};

class TargetOutcomeTest : public OutcomeTest, public testing::WithParamInterface<TargetRow> {};

TEST_P(TargetOutcomeTest, IsTheFailureOfThePreparation) {
    addNodeElement(1, completeElement(1));
    options.target = GetParam().target;
    for (const FaultBuilder& fault : GetParam().faults) {
        addFault(fault);
    }
    EXPECT_EQ(1U, prepare(performUpdate));
    expectOutcome(GetParam().stage, KvEFailure::target, GetParam().message);
    EXPECT_TRUE(GetParam().faults.empty() || !outcome().errors.empty());
    EXPECT_TRUE(outcome().verdict.isRetryable());
}

INSTANTIATE_TEST_SUITE_P(
    Targets, TargetOutcomeTest,
    testing::Values(
        TargetRow{"None", L"", {}, KvEStage::archiveRead, "no target was given"},
        TargetRow{"NoAddress", L"127.0.0.256", {}, KvEStage::archiveRead, "'127.0.0.256' is not an IPv4 address"},
        TargetRow{"NotFound", L"127.0.0.9", {}, KvEStage::archiveRead, "the target '127.0.0.9' is not accessible"},
        TargetRow{"NotLookedUp",
                  L"127.0.0.1",
                  {fault("KvHIM_applyFilter")},
                  KvEStage::archiveRead,
                  "the target '127.0.0.1' is not accessible"},
        TargetRow{"NotScanned",
                  L"127.0.0.1",
                  {fault("scan")},
                  KvEStage::targetFound,
                  "the inventory of the target '127.0.0.1' cannot be read"}),
    [](const auto& row) { return row.param.name; });

TEST_F(OutcomeTest, ATargetIsNotSupported) {
    node.element(completeElement(1, "One"));
    addBoard(1, completeElement(1));
    EXPECT_EQ(2U, prepare(performUpdate));
    expectOutcome(KvEStage::targetScanned, KvEFailure::unsupported, "it has no entry for 'NODE, One'");
    EXPECT_THAT(results(), Not(Contains("updated")));
}

TEST_F(OutcomeTest, ASessionIsPrepared) {
    addNodeElement(1, completeElement(1));
    node.element(completeFile(2, "x.cfg"));
    EXPECT_EQ(0U, prepare(performUpdate));
    expectOutcome(KvEStage::prepared, KvEFailure::none, "");
    EXPECT_THAT(fileResults(), ElementsAre("node1.bin phase 0: not started"));
}

TEST_F(OutcomeTest, ModesThatReadTheArchiveAloneArePreparedToo) {
    for (const std::uint32_t mode : {0U, 1U, 2U, 3U}) {
        EXPECT_EQ(0U, prepare(mode));
        expectOutcome(KvEStage::prepared, KvEFailure::none, "");
        EXPECT_TRUE(run());
        expectOutcome(KvEStage::ended, KvEFailure::none, "");
        log.clear();
        close();
    }
}

TEST_F(OutcomeTest, ATargetIsNotLocked) {
    addNodeElement(1, completeElement(1));
    addFault(fault("lock").error(0x99, "Locked by somebody."));
    EXPECT_FALSE(perform(performUpdate));
    expectOutcome(KvEStage::ended, KvEFailure::locked, "the target could not be locked: Locked by somebody.");
    EXPECT_THAT(results(), ElementsAre("not started"));
    EXPECT_THAT(errorTexts(), ElementsAre("Locked by somebody."));
    EXPECT_TRUE(outcome().verdict.isRetryable());
}

TEST_F(OutcomeTest, ATargetHasNoNode) {
    hasNode = false;
    hasCn = false;
    addBoard(1, completeElement(1));
    EXPECT_FALSE(perform(performUpdate));
    expectOutcome(KvEStage::ended, KvEFailure::target, "no processor node");
    EXPECT_THAT(results(), ElementsAre("not started"));
}

TEST_F(OutcomeTest, AnUpdateSucceeds) {
    addNodeElement(1, completeElement(1).polls(1));
    addBoard(1, completeElement(1).parameter("VERSION", "2.0").parameter("CHECKSUM_CRC32", std::uint64_t(2)));
    addFile("a.cfg", "cfg/a.cfg");
    EXPECT_TRUE(perform(performUpdate));
    expectOutcome(KvEStage::ended, KvEFailure::none, "");
    EXPECT_THAT(results(), ElementsAre("updated", "not planned", "updated"));
    EXPECT_THAT(fileResults(), ElementsAre("node1.bin phase 0: updated", "a.cfg phase 0 cfg/a.cfg: updated"));
    EXPECT_EQ(2U, elementOutcome(0).state);
    EXPECT_EQ(std::nullopt, elementOutcome(2).state);
}

// What became of each element.

struct ElementRow {
    const char* name;
    std::vector<FaultBuilder> faults;
    KvEFailedCall call;
    std::optional<std::uint32_t> state;
    std::vector<std::string> errors;
    const char* file;

    friend void PrintTo(const ElementRow& row, std::ostream* stream) { *stream << row.name; }
};

class ElementOutcomeTest : public OutcomeTest, public testing::WithParamInterface<ElementRow> {};

TEST_P(ElementOutcomeTest, IsThatOfTheFailedCall) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    addNodeElement(2, completeElement(2, "Two").polls(1), 2);
    addBoard(1, completeElement(1).polls(1), 2);
    for (const FaultBuilder& fault : GetParam().faults) {
        addFault(fault);
    }
    EXPECT_FALSE(perform(performUpdate));
    expectOutcome(KvEStage::ended, KvEFailure::elements, "2 elements failed; the first is 'NODE, One'");
    EXPECT_THAT(results(), ElementsAre("failed", "cancelled", "updated"));
    const KvTElementOutcome first = elementOutcome(0);
    EXPECT_EQ(GetParam().call, first.failedCall);
    EXPECT_EQ(GetParam().state, first.state);
    EXPECT_EQ(GetParam().errors, textsOf(first.errors));
    EXPECT_THAT(errorTexts(), IsEmpty());
    EXPECT_THAT(fileResults(), ElementsAre(std::string("node1.bin phase 0: ") + GetParam().file,
                                           "io1.bin phase 1: updated", "node2.bin phase 1: cancelled"));
}

INSTANTIATE_TEST_SUITE_P(
    Calls, ElementOutcomeTest,
    testing::Values(
        ElementRow{"Transfer",
                   {fault("transferFile")},
                   KvEFailedCall::transferFile,
                   std::nullopt,
                   {"Fault at transferFile."},
                   "failed"},
        ElementRow{"Start", {fault("update2")}, KvEFailedCall::update2, std::nullopt, {"Fault at update2."}, "updated"},
        ElementRow{"TwoStatusQueries",
                   {fault("updateStatus2"), fault("updateStatus2").occurrence(2)},
                   KvEFailedCall::updateStatus2,
                   std::nullopt,
                   {"Fault at updateStatus2.", "Fault at updateStatus2."},
                   "updated"},
        ElementRow{"Errors",
                   {fault("updateErrors2")},
                   KvEFailedCall::updateErrors2,
                   2,
                   {"Fault at updateErrors2."},
                   "updated"}),
    [](const auto& row) { return row.param.name; });

TEST_F(OutcomeTest, AFailedStateIsKeptWithItsErrors) {
    addNodeElement(1, completeElement(1).polls(1).finalState(3).reports(9, "Burnt."));
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_THAT(results(), ElementsAre("failed"));
    EXPECT_EQ(3U, elementOutcome(0).state);
    EXPECT_EQ(KvEFailedCall::updateStatus2, elementOutcome(0).failedCall);
}

TEST_F(OutcomeTest, ErrorsThatTheTargetReportsForAFinishedUpdateMakeItFail) {
    addNodeElement(1, completeElement(1).polls(1).reports(9, "Burnt."));
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_THAT(results(), ElementsAre("failed"));
    EXPECT_EQ(2U, elementOutcome(0).state);
    ASSERT_EQ(1U, elementOutcome(0).errors.size());
    EXPECT_EQ(9U, elementOutcome(0).errors[0].code);
    EXPECT_EQ("Burnt.", elementOutcome(0).errors[0].text);
    EXPECT_THAT(errorTexts(), IsEmpty());
}

TEST_F(OutcomeTest, AnUpdateFileIsMissing) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    addNodeElement(2, completeElement(2, "Two").polls(1));
    addFile("a.cfg", "cfg/a.cfg");
    archive.removeFile("node2.bin");
    archive.removeFile("a.cfg");
    EXPECT_FALSE(perform(performUpdate));
    expectOutcome(KvEStage::ended, KvEFailure::elements, "2 update files missing; the first is 'NODE, Two'");
    EXPECT_THAT(results(), ElementsAre("updated", "file missing", "file missing"));
    EXPECT_THAT(fileResults(), ElementsAre("node1.bin phase 0: updated", "node2.bin phase 0: file missing",
                                           "a.cfg phase 0 cfg/a.cfg: file missing"));
}

TEST_F(OutcomeTest, ElementsThatFailAndFilesThatAreMissingAreCountedApart) {
    addNodeElement(1, completeElement(1, "One").polls(1).finalState(3));
    addBoard(1, completeElement(1));
    archive.removeFile("io1.bin");
    EXPECT_FALSE(perform(performUpdate));
    expectOutcome(KvEStage::ended, KvEFailure::elements,
                  "1 element failed, 1 update file missing; the first is 'NODE, One'");
}

TEST_F(OutcomeTest, AFileThatIsNotWrittenSaysWhatTheSessionSaid) {
    node.element(completeElement(1).parameter("VERSION", "2.0").parameter("CHECKSUM_CRC32", std::uint64_t(2)));
    archive.add(entry("node1.bin").board("NODE", 1));
    addFile("a.cfg", "cfg/a.cfg");
    addFault(fault("KvHIM_putFileU").status(5).error(0x88, "The disk is full."));
    EXPECT_FALSE(perform(performUpdate));
    expectOutcome(KvEStage::ended, KvEFailure::elements, "1 element failed");
    EXPECT_THAT(results(), ElementsAre("not planned", "failed"));
    const KvTElementOutcome file = elementOutcome(1);
    EXPECT_EQ(KvEFailedCall::writeFile, file.failedCall);
    EXPECT_FALSE(file.message.empty());
    EXPECT_THAT(log.text(), HasSubstr(file.message + "\n"));
    EXPECT_THAT(file.message, Not(HasSubstr("ERROR")));
    EXPECT_THAT(textsOf(file.errors), ElementsAre("The disk is full."));
    EXPECT_THAT(fileResults(), ElementsAre("a.cfg phase 0 cfg/a.cfg: failed"));
}

TEST_F(OutcomeTest, EachTransferIsListedInItsOrderAndEachPhaseHasItsOwn) {
    addNodeElement(1, completeElement(1).polls(1), 2);
    node.element(completeElement(3).polls(1));
    archive.add(entry("shared.bin").board("NODE", 3).sequence(1));
    boards.push_back(completeBoard("IOMODULE", "NODE", 5).element(completeElement(3, "Other").polls(1)));
    EXPECT_EQ(0U, prepare(performUpdate));
    EXPECT_THAT(fileResults(), ElementsAre("node1.bin phase 1: not started", "shared.bin phase 0: not started"));
    EXPECT_TRUE(run());
    EXPECT_THAT(fileResults(), ElementsAre("shared.bin phase 0: updated", "node1.bin phase 1: updated"));
}

TEST_F(OutcomeTest, ErrorsOfTheSessionAndOfElementsAreKeptApart) {
    addNodeElement(1, completeElement(1).polls(1).reports(9, "Of the element."));
    addFault(fault("deleteRemoteFile").error(1, "Of the session."));
    addFault(fault("unlock").error(2, "Of the lock."));
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_THAT(errorTexts(), ElementsAre("Of the session.", "Of the lock."));
    EXPECT_THAT(textsOf(elementOutcome(0).errors), ElementsAre("Of the element."));
    EXPECT_EQ(KvEFailure::elements, outcome().verdict.failure);
}

TEST_F(OutcomeTest, CollectedErrorsAloneAreAFailure) {
    addNodeElement(1, completeElement(1).polls(1));
    addFault(fault("deleteRemoteFile"));
    EXPECT_FALSE(perform(performUpdate));
    expectOutcome(KvEStage::ended, KvEFailure::errors, "1 error reported");
    EXPECT_THAT(results(), ElementsAre("updated"));
}

TEST_F(OutcomeTest, ErrorsOfTheScanFailAPlanWithoutHidingIt) {
    node.element(updateElement(1)); // VERSION_HISTORY is missing
    EXPECT_FALSE(perform(showTargetElements));
    expectOutcome(KvEStage::ended, KvEFailure::errors, "1 error reported");
    EXPECT_EQ(1U, plan().elements.size());
}

TEST_F(OutcomeTest, WhatIsUnderWayWhileItIsAskedIsInProgress) {
    addNodeElement(1, completeElement(1).polls(1));
    addNodeElement(2, completeElement(2).polls(1), 2);
    EXPECT_EQ(0U, prepare(performUpdate));
    struct Seen {
        ObservedSessionTest* test;
        KvISession* session;
        std::vector<std::string> lines;
    } seen{this, &observed(), {}};
    observed().setEventFunction(
        [](const KvTEvent& event, void* context) {
            auto& now = *static_cast<Seen*>(context);
            if (event.event == KvEEvent::elementStart || event.event == KvEEvent::progress) {
                const KvTOutcome outcome = now.session->outcome();
                now.lines.push_back(nameOf(outcome.elements[0].result) + ", " + nameOf(outcome.elements[1].result));
                EXPECT_EQ(KvEStage::locked, outcome.stage);
            }
        },
        &seen);
    EXPECT_TRUE(run());
    ASSERT_FALSE(seen.lines.empty());
    EXPECT_EQ("not started, not started", seen.lines.front());
    EXPECT_THAT(seen.lines, Contains("in progress, not started"));
    EXPECT_THAT(seen.lines, Contains("updated, in progress"));
}

// Reboots.

TEST_F(OutcomeTest, ATargetIsRebooted) {
    makeRebootable();
    EXPECT_TRUE(perform(performUpdate));
    EXPECT_TRUE(session().reboot());
    expectOutcome(KvEStage::rebooted, KvEFailure::none, "");
    EXPECT_THAT(results(), ElementsAre("updated"));
}

TEST_F(OutcomeTest, ARebootIsRefused) {
    addNodeElement(1, completeElement(1).polls(1));
    EXPECT_TRUE(perform(performUpdate));
    EXPECT_FALSE(session().reboot());
    expectOutcome(KvEStage::ended, KvEFailure::reboot, "the target was not rebooted: ");
    EXPECT_THAT(results(), ElementsAre("updated"));
}

TEST_F(OutcomeTest, ARebootFails) {
    makeRebootable();
    addFault(fault("KvHIM_FORCE_resetDevice").error(0x55, "Not now."));
    EXPECT_TRUE(perform(performUpdate));
    EXPECT_FALSE(session().reboot());
    expectOutcome(KvEStage::ended, KvEFailure::reboot, "the target was not rebooted: the reset failed");
    EXPECT_THAT(errorTexts(), Contains("Not now."));
}

TEST_F(OutcomeTest, AnEarlierFailureGoesBeforeThatOfTheReboot) {
    makeRebootable();
    addFault(fault("KvHIM_FORCE_resetDevice").error(0x55, "Not now."));
    addFault(fault("updateErrors2").error(0x56, "Of the element."));
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_FALSE(session().reboot());
    expectOutcome(KvEStage::ended, KvEFailure::elements, "1 element failed");
    EXPECT_THAT(errorTexts(), ElementsAre("Not now."));
}

TEST_F(OutcomeTest, ErrorsOfElementsStayTheirsIfTheDeviceIsNotEvenLookedUpForAReboot) {
    makeRebootable();
    addFault(fault("KvHIM_createFilter").occurrence(2).error(0x55, "No filter."));
    addFault(fault("deleteRemoteFile").error(0x57, "Of the session."));
    addFault(fault("updateErrors2").error(0x56, "Of the element."));
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_FALSE(session().reboot());
    EXPECT_THAT(errorTexts(), ElementsAre("Of the session.", "No filter."));
}
