#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What a folder or a folder below it holds, other folders left out.
struct KvTFolderEntry {
    /// Below the folder, folders separated by "/". UTF-8; off Windows the bytes that the system has.
    std::string name;
    /// False for links, too.
    bool isRegularFile = false;
    /// In bytes; 0 unless it is a regular file.
    std::uint64_t size = 0;
};

/// All that the folder at `path` (as of Files.h) holds, in ascending order of the names; no link is followed. Nothing
/// if it, or a folder below it, cannot be listed.
[[nodiscard]] std::optional<std::vector<KvTFolderEntry>> entriesBelow(const std::wstring& path);
