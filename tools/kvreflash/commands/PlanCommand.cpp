#include "PlanCommand.h"

#include "SessionResult.h"
#include "ToolOutput.h"

using namespace KvNReflasher;

ExitCode PlanCommand::run() {
    ToolSession session(request(showUpdatePlan));
    SessionResult result = resultOfPlan("plan", session, report);
    result.writeReport(report);
    if (json.isWanted) {
        writeText(stdout, documentOf(result.report()));
    }
    return conclude(result.verdict);
}
