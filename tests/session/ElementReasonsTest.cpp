#include "ElementReasons.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace KvNReflasher;

namespace {

struct ReasonRow {
    const char* name;
    KvTElementOutcome outcome;
    KvTRunFacts run;
    std::string reason;

    friend void PrintTo(const ReasonRow& row, std::ostream* stream) { *stream << row.name; }
};

KvTElementOutcome outcomeWith(KvEResult result, KvEFailedCall call = KvEFailedCall::none,
                              const std::vector<std::string>& errors = {}) {
    KvTElementOutcome outcome;
    outcome.result = result;
    outcome.failedCall = call;
    for (const std::string& text : errors) {
        KvTErrorInfo& error = outcome.errors.emplace_back();
        error.code = 0x2004;
        error.text = text;
    }
    return outcome;
}

KvTElementOutcome withState(KvTElementOutcome outcome, std::uint32_t state) {
    outcome.state = state;
    return outcome;
}

KvTElementOutcome withMessage(KvTElementOutcome outcome, const char* message) {
    outcome.message = message;
    return outcome;
}

constexpr KvTRunFacts asPlanned{};
constexpr KvTRunFacts stopped{.wasStopped = true, .hasStalled = false, .pollFailures = 0};
constexpr KvTRunFacts stalled{.wasStopped = false, .hasStalled = true, .pollFailures = 0};
constexpr KvTRunFacts unanswered{.wasStopped = false, .hasStalled = false, .pollFailures = 2};

class ElementReasonsTest : public testing::TestWithParam<ReasonRow> {};

} // namespace

TEST_P(ElementReasonsTest, IsOneSentence) {
    KvTPlannedElement element;
    element.entry.emplace().fileName = "a.bin";
    EXPECT_EQ(GetParam().reason, reasonFor(GetParam().outcome, element, GetParam().run));
}

INSTANTIATE_TEST_SUITE_P(
    Results, ElementReasonsTest,
    testing::Values(
        ReasonRow{"NotPlanned", outcomeWith(KvEResult::notPlanned), asPlanned, ""},
        ReasonRow{"Updated", outcomeWith(KvEResult::updated), stopped, ""},
        ReasonRow{"NotRunYet", outcomeWith(KvEResult::notStarted), asPlanned, ""},
        ReasonRow{"Stopped", outcomeWith(KvEResult::notStarted), stopped,
                  "the update was ended on request before its turn"},
        ReasonRow{"Stalled", outcomeWith(KvEResult::notStarted), stalled, "the update was given up before its turn"},
        ReasonRow{"Cancelled", outcomeWith(KvEResult::cancelled), asPlanned,
                  "an earlier update on the same board failed"},
        ReasonRow{"FileMissing", outcomeWith(KvEResult::fileMissing), asPlanned,
                  "its update file 'a.bin' was not found"},
        ReasonRow{"Transfer", outcomeWith(KvEResult::failed, KvEFailedCall::transferFile, {"broken\r\npipe"}),
                  asPlanned, "its update file could not be transferred: 0x2004 broken  pipe"},
        ReasonRow{"Start", outcomeWith(KvEResult::failed, KvEFailedCall::update2, {"busy", "again", "later"}),
                  asPlanned, "its update could not be started: 0x2004 busy (and 2 more)"},
        ReasonRow{"StateWithoutErrors", withState(outcomeWith(KvEResult::failed, KvEFailedCall::updateStatus2), 3),
                  asPlanned, "the target reported failure (state 3) and gave no reason"},
        ReasonRow{"StateWithErrors",
                  withState(outcomeWith(KvEResult::failed, KvEFailedCall::updateStatus2, {"bad image"}), 4), asPlanned,
                  "the target reported failure (state 4): 0x2004 bad image"},
        ReasonRow{"Unanswered",
                  withState(outcomeWith(KvEResult::failed, KvEFailedCall::updateStatus2, {"lost", "lost"}), 1),
                  unanswered, "two status queries in a row failed: 0x2004 lost (and 1 more)"},
        ReasonRow{"TargetErrors", outcomeWith(KvEResult::failed, KvEFailedCall::updateErrors2, {"worn flash"}),
                  asPlanned, "errors of its update were reported: 0x2004 worn flash"},
        ReasonRow{"Write",
                  withMessage(outcomeWith(KvEResult::failed, KvEFailedCall::writeFile, {"full"}), "Writing /x failed."),
                  asPlanned, "Writing /x failed: 0x2004 full"},
        ReasonRow{"WriteOfAMissingFile", outcomeWith(KvEResult::failed, KvEFailedCall::writeFile), asPlanned,
                  "its update file is missing"},
        ReasonRow{"InProgress", withState(outcomeWith(KvEResult::inProgress), 1), stopped,
                  "waiting for it was given up on request; the target's last answer was state 1"},
        ReasonRow{"InProgressUnanswered", outcomeWith(KvEResult::inProgress), stalled,
                  "waiting for it was given up: nothing changed any more"},
        ReasonRow{"UnderWay", withState(outcomeWith(KvEResult::inProgress), 1), asPlanned, ""}),
    [](const auto& row) { return row.param.name; });
