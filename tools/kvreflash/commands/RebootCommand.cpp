#include "RebootCommand.h"

#include "SessionResult.h"

using namespace KvNReflasher;

ExitCode RebootCommand::run() {
    ToolSession session(request(connectOnly));
    SessionResult result("reboot", session);
    result.verdict = session.openJournal("reboot");
    if (result.verdict.isSuccess()) {
        result.verdict = session.prepareAndRun();
    }
    if (result.verdict.isSuccess()) {
        session->reboot();
        result.verdict.add(session.verdict());
    }
    return result.conclude(json);
}
