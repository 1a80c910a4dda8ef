#pragma once

#include "CommandLine.h"

/// Runs the session that the line asks for, and what surrounds it: the check of the update files before, the scan after
/// it, the report.
[[nodiscard]] ExitCode runSession(const KvTCommandLine& line);
