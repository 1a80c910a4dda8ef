#pragma once

#include <filesystem>
#include <string_view>

/// Writes a file that appears under its name once it is complete, and as NAME.new until then: when this fails, what was
/// there before is still there. What is no plain file, such as a link or a pipe, is written to as it is. False when it
/// cannot be written.
[[nodiscard]] bool writeWholeFile(const std::filesystem::path& path, std::string_view text);

/// Tries whether such a file could be written; the file itself stays as it is. `errno` tells why not, unless it is a
/// folder.
[[nodiscard]] bool canWriteWholeFile(const std::filesystem::path& path);
