#include "ErrorEntries.h"
#include "ErrorReport.h"
#include "ExhaustedMemory.h"
#include "KvCReflasher.h"
#include "ToolVersion.h"

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
    errors_.clear();
    explainer_.reset();
    driver_.forgetRun();
    const std::uint32_t status =
        withoutException<std::uint32_t>(prepareFailed, [this] { return preparation_.prepare(); });
    if (status == prepareFailed) {
        preparation_.forgetTarget();
    }
    if (status != prepareReady) {
        attempt([this] {
            verdict_ = preparation_.verdict();
            errors_ = errorEntriesOf(KvCErrorManager::getInstance()->getMasterErrorList());
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
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    const bool done = runMode(errors);
    const bool succeeded = !printReportedErrors(writer_, options_, errors) && done;
    concludeRun(errors, succeeded);
    return succeeded;
}

bool KvCReflasher::runMode(KvCErrorListPool& errors) {
    switch (options_.mode) {
    case showVersion:
        printToolVersion(writer_);
        return true;
    case showArchiveVersion:
        preparation_.archive().printArchiveVersion();
        return true;
    case showArchiveContent:
        preparation_.archive().printArchiveContent();
        return true;
    case dumpArchiveDescription:
        preparation_.archive().dumpDescription();
        return true;
    case showTargetElements:
        preparation_.inventory().printElementTable();
        return true;
    case showUpdatePlan:
        preparation_.planner().printUpdatePlan();
        return true;
    case performUpdate:
        return driver_.run(errors);
    default: // connectOnly and unknown modes print nothing
        return true;
    }
}
