#include "ArchivePrintouts.h"
#include "ElementTables.h"
#include "ErrorEntries.h"
#include "ErrorReport.h"
#include "ExhaustedMemory.h"
#include "KvCReflasher.h"
#include "LibraryVersion.h"
#include "PlanTables.h"

namespace {

using namespace KvNReflasher;

/// A function of its own: inside a switch, clang++ 14 destroys a temporary argument of a consteval-checked call at the
/// end of the switch, whichever case ran.
void printToolVersion(const KvCConsoleWriter& writer) {
    writer.print(L"%hs\n", getToolVersion().getAsString().c_str());
}

} // namespace

std::uint32_t KvCReflasher::prepare() {
    verdict_ = {};
    stage_.reset();
    otherErrors_.clear();
    explainer_.reset();
    driver_.forgetRun();
    fileWatch_.forget();
    disabledElements_.clear();
    leavesOutDowngrades_ = false;
    unlistedFiles_ = KvEUnlistedFiles::always;
    const auto status = withoutException<std::uint32_t>(prepareFailed, [this] { return preparation_.prepare(); });
    if (status == prepareFailed) {
        preparation_.forgetTarget();
    }
    if (status != prepareReady) {
        attempt([this] {
            verdict_ = preparation_.verdict();
            otherErrors_ = errorEntriesOf(errors_);
        });
        noteOutOfMemory();
    }
    return status;
}

bool KvCReflasher::run() {
    const bool succeeded = withoutException(false, [this] { return runSession(); });
    stage_ = KvEStage::ended;
    if (!succeeded) {
        noteOutOfMemory();
    }
    return succeeded;
}

bool KvCReflasher::runSession() {
    const bool done = runMode();
    const bool succeeded = !printReportedErrors(writer_, options_, errors_) && done;
    concludeRun(succeeded);
    return succeeded;
}

bool KvCReflasher::runMode() {
    switch (options_.mode) {
    case showVersion:
        printToolVersion(writer_);
        return true;
    case showArchiveVersion:
        printArchiveVersion(writer_, preparation_.archive());
        return true;
    case showArchiveContent:
        printArchiveContent(writer_, preparation_.archive());
        return true;
    case dumpArchiveDescription:
        dumpDescription(writer_, preparation_.archive());
        return true;
    case showTargetElements:
        printElementTable(writer_, options_, preparation_.inventory());
        return true;
    case showUpdatePlan:
        printUpdatePlan(writer_, preparation_.archive(), preparation_.inventory());
        return true;
    case performUpdate:
        return beginJournal() && driver_.run();
    default: // connectOnly and unknown modes print nothing
        return true;
    }
}
