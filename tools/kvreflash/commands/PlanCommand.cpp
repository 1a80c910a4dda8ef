#include "PlanCommand.h"

#include "KvDocuments.h"
#include "SessionResult.h"
#include "ToolOutput.h"

using namespace KvNReflasher;

ExitCode PlanCommand::run() {
    ToolSession session(request(showUpdatePlan));
    SessionResult result = resultOfPlan("plan", session, report);
    result.writeReport(report);
    if (json.isWanted) {
        writeText(stdout, planDocument(session->plan(), session->archiveEntries(), result.verdict));
    }
    return conclude(result.verdict);
}
