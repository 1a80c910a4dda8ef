#pragma once

#include "JsonPlace.h"
#include "KvCErrorManager.h"

#include <vector>

/// Reads a list of error objects.
[[nodiscard]] bool readErrorEntries(const JsonPlace& place, std::vector<KvTErrorEntry>& entries);
