#include "PhaseRun.h"

#include "ArchiveFindings.h"
#include "ArchivePaths.h"
#include "CallJudgement.h"
#include "Clock.h"
#include "Files.h"
#include "KvCConsoleWriter.h"
#include "KvCStringConversion.h"
#include "KvNRtosAbstraction.h"

#include <array>
#include <atomic>
#include <string>

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

/// The next character of the spinner, which goes on from phase to phase and from session to session.
const char* nextSpinner() {
    static constexpr std::array spinner = {"-", "\\", "|", "/"};
    static std::atomic<std::uint32_t> position{0};
    return spinner[position++ % spinner.size()];
}

} // namespace

/// What one round of status queries found.
struct KvCPhaseRun::PollRound {
    /// An update was still running when it was asked.
    bool running = false;
    /// Elements that take part in the percentage, and the sum of theirs.
    std::uint32_t active = 0;
    std::uint32_t sum = 0;
};

bool KvCPhaseRun::checkFiles() {
    bool isMissing = false;
    for (const KvTUpdateElement* element : list_) {
        const KvTArchiveFile& file = context_.fileOf(*element);
        if (hasFileAttributes(updateFilePath(context_.options, file.name))) {
            continue;
        }
        isMissing = true;
        context_.archive.noteMissing(element->archiveFileIndex);
        KvTElementRun& run = context_.runOf(*element);
        run.failure.fileMissing = true;
        run.updateState = notToBeUpdated;
        context_.writer.print(L"\n%hs cannot be updated. Update file %s not found!\n", element->displayName.c_str(),
                              toWide(file.name).c_str());
    }
    return isMissing;
}

/// A file that was transferred serves every element of its entry in this phase.
void KvCPhaseRun::transferFiles() {
    const KvCInventoryAddress* system = context_.inventory.systemAddress();
    if (system == nullptr) {
        return;
    }
    bool headingPrinted = false;
    for (const KvTUpdateElement* element : list_) {
        if (element->isFileSystemElement || element->updateState != toBeUpdated ||
            files_.contains(element->archiveFileIndex)) {
            continue;
        }
        if (!headingPrinted) {
            context_.writer.print(L"\n\nTransferring files:\n");
            headingPrinted = true;
        }
        const bool isTransferred = files_.transferFile(*element, *system);
        if (!isTransferred) {
            context_.fail(*element, KvEFailedCall::transferFile);
        }
        context_.callbacks.notifyEvent({KvEEvent::transfer, element->archiveFileIndex, isTransferred});
    }
}

void KvCPhaseRun::startUpdates() {
    bool headingPrinted = false;
    for (const KvTUpdateElement* element : list_) {
        if (element->updateState != toBeUpdated) {
            continue;
        }
        if (!headingPrinted) {
            context_.writer.print(L"\nUpdating:\n");
            headingPrinted = true;
        }
        const int column = context_.writer.print(L"%*s%hs", lineIndentation, L"", element->displayName.c_str());
        if (column < verdictColumn) {
            context_.writer.print(L"%*s", verdictColumn - column, L"");
        }
        context_.callbacks.notifyEvent({KvEEvent::elementStart, element->index});
        if (element->isFileSystemElement) {
            writeDirectly(*element);
        } else {
            startUpdate(*element);
        }
    }
}

void KvCPhaseRun::writeDirectly(const KvTUpdateElement& element) {
    std::vector<std::wstring> messages;
    const bool isWritten = directWriter_.writeFileToTarget(context_.fileOf(element), element.location, messages);
    if (isWritten) {
        context_.runOf(element).updateState = updateFinished;
        context_.writer.print(L"\n");
    } else {
        context_.writer.print(L"[ERROR]\n");
        context_.fail(element, KvEFailedCall::writeFile);
        KvTElementFailure& failure = context_.runOf(element).failure;
        failure.message = messages.empty() ? std::string() : sentenceOf(toUtf8(messages.back()).view());
        failure.writeErrors = directWriter_.errors();
    }
    for (const std::wstring& message : messages) {
        context_.writer.print(L"%*s%s", messageIndentation, L"", message.c_str());
    }
    context_.notifyEnd(element, isWritten);
}

