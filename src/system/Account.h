#pragma once

#include <string>

// Who runs the process, and where. UTF-8; empty if it is not known.

/// Name of the user.
[[nodiscard]] std::string userName();
/// Name of the computer.
[[nodiscard]] std::string computerName();
