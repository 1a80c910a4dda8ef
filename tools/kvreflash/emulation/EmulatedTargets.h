#pragma once

#include <string>
#include <vector>

/// Whether the platform can emulate targets. Without that, nothing can be served.
[[nodiscard]] bool canEmulate();

/// Whether the platform reaches nothing but emulated targets.
[[nodiscard]] bool canOnlyEmulate();

/// Serves the emulated targets in these folders (UTF-8); says what is odd with them. If one of them cannot be served,
/// the result is the reason, else it is empty.
[[nodiscard]] std::string serveEmulatedTargets(const std::vector<std::string>& folders);

/// Makes the emulated target in this folder the only one; says what is odd with it. `address` receives its first
/// address, empty if it has none. If it cannot be served, the result is the reason, else it is empty.
[[nodiscard]] std::string serveAlone(const std::string& folder, std::string& address);
