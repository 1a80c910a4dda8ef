#include "ConnectCommand.h"

ExitCode ConnectCommand::run() {
    ToolSession session(request(KvNReflasher::connectOnly));
    return conclude(session.prepareAndRun());
}
