#pragma once

#include "CommandLine.h"

/// Writes everything that is to be said about an archive to standard output, as text or as a JSON document. The result
/// is exitFailed when there are errors or, if the line is strict, warnings; else exitSuccess.
[[nodiscard]] ExitCode checkArchive(const KvTCommandLine& line);
