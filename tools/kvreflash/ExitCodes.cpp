#include "ExitCodes.h"

ExitCode exitCodeOf(KvNReflasher::KvEFailure failure) {
    using enum KvNReflasher::KvEFailure;
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
