#pragma once

#include "KvCString.h"
#include "KvCVersion.h"

#include <vector>

class KvCConsoleWriter;

/// Rows of cells (UTF-8); the first row is the heading. Rows may differ in length.
using KvTTable = std::vector<std::vector<KvCString>>;

/// Shown where a value is not known.
inline constexpr const char* unknownCell = "---";

/// The version's text; unknownCell for the zero version.
[[nodiscard]] KvCString versionCell(const KvCVersion& version);

/// Prints a table: columns as wide as their longest cell in bytes, " | " between them, a rule below the heading.
/// Missing cells are blank.
void printTable(const KvCConsoleWriter& writer, const KvTTable& rows);
