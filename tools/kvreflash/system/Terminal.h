#pragma once

#include <cstdio>

/// True when `stream` is shown on a terminal.
[[nodiscard]] bool isTerminal(std::FILE* stream);

/// True when the C runtime's wide output writes every character; false when it drops some.
[[nodiscard]] bool writesAnyWideText();
