#pragma once

#include <cstdio>
#include <string>

/// Writes UTF-8 text and flushes it: as it is into files and pipes, with control characters made visible on a
/// terminal. What could not be written shows in the stream's error indicator.
void writeText(std::FILE* stream, const std::string& text);

/// Says something of the tool's own, in one line on standard error, with control characters made visible.
void say(const std::string& text);
