#pragma once

#include "CheckedArchive.h"

/// Warns of what no element can take, though it is read: entries all of whose elements are taken by earlier entries,
/// and elements of "boards" whose board types all occur in an earlier one. Entries that write a file of the target are
/// all written; of those the warning is that they write the same one.
///
/// What is warned of is so. Not every such entry is found: one that several earlier entries cover only together for one
/// board type is not, nor one behind many others of its board type and address.
void warnOfShadows(const KvTCheckedArchive& checked, FindingList& findings);
