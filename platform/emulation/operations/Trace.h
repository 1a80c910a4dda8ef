#pragma once

#include "KvNJson.h"

/// The record of calls that the environment variable KV_TRACE asks for: a file to which one JSON line is appended for
/// each call.
namespace Trace {

/// False when memory is exhausted, too: the call's line is lost then.
[[nodiscard]] bool isWanted() noexcept;
/// A line that cannot be written is lost; the first time in a process the reason goes to standard error.
void append(const KvNJson::json& line);

} // namespace Trace
