#pragma once

#include "CommandLine.h"

/// TODO. The result is the exit code.
[[nodiscard]] ExitCode showMatrix(const KvTCommandLine& line);
