#pragma once

#include "KvCTargetInventory.h"
#include "KvTOptions.h"
#include "KvTUpdateElement.h"
#include "TableLayout.h"

class KvCConsoleWriter;

/// Prints the table of the elements; with the verbose option one for each unit.
void printElementTable(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                       const KvCTargetInventory& inventory);

/// Adds a cell with the element's status marker if it has one ("[INVALID]", "[INACTIVE]").
void addStatusMarker(KvTTableRow& row, const KvTUpdateElement& element);
