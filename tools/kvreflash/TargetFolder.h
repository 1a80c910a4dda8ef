#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The description file in the folder of an emulated target.
inline constexpr const char* targetDescriptionFile = "target.json";

/// The path of such a folder (UTF-8), as the emulation takes it: "\" is a character like others where the system says
/// so.
[[nodiscard]] inline std::filesystem::path targetFolderPath(std::string_view folder) {
    return {std::u8string(folder.begin(), folder.end())};
}
