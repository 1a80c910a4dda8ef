#include "CallJudgement.h"
#include "Clock.h"
#include "KvCConsoleWriter.h"
#include "KvCUpdateDriver.h"
#include "KvNRtosAbstraction.h"
#include "TextConversions.h"

#include <array>
#include <atomic>
#include <string>
#include <string_view>

using namespace KvNReflasher;

namespace {

constexpr int lineIndentation = 8;
constexpr int messageIndentation = 12;
/// Column in which the verdict of a line starts.
constexpr int verdictColumn = 56;
/// Pause after each started update and after each round of queries, in microseconds.
constexpr std::uint32_t startPause = 500000;
constexpr std::uint32_t pollPause = 200000;
/// This many failed status queries in a row end an element.
constexpr std::uint32_t pollFailureLimit = 2;
constexpr std::uint32_t complete = 100;

/// What the target answers to a status query.
enum TargetState : std::uint32_t { targetRunning = 1, targetSucceeded = 2 };

/// A message of the direct write without the word that it begins with and the end of its line.
std::string sentenceOf(const std::wstring& message) {
    std::string sentence(toUtf8(message).view());
    constexpr std::string_view word = "ERROR: ";
    if (sentence.starts_with(word)) {
        sentence.erase(0, word.size());
    }
    if (sentence.ends_with('\n')) {
        sentence.pop_back();
    }
    return sentence;
}

/// The next character of the spinner, which goes on from phase to phase and from session to session.
const char* nextSpinner() {
    static constexpr std::array spinner = {"-", "\\", "|", "/"};
    static std::atomic<std::uint32_t> position{0};
    return spinner[position++ % spinner.size()];
}

} // namespace

/// What one round of status queries found.
struct KvCUpdateDriver::PollRound {
    /// An update was still running when it was asked.
    bool running = false;
    /// Elements that take part in the percentage, and the sum of theirs.
    std::uint32_t active = 0;
    std::uint32_t sum = 0;
};

void KvCUpdateDriver::startUpdates(const PhaseList& list) {
    bool headingPrinted = false;
    for (KvTUpdateElement* element : list) {
        if (element->updateState != toBeUpdated) {
            continue;
        }
        if (!headingPrinted) {
            writer_.print(L"\nUpdating:\n");
            headingPrinted = true;
        }
        const int column = writer_.print(L"%*s%hs", lineIndentation, L"", element->displayName.c_str());
        if (column < verdictColumn) {
            writer_.print(L"%*s", verdictColumn - column, L"");
        }
        callbacks_.notifyEvent({KvEEvent::elementStart, element->index});
        if (element->isFileSystemElement) {
            writeDirectly(*element);
        } else {
            startUpdate(*element);
        }
    }
}

void KvCUpdateDriver::writeDirectly(KvTUpdateElement& element) {
    std::vector<std::wstring> messages;
    const bool isWritten = directWriter_.writeFileToTarget(fileOf(element), element.location, messages);
    if (isWritten) {
        element.updateState = updateFinished;
        writer_.print(L"\n");
    } else {
        writer_.print(L"[ERROR]\n");
        fail(element, KvEFailedCall::writeFile);
        element.failure.message = messages.empty() ? std::string() : sentenceOf(messages.back());
        element.failure.writeErrors = directWriter_.errors();
    }
    for (const std::wstring& message : messages) {
        writer_.print(L"%*s%s", messageIndentation, L"", message.c_str());
    }
    notifyEnd(element, isWritten);
}

void KvCUpdateDriver::startUpdate(KvTUpdateElement& element) {
    const std::uint64_t timeStamp = localTimeSeconds();
    KvCErrorListPool& errors = *element.errorLists[callErrors];
    const bool started = callSucceeds(errors, [&] {
        KvCInventoryManager::getInstance()->update2(errors, rootHandle(), element.boardAddress, lockHandle_,
                                                    element.elementId, remoteFileOf(element), timeStamp);
    });
    if (!started) {
        writer_.print(L"[ERROR]\n");
        fail(element, KvEFailedCall::update2);
        notifyEnd(element, false);
        return;
    }
    element.updateState = updateStarted;
    writer_.print(L"\n");
    KvNRtosAbstraction::usleep(startPause);
}

/// Asks until no update of the phase is running any more. Leaves the progress line open for the phase's verdict.
void KvCUpdateDriver::pollUpdates(const PhaseList& list) {
    bool goOn = true;
    while (goOn) {
        const PollRound round = pollOnce(list);
        if (round.active == 0) {
            return;
        }
        const std::uint32_t percentage = round.sum / round.active;
        if (!options_.noProgress) {
            writer_.print(L"%3u%% %-51.51hs\r", percentage, nextSpinner());
        }
        callbacks_.notifyProgress(percentage);
        KvNRtosAbstraction::usleep(pollPause);
        goOn = round.running;
    }
    if (!options_.noProgress) {
        writer_.print(L"%3u%% %-51.51hs", complete, "");
    }
}

KvCUpdateDriver::PollRound KvCUpdateDriver::pollOnce(const PhaseList& list) {
    PollRound round;
    for (KvTUpdateElement* element : list) {
        if (!element->wasTried()) {
            continue;
        }
        ++round.active;
        if (element->updateState == updateStarted) {
            round.running = true;
            round.sum += pollElement(*element);
        } else {
            round.sum += complete;
        }
    }
    return round;
}

/// Asks for the state of a started update; its percentage.
std::uint32_t KvCUpdateDriver::pollElement(KvTUpdateElement& element) {
    std::uint32_t id = element.elementId;
    std::uint32_t state = 0;
    std::uint32_t done = 0;
    std::uint32_t total = 0;
    KvCErrorListPool& errors = *element.errorLists[callErrors];
    const bool answered = callSucceeds(errors, [&] {
        KvCInventoryManager::getInstance()->updateStatus2(errors, rootHandle(), element.boardAddress, id, state, done,
                                                          total);
    });
    if (!answered) {
        if (++element.pollFailures < pollFailureLimit) {
            return 0;
        }
        failStatus(element);
        return complete;
    }
    element.pollFailures = 0;
    element.targetState = state;
    if (state == targetRunning) {
        return total != 0 ? done * complete / total : complete;
    }
    if (state == targetSucceeded) {
        element.updateState = updateFinished;
    } else {
        failStatus(element);
    }
    return complete;
}

void KvCUpdateDriver::failStatus(KvTUpdateElement& element) {
    fail(element, KvEFailedCall::updateStatus2);
    notifyEnd(element, false);
}
