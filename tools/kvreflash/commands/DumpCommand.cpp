#include "DumpCommand.h"

ExitCode DumpCommand::run() {
    ToolSession session(request(KvNReflasher::dumpArchiveDescription));
    return conclude(session.prepareAndRun());
}
