#include "PlanCommand.h"

#include "SessionResult.h"

using namespace KvNReflasher;

ExitCode PlanCommand::run() {
    ToolSession session(request(showUpdatePlan));
    SessionResult result("plan", session);
    showPlan(result, session, report);
    return result.conclude(json);
}
