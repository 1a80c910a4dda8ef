#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>

/// The path of a file (UTF-8) as files of archives and of users are opened: "\" separates on every system.
[[nodiscard]] inline std::filesystem::path filePath(std::string_view utf8) {
    std::u8string text(utf8.begin(), utf8.end());
    std::replace(text.begin(), text.end(), u8'\\', u8'/');
    return {text};
}
