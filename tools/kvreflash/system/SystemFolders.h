#pragma once

#include <string>

/// The folder (UTF-8) that says whom this machine trusts; empty if it is known that there is none.
[[nodiscard]] std::string systemTrustFolder();
