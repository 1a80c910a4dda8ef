#include "RebootCommand.h"

using namespace KvNReflasher;

ExitCode RebootCommand::run() {
    ToolSession session(request(connectOnly));
    KvTVerdict verdict = session.prepareAndRun();
    if (verdict.isSuccess()) {
        session->reboot();
        verdict.add(session.verdict());
    }
    return conclude(verdict);
}
