#pragma once

#include "CommandLine.h"

/// Plans an update of each of the line's emulated targets, one served at a time, and writes what it would do. A target
/// that cannot be planned for is told, and the others are gone through all the same. The result is the exit code:
/// success only when every target was planned for.
[[nodiscard]] ExitCode showMatrix(const KvTCommandLine& line);
