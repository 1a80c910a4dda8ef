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
    return withoutException<std::uint32_t>(prepareFailed, [this] { return preparation_.prepare(); });
}

bool KvCReflasher::run() {
    return withoutException(false, [this] { return runSession(); });
}

bool KvCReflasher::runSession() {
    KvCErrorListPool& errors = KvCErrorManager::getInstance()->getMasterErrorList();
    const bool result = runMode(errors);
    return !printReportedErrors(writer_, options_, errors) && result;
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
