#pragma once

#include "KvTOutcome.h"

/// Exit codes of the tool. Those of failures are given by KvNReflasher::exitCodeOf().
enum ExitCode : int {
    exitSuccess = 0,
    exitFailed = 1,
    exitTargetNotSupported = 2,
    exitArchive = 3,
    exitTarget = 4,
    exitLocked = 5,
    exitVerification = 6,
    exitStopped = 7,
    exitSelection = 8,
    exitStale = 9,
    exitUsage = 64,
    /// Ended by an interrupt.
    exitInterrupted = 130
};

/// Class output if standard output has lost something of what the library or the tool has written.
[[nodiscard]] KvNReflasher::KvTVerdict verdictOfStandardOutput();

/// Says why a command has failed, as the last line on standard error, and returns its exit code. A command fails, too,
/// if standard output has lost something.
[[nodiscard]] ExitCode conclude(KvNReflasher::KvTVerdict verdict);
