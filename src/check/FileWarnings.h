#pragma once

#include "CheckedArchive.h"

/// Warns of update files that are missing or cannot be read, where the reader has no need of them, and of those whose
/// headers tell other checksums and versions than the description.
void warnOfFiles(const KvTCheckedArchive& checked, FindingList& findings);
