#include "ExitCodes.h"

#include "ToolOutput.h"

#include <cstdio>

using namespace KvNReflasher;

ExitCode exitCodeOf(KvEFailure failure) {
    using enum KvEFailure;
    switch (failure) {
    case none:
        return exitSuccess;
    case archive:
        return exitArchive;
    case target:
        return exitTarget;
    case stale:
        return exitStale;
    case unsupported:
        return exitTargetNotSupported;
    case selection:
        return exitSelection;
    case locked:
        return exitLocked;
    case stopped:
        return exitStopped;
    case verification:
        return exitVerification;
    case elements:
    case errors:
    case reboot:
    case output:
        return exitFailed;
    }
    return exitFailed;
}

ExitCode conclude(KvTVerdict verdict) {
    // Whoever wrote to standard output, the library or the tool: what was lost shows here.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        const KvTVerdict loss{KvEFailure::output, "cannot write to standard output"};
        if (!verdict.isSuccess()) {
            say(loss.message);
        }
        verdict.add(loss);
    }
    if (!verdict.isSuccess()) {
        // Without memory a session cannot say that it has none.
        say(verdict.message.empty() ? "out of memory" : verdict.message);
    }
    return exitCodeOf(verdict.failure);
}
