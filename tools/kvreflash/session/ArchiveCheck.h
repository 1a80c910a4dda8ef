#pragma once

#include "CommandLine.h"

/// Writes everything that is wrong with the line's archive. Fails if the archive is refused or, if the line is strict,
/// if there is anything to say.
[[nodiscard]] ExitCode checkArchive(const KvTCommandLine& line);
