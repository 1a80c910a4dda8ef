#pragma once

#include "KvTOptions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// Exit codes of the tool.
enum ExitCode : int { exitSuccess = 0, exitFailed = 1, exitTargetNotSupported = 2, exitUsage = 64 };

/// What the user asked for.
struct KvTCommandLine {
    KvNReflasher::KvTOptions options{};
    /// Folders of the emulated targets to be served.
    std::vector<std::string> emulatedTargets;
    /// Indices of elements to be left out of the update.
    std::vector<std::uint32_t> disabledElements;
    /// Reset the target after a successful run.
    bool reboot = false;
    /// Write the query records as a JSON document.
    bool json = false;
    /// File of the notifications, if they are to be written; "-": standard error.
    std::optional<std::string> eventsFile;
};

/// Reads the arguments (UTF-8, without the program's name). A request for help and a usage error are answered here,
/// on standard output and standard error; the result is then the exit code.
[[nodiscard]] std::variant<KvTCommandLine, ExitCode> readCommandLine(const std::vector<std::string>& arguments);
