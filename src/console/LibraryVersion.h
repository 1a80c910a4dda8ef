#pragma once

#include "KvCVersion.h"

/// The version of this library: major, minor and maintenance release of its file version, each cut to 8 bits; all 0
/// when it is not known.
[[nodiscard]] KvCVersion getToolVersion();
