#pragma once

#include <cstdio>
#include <string>

/// Writes UTF-8 text and flushes it: as it is into files and pipes, with control characters made visible on a
/// terminal. What could not be written shows in the stream's error indicator.
void writeText(std::FILE* stream, const std::string& text);

/// Says something of the tool's own, in one line on standard error.
void say(const std::string& text);

/// Says that something cannot be done with a file, and why: what the system has told last. `what` is such as "cannot
/// create".
void sayFileFailure(const char* what, const std::string& path);
