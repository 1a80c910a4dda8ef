#include "VerifyCommand.h"

#include "SessionResult.h"
#include "ToolOutput.h"
#include "VerificationText.h"

using namespace KvNReflasher;

ExitCode VerifyCommand::run() {
    ToolSession session(request(showUpdatePlan));
    SessionResult result("verify", session);
    showPlan(result, session, report);
    if (session.hasRun()) {
        result.verification = verifyPlan(*session->plan());
        writeText(session.request().textStream, elementsWithoutEntryText(*session->plan()));
        result.showVerification();
    }
    return result.conclude(json);
}
