#pragma once

#include "CommandLine.h"

/// Reads the inventory of the target that the line names and writes it into the line's folder as an emulated target,
/// which plans the same. Says what failed and what had to be left out. The result is the exit code.
[[nodiscard]] ExitCode captureTarget(const KvTCommandLine& line);
