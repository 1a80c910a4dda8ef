#pragma once

#include "CommandLine.h"

#include <optional>
#include <string>
#include <vector>

/// What became of a run of the tool inside this process.
struct ToolRun {
    int exitCode = -1;
    /// Standard output and standard error.
    std::string output;
    std::string errors;
};

/// Runs the whole tool with these arguments. A test failure when something of the target is still held afterwards.
[[nodiscard]] ToolRun runCaptured(const std::vector<std::string>& arguments);

/// What the tool made of its arguments: `line`, or what it said and the exit code.
struct ReadArguments {
    std::optional<KvTCommandLine> line;
    ToolRun answer;
};

/// Only reads the arguments.
[[nodiscard]] ReadArguments readCaptured(const std::vector<std::string>& arguments);
