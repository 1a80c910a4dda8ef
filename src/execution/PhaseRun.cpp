#include "PhaseRun.h"

#include "ArchiveFindings.h"
#include "CallJudgement.h"
#include "Clock.h"
#include "Files.h"
#include "KvCConsoleWriter.h"
#include "KvCStringConversion.h"
#include "KvNRtosAbstraction.h"

#include <string>

using namespace KvNReflasher;

namespace {

constexpr int lineIndentation = 8;
constexpr int messageIndentation = 12;
/// Column in which the verdict of a line starts.
constexpr int verdictColumn = 56;
/// Pause after each started update, in microseconds.
constexpr std::uint32_t startPause = 500000;

} // namespace

bool KvCPhaseRun::checkFiles() {
    bool isMissing = false;
    for (const KvTUpdateElement* element : list_) {
        const KvTArchiveFile& file = context_.fileOf(*element);
        if (hasFileAttributes(context_.archive.pathOf(file.name))) {
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
        if (context_.control.startsNothing()) {
            return;
        }
        if (element->isFileSystemElement || element->updateState != toBeUpdated ||
            files_.contains(element->archiveFileIndex)) {
            continue;
        }
        if (!headingPrinted) {
            context_.writer.print(L"\n\nTransferring files:\n");
            headingPrinted = true;
        }
        const bool isTransferred = transferFile(*element, *system);
        if (!isTransferred) {
            context_.fail(*element, KvEFailedCall::transferFile);
        }
        context_.callbacks.notifyEvent({KvEEvent::transfer, element->archiveFileIndex, isTransferred});
    }
}

/// Marks every element that the file serves if the file is not what it was when the update was planned.
bool KvCPhaseRun::transferFile(const KvTUpdateElement& element, const KvCInventoryAddress& system) {
    const bool hasChanged = context_.watch.hasChanged(element.archiveFileIndex);
    const bool isTransferred = files_.transferFile(element, system);
    if (hasChanged || context_.watch.hasChanged(element.archiveFileIndex)) {
        for (const KvTUpdateElement* served : list_) {
            KvTElementRun& run = context_.runOf(*served);
            run.fileChanged = run.fileChanged ||
                              (!served->isFileSystemElement && served->archiveFileIndex == element.archiveFileIndex);
        }
    }
    return isTransferred;
}

void KvCPhaseRun::startUpdates() {
    bool headingPrinted = false;
    for (const KvTUpdateElement* element : list_) {
        if (context_.control.startsNothing()) {
            return;
        }
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
    const bool isWritten = putFile(element, messages);
    if (isWritten) {
        context_.runOf(element).updateState = updateFinished;
        context_.writer.print(L"\n");
    } else {
        context_.writer.print(L"[ERROR]\n");
        KvTElementFailure& failure = context_.runOf(element).failure;
        failure.message = messages.empty() ? std::string() : sentenceOf(toUtf8(messages.back()).view());
        failure.writeErrors = directWriter_.errors();
        context_.fail(element, KvEFailedCall::writeFile);
    }
    for (const std::wstring& message : messages) {
        context_.writer.print(L"%*s%s", messageIndentation, L"", message.c_str());
    }
    context_.notifyEnd(element, isWritten);
}

bool KvCPhaseRun::putFile(const KvTUpdateElement& element, std::vector<std::wstring>& messages) {
    const bool hasChanged = context_.watch.hasChanged(element.archiveFileIndex);
    const bool isWritten = writeFile(element, messages);
    context_.runOf(element).fileChanged = hasChanged || context_.watch.hasChanged(element.archiveFileIndex);
    return isWritten;
}

bool KvCPhaseRun::writeFile(const KvTUpdateElement& element, std::vector<std::wstring>& messages) {
    const KvCCallUnderWay call(context_.control, "KvHIM_putFileU", element.index);
    return directWriter_.writeFileToTarget(context_.fileOf(element), element.location, messages);
}

void KvCPhaseRun::startUpdate(const KvTUpdateElement& element) {
    const std::uint64_t timeStamp = localTimeSeconds();
    KvCErrorListPool& errors = *element.errorLists[callErrors];
    const bool started = callSucceeds(errors, [&] {
        const KvCCallUnderWay call(context_.control, "update2", element.index);
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
        // Of an update that is not awaited any more nobody knows that it has failed.
        if (!element->isFileSystemElement && element->updateState != updateStarted) {
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
    askForErrors(element);
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

void KvCPhaseRun::askForErrors(const KvTUpdateElement& element) const {
    const KvCCallUnderWay call(context_.control, "updateErrors2", element.index);
    KvCInventoryManager::getInstance()->updateErrors2(*element.errorLists[callErrors], rootHandle(),
                                                      element.boardAddress, lock_.handle(), element.elementId,
                                                      *element.errorLists[targetErrors]);
}

/// The files of updates that are still under way stay where they are.
void KvCPhaseRun::deleteRemoteFiles() {
    for (const KvTUpdateElement* element : list_) {
        if (element->updateState == updateStarted) {
            files_.leave(element->archiveFileIndex);
        }
    }
    files_.deleteRemoteFiles();
}
