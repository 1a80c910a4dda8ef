#pragma once

#include "KvCString.h"
#include "KvCVersion.h"

#include <cstddef>
#include <functional>
#include <vector>

class KvCConsoleWriter;

/// The cells (UTF-8) of a row. Rows may differ in length.
using KvTTableRow = std::vector<KvCString>;
/// The first row is the heading.
using KvTTable = std::vector<KvTTableRow>;

/// Shown where a value is not known.
inline constexpr const char* unknownCell = "---";

/// The version's text; unknownCell for the zero version.
[[nodiscard]] KvCString versionCell(const KvCVersion& version);

/// Prints a table: columns as wide as their longest cell in bytes, " | " between them, a rule below the heading.
/// Missing cells are blank.
void printTable(const KvCConsoleWriter& writer, const KvTTable& rows);

/// Prints a table of `rowCount` rows that is not kept in memory: `rowAt` is asked twice for each, the first time for
/// the widths.
void printTable(const KvCConsoleWriter& writer, std::size_t rowCount,
                const std::function<KvTTableRow(std::size_t)>& rowAt);
