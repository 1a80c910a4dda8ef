#include "PhasePolling.h"

#include "CallJudgement.h"
#include "KvCConsoleWriter.h"
#include "KvCInventoryManager.h"
#include "KvNRtosAbstraction.h"

#include <array>
#include <atomic>

using namespace KvNReflasher;

namespace {

/// Pause after each round of queries.
constexpr std::chrono::microseconds pollPause{200000};
/// A stall is said again after so many seconds.
constexpr std::uint32_t stallInterval = 60;
/// This many failed status queries in a row end an element.
constexpr std::uint32_t pollFailureLimit = 2;
constexpr std::uint32_t complete = 100;

/// What the target answers to a status query.
enum TargetState : std::uint32_t { targetRunning = 1, targetSucceeded = 2 };

/// The next character of the spinner, which goes on from phase to phase and from session to session.
const char* nextSpinner() {
    static constexpr std::array spinner = {"-", "\\", "|", "/"};
    static std::atomic<std::uint32_t> position{0};
    return spinner[position++ % spinner.size()];
}

} // namespace

void KvCStall::addRound(bool hasChanged, std::chrono::nanoseconds calls) {
    if (hasChanged) {
        *this = {};
    } else {
        unchanged_ += pollPause + calls;
    }
}

bool KvCStall::isDue() {
    if (seconds() < nextSeconds_) {
        return false;
    }
    nextSeconds_ = seconds() + stallInterval;
    return true;
}

/// What one round of status queries found.
struct KvCPhasePolling::Round {
    /// An update was still running when it was asked.
    bool running = false;
    /// Elements that take part in the percentage, and the sum of theirs.
    std::uint32_t active = 0;
    std::uint32_t sum = 0;
    /// The target has answered something else than before.
    bool hasChanged = false;
    /// How long the queries took.
    std::chrono::nanoseconds duration{0};
};

void KvCPhasePolling::pollUpdates() {
    std::uint32_t percentage = complete;
    bool goOn = true;
    while (goOn) {
        const Round round = pollOnce();
        if (round.active == 0) {
            return;
        }
        percentage = round.sum / round.active;
        if (!context_.options.noProgress) {
            context_.writer.print(L"%3u%% %-51.51hs\r", percentage, nextSpinner());
        }
        context_.callbacks.notifyProgress(percentage);
        watchStall(round);
        KvNRtosAbstraction::usleep(static_cast<std::uint32_t>(pollPause.count()));
        goOn = round.running && !context_.control.givesUp();
        percentage = round.running ? percentage : complete;
    }
    if (!context_.options.noProgress) {
        context_.writer.print(L"%3u%% %-51.51hs", percentage, "");
    }
}

KvCPhasePolling::Round KvCPhasePolling::pollOnce() const {
    Round round;
    const auto begin = std::chrono::steady_clock::now();
    for (const KvTUpdateElement* element : list_) {
        if (!element->wasTried()) {
            continue;
        }
        ++round.active;
        if (element->updateState != updateStarted) {
            round.sum += complete;
            continue;
        }
        round.running = true;
        const std::optional<KvTTargetAnswer> before = element->targetAnswer;
        round.sum += pollElement(*element);
        round.hasChanged = round.hasChanged || element->updateState != updateStarted || element->targetAnswer != before;
    }
    round.duration = std::chrono::steady_clock::now() - begin;
    return round;
}

/// Asks for the state of a started update; its percentage.
std::uint32_t KvCPhasePolling::pollElement(const KvTUpdateElement& element) const {
    KvTElementRun& run = context_.runOf(element);
    const std::optional<KvTTargetAnswer> answer = askForStatus(element);
    if (!answer) {
        if (++run.pollFailures < pollFailureLimit) {
            return 0;
        }
        failStatus(element);
        return complete;
    }
    run.pollFailures = 0;
    run.targetAnswer = answer;
    if (answer->state == targetRunning) {
        return answer->total != 0 ? answer->done * complete / answer->total : complete;
    }
    if (answer->state == targetSucceeded) {
        run.updateState = updateFinished;
    } else {
        failStatus(element);
    }
    return complete;
}

/// Nothing if the query failed; the errors are the element's.
std::optional<KvTTargetAnswer> KvCPhasePolling::askForStatus(const KvTUpdateElement& element) const {
    std::uint32_t id = element.elementId;
    KvTTargetAnswer answer;
    KvCErrorListPool& errors = *element.errorLists[callErrors];
    const bool answered = callSucceeds(errors, [&] {
        const KvCCallUnderWay call(context_.control, "updateStatus2", element.index);
        KvCInventoryManager::getInstance()->updateStatus2(errors, context_.inventory.rootHandle(), element.boardAddress,
                                                          id, answer.state, answer.done, answer.total);
    });
    return answered ? std::optional(answer) : std::nullopt;
}

void KvCPhasePolling::failStatus(const KvTUpdateElement& element) const {
    context_.fail(element, KvEFailedCall::updateStatus2);
    context_.notifyEnd(element, false);
}

/// Says when nothing changes any more, and gives up when that lasts too long.
void KvCPhasePolling::watchStall(const Round& round) {
    stall_.addRound(round.hasChanged || !round.running, round.duration);
    if (stall_.isDue()) {
        context_.callbacks.notifyEvent({KvEEvent::stalled, stall_.seconds()});
    }
    context_.control.noteStall(stall_.seconds());
}
