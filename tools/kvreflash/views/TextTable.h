#pragma once

#include <string>
#include <vector>

/// Rows of cells (UTF-8); the first row is the heading. Rows may differ in length. Each cell takes one line, whatever
/// it holds.
using KvTTextTable = std::vector<std::vector<std::string>>;

/// The table with columns as wide as a terminal shows their widest cell, " | " between them, and a rule below the
/// heading.
[[nodiscard]] std::string tableText(KvTTextTable rows);
