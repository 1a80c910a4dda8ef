#pragma once

#include <string>

/// Serves the emulated target in a folder from now on. False when that fails or the platform cannot emulate.
[[nodiscard]] bool serveEmulatedRack(const std::string& folder);
