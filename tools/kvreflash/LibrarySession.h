#pragma once

#include "CommandLine.h"

#include <cstdint>
#include <set>
#include <string>

/// What came of a session.
struct KvTSessionOutcome {
    ExitCode result = exitFailed;
    /// Indices of the elements that it reported failed.
    std::set<std::uint32_t> failedElements;
    /// What it said, as bytes, as far as the tool saw it: always when the line asks for a report.
    std::string messages;
};

/// Runs the session that the line asks for, through the shared library.
[[nodiscard]] KvTSessionOutcome runLibrarySession(const KvTCommandLine& line);
