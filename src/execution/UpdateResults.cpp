#include "ErrorReport.h"
#include "KvCConsoleWriter.h"
#include "KvCUpdateDriver.h"

/// Asks for the errors of the finished updates, closes the progress line with the phase's verdict, and cancels later
/// updates on boards where one failed.
void KvCUpdateDriver::collectErrors(const PhaseList& list) {
    bool tried = false;
    bool failed = false;
    for (KvTUpdateElement* element : list) {
        if (!element->wasTried()) {
            continue;
        }
        tried = true;
        if (succeeded(*element)) {
            continue;
        }
        failed = true;
        if (!element->isFileSystemElement) {
            cancelLaterUpdates(element->boardAddress, element->phase + 1);
        }
    }
    if (failed) {
        writer_.print(L"[ERROR]\n");
    } else if (tried) {
        writer_.print(L"[OK]\n");
    }
}

/// Whether the update of a tried element succeeded. Errors that the target reports for a finished update mark it as
/// failed; its state stays.
bool KvCUpdateDriver::succeeded(KvTUpdateElement& element) {
    if (element.updateState != updateFinished) {
        return false;
    }
    if (element.isFileSystemElement) {
        return true;
    }
    KvCInventoryManager::getInstance()->updateErrors2(*element.errorLists[callErrors], rootHandle(),
                                                      element.boardAddress, lockHandle_, element.elementId,
                                                      *element.errorLists[targetErrors]);
    element.errorsCollected = true;
    const bool isGood = !element.hasErrors();
    if (!isGood) {
        element.failure.call = KvNReflasher::KvEFailedCall::updateErrors2;
        callbacks_.notifyElementError(element.index);
    }
    notifyEnd(element, isGood);
    return isGood;
}

std::size_t KvCUpdateDriver::AddressHash::operator()(const KvCInventoryAddress& address) const {
    std::size_t hash = 0;
    for (const KvCInventoryAddress::Component& component : address.getComponents()) {
        hash = (hash * 31 + component.identifier) * 31 + component.instance;
    }
    return hash;
}

void KvCUpdateDriver::cancelLaterUpdates(const KvCInventoryAddress& boardAddress, std::uint32_t fromPhase) {
    if (elementsOfBoards_.empty()) {
        for (KvTUpdateElement& element : planner_.inventory().elements()) {
            elementsOfBoards_[element.boardAddress].push_back(&element);
        }
    }
    for (KvTUpdateElement* element : elementsOfBoards_[boardAddress]) {
        if (element->updateState == toBeUpdated && element->phase >= fromPhase) {
            element->updateState = updateCancelled;
            callbacks_.notifyElementError(element->index);
        }
    }
}

bool KvCUpdateDriver::printResults(KvCErrorListPool& errors) {
    writer_.print(L"\nResults:\n");
    run_.elementErrorsBegin = errors.getNumberOfUsedEntries();
    bool failed = false;
    for (const KvTUpdateElement& element : planner_.inventory().elements()) {
        if (element.updateState == notToBeUpdated) {
            continue;
        }
        for (const OwnedErrorList& list : element.errorLists) {
            errors += *list;
        }
        if (element.updateState == updateFinished && !element.hasErrors()) {
            continue;
        }
        failed = true;
        writer_.print(L"    ERROR: %hs:\n", element.displayName.c_str());
        for (const OwnedErrorList& list : element.errorLists) {
            printErrorReport(writer_, options_, *list, reportIndentation);
        }
        if (element.updateState == updateCancelled) {
            writer_.print(L"%*sUpdate cancelled due to previous update errors on the same board.\n",
                          static_cast<int>(reportIndentation), L"");
        }
    }
    run_.elementErrorsEnd = errors.getNumberOfUsedEntries();
    if (failed) {
        writer_.print(L"\n    Update failed!\n");
    } else if (run_.filesMissing) {
        writer_.print(L"\n    Update incomplete due to missing files in the source folder!\n");
    } else {
        writer_.print(L"\n    Update completed successfully!\n");
    }
    return !failed && !run_.filesMissing;
}
