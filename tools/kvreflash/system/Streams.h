#pragma once

#include <cstdio>
#include <filesystem>

/// True if `stream` is shown on a terminal.
[[nodiscard]] bool isTerminal(std::FILE* stream);

/// True if the C runtime's wide output writes every character; false if it drops some.
[[nodiscard]] bool writesAnyWideText();

/// Creates a file for binary writing and empties an existing one. Returns null, with errno, if that is not possible.
[[nodiscard]] std::FILE* createFile(const std::filesystem::path& path);
