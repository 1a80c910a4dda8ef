#include "PlanCommand.h"

#include "SessionResult.h"

using namespace KvNReflasher;

ExitCode PlanCommand::run() {
    ToolSession session(request(showUpdatePlan));
    SessionResult result = resultOfPlan("plan", session, report);
    return result.conclude(&report, json);
}
