#pragma once

#include "CheckedArchive.h"

/// Warns of values that are read, but not as they look: empty arrays, which match nothing, numbers of more than 32
/// bits, and versions that print differently.
void warnOfValues(const KvTCheckedArchive& checked, FindingList& findings);
