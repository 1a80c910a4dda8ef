#include "ExitCodes.h"

#include "ToolOutput.h"

#include <cstdio>
#include <utility>

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

KvTVerdict verdictOfStandardOutput() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return {};
    }
    return {KvEFailure::output, "cannot write to standard output"};
}

ExitCode conclude(KvTVerdict verdict) {
    if (KvTVerdict loss = verdictOfStandardOutput(); !loss.isSuccess()) {
        if (verdict.failure < loss.failure) {
            say(loss.message);
        }
        verdict.add(std::move(loss));
    }
    if (!verdict.isSuccess()) {
        // Without memory a session cannot say that it has none.
        say(verdict.message.empty() ? "out of memory" : verdict.message);
    }
    return exitCodeOf(verdict.failure);
}
