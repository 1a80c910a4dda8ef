#include "ElementReasons.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

using namespace KvNReflasher;

namespace {

/// "0x2004 text", in one line.
std::string textOf(const KvTErrorInfo& error) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "%#x", error.code);
    std::string text(code.data());
    text.append(" ").append(error.text);
    std::replace_if(
        text.begin(), text.end(), [](char one) { return one == '\n' || one == '\r'; }, ' ');
    return text;
}

/// What the errors add to a sentence: the first one, and how many more there are.
std::string errorsText(const std::vector<KvTErrorInfo>& errors) {
    if (errors.empty()) {
        return {};
    }
    std::string text(": ");
    text.append(textOf(errors.front()));
    if (errors.size() > 1) {
        text.append(" (and ").append(std::to_string(errors.size() - 1)).append(" more)");
    }
    return text;
}

/// Why a status query has ended the update.
std::string statusReason(const KvTElementOutcome& outcome, const KvTRunFacts& run) {
    if (run.pollFailures != 0 || !outcome.state) {
        return "two status queries in a row failed" + errorsText(outcome.errors);
    }
    const std::string state = "the target reported failure (state " + std::to_string(*outcome.state) + ")";
    return state + (outcome.errors.empty() ? " and gave no reason" : errorsText(outcome.errors));
}

std::string writeReason(const KvTElementOutcome& outcome) {
    std::string text = outcome.message.empty() ? "its update file is missing" : outcome.message;
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text + errorsText(outcome.errors);
}

std::string failureReason(const KvTElementOutcome& outcome, const KvTRunFacts& run) {
    using enum KvEFailedCall;
    switch (outcome.failedCall) {
    case transferFile:
        return "its update file could not be transferred" + errorsText(outcome.errors);
    case update2:
        return "its update could not be started" + errorsText(outcome.errors);
    case updateStatus2:
        return statusReason(outcome, run);
    case writeFile:
        return writeReason(outcome);
    case updateErrors2:
    case none:
        break;
    }
    return "errors of its update were reported" + errorsText(outcome.errors);
}

std::string progressReason(const KvTElementOutcome& outcome, const KvTRunFacts& run) {
    std::string text("waiting for it was given up");
    text.append(run.wasStopped ? " on request" : run.hasStalled ? ": nothing changed any more" : "");
    if (outcome.state) {
        text.append("; the target's last answer was state ").append(std::to_string(*outcome.state));
    }
    return text;
}

} // namespace

std::string reasonFor(const KvTElementOutcome& outcome, const KvTPlannedElement& element, const KvTRunFacts& run) {
    switch (outcome.result) {
    case KvEResult::failed:
        return failureReason(outcome, run);
    case KvEResult::cancelled:
        return "an earlier update on the same board failed";
    case KvEResult::fileMissing:
        return "its update file '" + (element.entry ? element.entry->fileName : std::string()) + "' was not found";
    case KvEResult::notStarted:
        return run.wasStopped   ? "the update was ended on request before its turn"
               : run.hasStalled ? "the update was given up before its turn"
                                : "";
    case KvEResult::inProgress:
        return run.wasStopped || run.hasStalled ? progressReason(outcome, run) : "";
    case KvEResult::notPlanned:
    case KvEResult::updated:
        break;
    }
    return {};
}
