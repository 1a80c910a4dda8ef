#pragma once

#include "KvCString.h"

#include <vector>

class KvCConsoleWriter;

/// Rows of cells (UTF-8); the first row is the heading. Rows may differ in length.
using KvTTable = std::vector<std::vector<KvCString>>;

/// Prints a table: columns as wide as their longest cell in bytes, " | " between them, a rule below the heading.
/// Missing cells are blank.
void printTable(const KvCConsoleWriter& writer, const KvTTable& rows);
