#pragma once

#include "CommandLine.h"

#include <string>
#include <vector>

/// The whole tool: reads the arguments (UTF-8, without the program's name) and does what they ask for. The result is
/// the exit code.
[[nodiscard]] ExitCode runTool(const std::vector<std::string>& arguments);
