#pragma once

#include "KvCString.h"
#include "KvTUpdateElement.h"

#include <string>
#include <vector>

// Cells and titles that the tables of update elements share.

/// Adds a cell with the element's status marker when it has one ("[INVALID]", "[INACTIVE]").
void addStatusMarker(std::vector<KvCString>& row, const KvTUpdateElement& element);

/// The unit's name, followed by its rack and instance names where it has them.
[[nodiscard]] std::wstring unitTitle(const KvTUpdateElement& element);
