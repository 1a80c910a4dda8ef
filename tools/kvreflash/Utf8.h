#pragma once

#include <string>

/// UTF-8 to wide text; empty if `text` is not well-formed.
[[nodiscard]] std::wstring wideOf(const std::string& text);

/// Wide text to UTF-8; empty if `text` is not well-formed.
[[nodiscard]] std::string utf8Of(const std::wstring& text);
