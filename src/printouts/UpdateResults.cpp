#include "UpdateResults.h"

#include "ErrorReport.h"
#include "KvCConsoleWriter.h"

namespace {

bool hasFailed(const KvTUpdateElement& element) {
    return element.updateState != notToBeUpdated && (element.updateState != updateFinished || element.hasErrors());
}

void printFailure(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                  const KvTUpdateElement& element) {
    writer.print(L"    ERROR: %hs:\n", element.displayName.c_str());
    for (const KvCOwnedErrorList& list : element.errorLists) {
        printErrorReport(writer, options, *list, reportIndentation);
    }
    if (element.updateState == updateCancelled) {
        writer.print(L"%*sUpdate cancelled due to previous update errors on the same board.\n",
                     static_cast<int>(reportIndentation), L"");
    }
}

} // namespace

bool printUpdateResults(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                        const KvCTargetInventory& inventory, bool filesMissing) {
    writer.print(L"\nResults:\n");
    bool failed = false;
    for (const KvTUpdateElement& element : inventory.elements()) {
        if (hasFailed(element)) {
            failed = true;
            printFailure(writer, options, element);
        }
    }
    if (failed) {
        writer.print(L"\n    Update failed!\n");
    } else if (filesMissing) {
        writer.print(L"\n    Update incomplete due to missing files in the source folder!\n");
    } else {
        writer.print(L"\n    Update completed successfully!\n");
    }
    return !failed && !filesMissing;
}
