#pragma once

#include "TableLayout.h"

#include <string>

/// The table as printTable() prints it, as bytes.
[[nodiscard]] std::string tableText(const KvTTable& table);
