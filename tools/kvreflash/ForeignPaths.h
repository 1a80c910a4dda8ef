#pragma once

#include "KvTOptions.h"

#include <string>
#include <string_view>
#include <vector>

/// True when `targetPath`, taken relative to the target's root folder, leads out of it. Both "/" and "\" separate.
[[nodiscard]] bool leavesTargetRoot(std::string_view targetPath);

/// True when the update file `name` (UTF-8), taken relative to the archive folder, lies outside of it: by its ".." or
/// because a link leads there. A path that cannot be looked at is judged by its text.
[[nodiscard]] bool leavesArchiveFolder(const std::wstring& archiveFolder, std::string_view name);

/// One sentence for each file that an update with these options would read from outside the archive folder or write
/// outside the target's root. Empty when the archive cannot be read, which the session itself will tell.
[[nodiscard]] std::vector<std::string> foreignPathsOfArchive(const KvNReflasher::KvTOptions& options);
