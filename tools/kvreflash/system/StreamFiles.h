#pragma once

#include <cstdio>
#include <string>

/// Creates a file (UTF-8; "\" separates like "/") for binary writing, emptying an existing one; null, with errno, if
/// that is not possible.
[[nodiscard]] std::FILE* createFile(const std::string& path);
