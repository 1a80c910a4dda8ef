#pragma once

#include "CheckedArchive.h"

/// Warns of keys that nobody reads (but for "comment", and the root's "$schema", which is for editors) and of keys that
/// an object has more than once.
void warnOfKeys(const KvTCheckedArchive& checked, FindingList& findings);
