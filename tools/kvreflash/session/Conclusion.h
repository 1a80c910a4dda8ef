#pragma once

#include "ExitCodes.h"
#include "KvTOutcome.h"

/// Says why a command has failed, as the last line on standard error, and returns its exit code. A command fails, too,
/// if standard output has lost something.
[[nodiscard]] ExitCode conclude(KvNReflasher::KvTVerdict verdict);
