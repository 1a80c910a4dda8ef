#pragma once

#include "Command.h"

#include <memory>
#include <string>
#include <variant>
#include <vector>

/// Reads the arguments (UTF-8, without the program's name). Returns the command that they name, with its options set. A
/// request for help and a usage error are answered here, on standard output and standard error; the result is then the
/// exit code.
[[nodiscard]] std::variant<std::unique_ptr<Command>, ExitCode>
readCommandLine(const std::vector<std::string>& arguments);

/// Reads the arguments and runs the command; the result is the exit code.
[[nodiscard]] ExitCode executeCommandLine(const std::vector<std::string>& arguments);
