#pragma once

#include "ExitCodes.h"
#include "KvTOutcome.h"

#include <string>

/// Says why a command has failed, as the last line on standard error, and returns its exit code.
[[nodiscard]] ExitCode conclude(const KvNReflasher::KvTVerdict& verdict);

/// The same for a file that cannot be used, with the reason that the system has given last. `what` is such as "cannot
/// create".
[[nodiscard]] ExitCode failedFile(const char* what, const std::string& path);
