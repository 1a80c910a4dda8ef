#pragma once

#include <cstdio>

/// True when `stream` is shown on a terminal.
[[nodiscard]] bool isTerminal(std::FILE* stream);
