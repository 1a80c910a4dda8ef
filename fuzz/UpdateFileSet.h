#pragma once

#include "FuzzFolder.h"

#include <string_view>

/// Writes an update file of each kind, by which archive descriptions may leave out checksums, under short names that
/// mutations find: "image", "tree", "bits" (a checksum in its head), "head" (a bitstream whose head holds none) and
/// "text" (no update file).
void writeUpdateFiles(const FuzzFolder& folder);

/// The file with content of the input's own.
inline constexpr std::string_view ownUpdateFile = "own";
