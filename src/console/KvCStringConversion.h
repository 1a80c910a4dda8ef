#pragma once

#include "KvCString.h"

#include <string>

/// UTF-8 to wide text; empty when `text` is not well-formed UTF-8.
[[nodiscard]] std::wstring toWide(const KvCString& text);

/// Wide text to UTF-8; empty when `text` is not well-formed.
[[nodiscard]] KvCString toUtf8(const std::wstring& text);
