#pragma once

#include <cstdio>
#include <string>
#include <string_view>

// Standard error waits for nobody: if its reader has read nothing for 3 s, the text and all later ones are dropped. Any
// thread may write to it.

/// Writes text to standard error as it is. Returns false if some of it was lost.
[[nodiscard]] bool writeToErrors(std::string_view text);

/// Writes UTF-8 text and flushes it: as it is into files and pipes, with control characters made visible on a
/// terminal. What standard output has lost shows in its error indicator; what standard error has lost is lost.
void writeText(std::FILE* stream, const std::string& text);

/// Says something of the tool's own, in one line on standard error, with control characters made visible.
void say(const std::string& text);