void KvCPhaseRun::startUpdate(const KvTUpdateElement& element) {
    const std::uint64_t timeStamp = localTimeSeconds();
    KvCErrorListPool& errors = *element.errorLists[callErrors];
    const bool started = callSucceeds(errors, [&] {
        KvCInventoryManager::getInstance()->update2(errors, rootHandle(), element.boardAddress, lock_.handle(),
                                                    element.elementId, files_.remoteFile(element.archiveFileIndex),
                                                    timeStamp);
    });
    if (!started) {
        context_.writer.print(L"[ERROR]\n");
        context_.fail(element, KvEFailedCall::update2);
        context_.notifyEnd(element, false);
        return;
    }
    context_.runOf(element).updateState = updateStarted;
    context_.writer.print(L"\n");
    KvNRtosAbstraction::usleep(startPause);
}

void KvCPhaseRun::pollUpdates() {
    bool goOn = true;
    while (goOn) {
        const PollRound round = pollOnce();
        if (round.active == 0) {
            return;
        }
        const std::uint32_t percentage = round.sum / round.active;
        if (!context_.options.noProgress) {
            context_.writer.print(L"%3u%% %-51.51hs\r", percentage, nextSpinner());
        }
        context_.callbacks.notifyProgress(percentage);
        KvNRtosAbstraction::usleep(pollPause);
        goOn = round.running;
    }
    if (!context_.options.noProgress) {
        context_.writer.print(L"%3u%% %-51.51hs", complete, "");
    }
}

KvCPhaseRun::PollRound KvCPhaseRun::pollOnce() const {
    PollRound round;
    for (const KvTUpdateElement* element : list_) {
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
std::uint32_t KvCPhaseRun::pollElement(const KvTUpdateElement& element) const {
    KvTElementRun& run = context_.runOf(element);
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
        if (++run.pollFailures < pollFailureLimit) {
            return 0;
        }
        failStatus(element);
        return complete;
    }
    run.pollFailures = 0;
    run.targetState = state;
    if (state == targetRunning) {
        return total != 0 ? done * complete / total : complete;
    }
    if (state == targetSucceeded) {
        run.updateState = updateFinished;
    } else {
        failStatus(element);
    }
    return complete;
}

void KvCPhaseRun::failStatus(const KvTUpdateElement& element) const {
    context_.fail(element, KvEFailedCall::updateStatus2);
    context_.notifyEnd(element, false);
}

void KvCPhaseRun::collectErrors(KvCLaterUpdates& laterUpdates) {
    bool tried = false;
    bool failed = false;
    for (const KvTUpdateElement* element : list_) {
        if (!element->wasTried()) {
            continue;
        }
        tried = true;
        if (succeeded(*element)) {
            continue;
        }
        failed = true;
        if (!element->isFileSystemElement) {
            laterUpdates.cancelLaterUpdates(element->boardAddress, element->phase + 1);
        }
    }
    if (failed) {
        context_.writer.print(L"[ERROR]\n");
    } else if (tried) {
        context_.writer.print(L"[OK]\n");
    }
}

/// Whether the update of a tried element succeeded. Errors that the target reports for a finished update mark it as
/// failed; its state stays.
bool KvCPhaseRun::succeeded(const KvTUpdateElement& element) const {
    if (element.updateState != updateFinished) {
        return false;
    }
    if (element.isFileSystemElement) {
        return true;
    }
    KvCInventoryManager::getInstance()->updateErrors2(*element.errorLists[callErrors], rootHandle(),
                                                      element.boardAddress, lock_.handle(), element.elementId,
                                                      *element.errorLists[targetErrors]);
    KvTElementRun& run = context_.runOf(element);
    run.errorsCollected = true;
    const bool isGood = !element.hasErrors();
    if (!isGood) {
        run.failure.call = KvEFailedCall::updateErrors2;
        context_.callbacks.notifyElementError(element.index);
    }
    context_.notifyEnd(element, isGood);
    return isGood;
}
