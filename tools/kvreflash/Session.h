#pragma once

#include "CommandLine.h"

/// The whole tool: reads the arguments (UTF-8, without the program's name) and runs the session that they ask for,
/// through the shared library. The result is the exit code.
[[nodiscard]] ExitCode runTool(const std::vector<std::string>& arguments);
