#include "ArchiveVersionCommand.h"

ExitCode ArchiveVersionCommand::run() {
    ToolSession session(request(KvNReflasher::showArchiveVersion));
    return conclude(session.prepareAndRun());
}
