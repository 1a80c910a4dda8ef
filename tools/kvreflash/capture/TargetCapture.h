#pragma once

#include "CommandLine.h"

/// TODO. The result is the exit code.
[[nodiscard]] ExitCode captureTarget(const KvTCommandLine& line);
