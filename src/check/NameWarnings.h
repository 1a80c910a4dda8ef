#pragma once

#include "CheckedArchive.h"

/// Warns of names of update files and of target paths that lead elsewhere than they seem to, or that only some systems
/// tell apart.
void warnOfNames(const KvTCheckedArchive& checked, FindingList& findings);
