#pragma once

#include <string>

// Folders of emulated targets (UTF-8) that are to be made. What is wrong is said.

/// True when `folder` is missing or an empty folder.
[[nodiscard]] bool canHoldNewTarget(const std::string& folder);

/// Writes `description` as the target.json of `folder`, which is made when it is missing; the folder above it must
/// exist. False when that fails: nothing is left of it then.
[[nodiscard]] bool writeNewTarget(const std::string& folder, const std::string& description);
