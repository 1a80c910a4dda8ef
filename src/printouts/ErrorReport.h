#pragma once

#include "KvCErrorManager.h"
#include "KvTOptions.h"

#include <cstdint>

class KvCConsoleWriter;

/// The indentation of the session's error reports in columns.
inline constexpr std::uint32_t reportIndentation = 7;

/// Prints every entry of `list`: a header line indented by `indentation` columns, and the error text below it, wrapped
/// to 80 columns. With the verbose option the header tells time, module and function as far as they are known.
void printErrorReport(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                      const KvCErrorListPool& list, std::uint32_t indentation);

/// Prints the errors that a session leaves in `list`, under a heading of their own. False when there are none.
bool printReportedErrors(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                         const KvCErrorListPool& list);
