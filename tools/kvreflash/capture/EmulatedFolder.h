#pragma once

#include <string>

// Folders of emulated targets (UTF-8) that are to be made. Each function returns why something cannot be done, in one
// sentence; empty if it can.

/// `folder` must be missing, or an empty folder, and it must be possible to make it and to write into it. It stays as
/// it is.
[[nodiscard]] std::string faultOfNewTarget(const std::string& folder);

/// Writes `description` as the target.json of `folder`, which is made if it is missing; the folder above it must exist.
/// Nothing is left of it if that fails.
[[nodiscard]] std::string writeNewTarget(const std::string& folder, const std::string& description);
