#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// Something in a folder or in a folder below it that is not a folder itself.
struct KvTFolderEntry {
    /// Below the folder, folders separated by "/". UTF-8; off Windows the bytes that the system has.
    std::string name;
    /// False for links, too.
    bool isRegularFile = false;
    /// In bytes; 0 unless it is a regular file.
    std::uint64_t size = 0;
};

/// Removes `path` and, if it is a folder, all below it, as far as that is possible. No link is followed.
void removeTree(const std::filesystem::path& path);

/// All that the folder at `path` (as of Files.h) holds, in ascending order of the names; no link is followed. Nothing
/// if it, or a folder below it, cannot be listed.
[[nodiscard]] std::optional<std::vector<KvTFolderEntry>> entriesBelow(const std::wstring& path);
