#pragma once

#include "KvCFirmwareArchive.h"
#include "KvISession.h"

#include <string>
#include <string_view>
#include <vector>

/// True when `targetPath`, taken relative to the target's root folder, leads out of it. Both "/" and "\" separate.
[[nodiscard]] bool leavesTargetRoot(std::string_view targetPath);

/// True when the update file `name` (UTF-8), taken relative to the archive folder, lies outside of it: by its ".." or
/// because a link leads there. A path that cannot be looked at is judged by its text.
[[nodiscard]] bool leavesArchiveFolder(const std::wstring& archiveFolder, std::string_view name);

/// What an update with the accepted entries of `archive` would read from outside its folder or write outside the
/// target's root, in the order of the entries; of each entry the update file first, then its target paths, each once.
[[nodiscard]] std::vector<KvNReflasher::KvTForeignPath> foreignPathsOf(const KvCFirmwareArchive& archive);
