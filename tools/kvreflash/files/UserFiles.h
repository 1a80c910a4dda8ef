#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The path of a file (UTF-8) as files of archives and of users are opened: "\" separates on every system.
[[nodiscard]] std::filesystem::path filePath(std::string_view utf8);

/// Writes a file that appears under its name once it is complete, and as NAME.new until then: if this fails, what was
/// there before is still there. What is not a plain file, such as a link or a pipe, is written to as it is. Returns
/// false if it cannot be written.
[[nodiscard]] bool writeWholeFile(const std::filesystem::path& path, std::string_view text);

/// Tries whether such a file could be written; the file itself stays as it is. `errno` states why not, unless it is a
/// folder.
[[nodiscard]] bool canWriteWholeFile(const std::filesystem::path& path);

/// A sentence: something cannot be done with a file, and the reason that the system has stated last. `what` is such as
/// "cannot create".
[[nodiscard]] std::string fileFailure(const char* what, const std::string& path);
