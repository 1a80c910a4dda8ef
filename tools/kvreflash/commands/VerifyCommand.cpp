#include "VerifyCommand.h"

#include "SessionResult.h"
#include "ToolOutput.h"
#include "VerificationText.h"

using namespace KvNReflasher;

ExitCode VerifyCommand::run() {
    ToolSession session(request(showUpdatePlan));
    SessionResult result = resultOfPlan("verify", session, report);
    if (session.hasRun()) {
        result.verification = verifyPlan(*session->plan());
        writeText(session.request().textStream, elementsWithoutEntryText(*session->plan()));
        result.showVerification();
    }
    result.writeReport(report);
    if (json.isWanted) {
        writeText(stdout, documentOf(result.report()));
    }
    return conclude(result.verdict);
}
