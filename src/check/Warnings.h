#pragma once

#include "CheckedArchive.h"

// Each looks for one kind of what is read, but may not do what was meant.

/// Warns of update files that are missing or cannot be read, where the reader has no need of them, and of those whose
/// headers tell other checksums and versions than the description.
void warnOfFiles(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of keys that nobody reads (but for "comment", and the root's "$schema", which is for editors) and of keys that
/// an object has more than once.
void warnOfKeys(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of names of update files and of target paths that lead elsewhere than they seem to, or that only some systems
/// tell apart.
void warnOfNames(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of what no element can take, though it is read: entries all of whose elements are taken by earlier entries,
/// and elements of "boards" whose board types all occur in an earlier one. Entries that write a file of the target are
/// all written; of those the warning is that they write the same one.
///
/// What is warned of is so. Not every such entry is found: one that several earlier entries cover only together for one
/// board type is not, nor one behind many others of its board type and address.
void warnOfShadows(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of values that are read, but not as they look: empty arrays, which match nothing, numbers of more than 32
/// bits, and versions that print differently.
void warnOfValues(const KvTCheckedArchive& checked, KvCFindingList& findings);
