#pragma once

#include <string>
#include <vector>

/// Serves the emulated targets in these folders (UTF-8); says what is odd or wrong with them. False when one of them
/// cannot be served.
[[nodiscard]] bool serveEmulatedTargets(const std::vector<std::string>& folders);
