#include "VersionCommand.h"

ExitCode VersionCommand::run() {
    ToolSession session(request(KvNReflasher::showVersion));
    return conclude(session.prepareAndRun());
}
