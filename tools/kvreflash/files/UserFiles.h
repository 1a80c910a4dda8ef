#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The path of a file (UTF-8) as files of archives and of users are opened: "\" separates on every system.
[[nodiscard]] std::filesystem::path filePath(std::string_view utf8);

/// `utf8` as a path from the root, without ".", ".." and links as far as it exists; as it is if that is not possible.
[[nodiscard]] std::string absolutePath(const std::string& utf8);

/// Why something cannot be done with a file, in words; `error` is a value of errno.
[[nodiscard]] std::string reasonOf(const std::filesystem::path& path, int error);

/// A sentence: something cannot be done with a file, and why. `what` is such as "cannot create"; `error` is a value of
/// errno, the current one if it is left out.
[[nodiscard]] std::string fileFailure(const char* what, const std::string& path, int error);
[[nodiscard]] std::string fileFailure(const char* what, const std::string& path);
