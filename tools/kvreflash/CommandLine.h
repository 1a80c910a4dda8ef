#pragma once

#include "ExitCodes.h"
#include "KvTOptions.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What the tool does.
enum class KvETask : std::uint8_t {
    /// One session with one target, whatever its mode.
    session,
    /// Finds everything that is wrong with an archive.
    check,
    /// Writes a target as an emulated one.
    capture,
    /// Explains why each element is or is not updated.
    explain,
    /// Plans for many emulated targets.
    matrix
};

/// How the progress of an update is shown.
enum class KvEProgress : std::uint8_t {
    /// The library's line, written over and over.
    line,
    /// A line for every tenth.
    plain,
    none
};

/// What the user asked for.
struct KvTCommandLine {
    /// Name of the command.
    std::string command;
    KvETask task = KvETask::session;
    KvNReflasher::KvTOptions options{};
    /// Folders of the emulated targets to be served.
    std::vector<std::string> emulatedTargets;
    /// Elements to be left out of the update: numbers, addresses, target paths or display names.
    std::vector<std::string> disabledElements;
    /// Reset the target after a successful run.
    bool reboot = false;
    /// Write a JSON document.
    bool json = false;
    /// File of the notifications, if they are to be written; "-": standard error.
    std::optional<std::string> eventsFile;
    /// File of the report, if one is to be written.
    std::optional<std::string> reportFile;
    KvEProgress progress = KvEProgress::line;
    /// Check every update file before the target is touched.
    bool preflight = false;
    /// Scan the target again after the update and judge by that.
    bool verify = false;
    /// Update nothing, and judge what the target has.
    bool verifiesOnly = false;
    /// How long a rebooted target is waited for.
    std::uint32_t waitSeconds = 300;
    /// Of a check: warnings count as errors.
    bool strict = false;
    /// Folder that a capture makes.
    std::string captureFolder;
    /// Number or name of the element to be explained; empty: all.
    std::string element;
};

/// Reads the arguments (UTF-8, without the program's name). A request for help and a usage error are answered here,
/// on standard output and standard error; the result is then the exit code.
[[nodiscard]] std::variant<KvTCommandLine, ExitCode> readCommandLine(const std::vector<std::string>& arguments);
