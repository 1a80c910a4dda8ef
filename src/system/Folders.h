#pragma once

#include <string>
#include <vector>

/// The names of the regular files in the folder at `path` (as of Files.h), and of links to such files, in ascending
/// order. UTF-8; off Windows the bytes that the system has. Empty if the folder cannot be listed.
[[nodiscard]] std::vector<std::string> filesOfFolder(const std::wstring& path);
