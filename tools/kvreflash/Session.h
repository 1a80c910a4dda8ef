#pragma once

#include "CommandLine.h"

/// Runs the session that the command line asks for, through the shared library. The result is the exit code.
[[nodiscard]] ExitCode runSession(const KvTCommandLine& line);

/// The whole tool: reads the arguments (UTF-8, without the program's name) and runs the session.
[[nodiscard]] ExitCode runTool(const std::vector<std::string>& arguments);
