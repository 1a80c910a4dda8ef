#pragma once

#include "Report.h"

#include <string>

/// The messages of the session, bytes of the library, as its report has them: in visible characters, without progress
/// that was overwritten. What is left out, and what begins a line, no name decides: only the library's own line of
/// progress is left out, and the line feeds of a name of `report` do not end a line. Line feeds of names that `report`
/// does not know, such as those of an archive that was refused, cannot be told from line ends.
[[nodiscard]] std::string reportedMessages(const std::string& messages, const ReportData& report);
