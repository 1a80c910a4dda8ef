#pragma once

#include <string>

/// UTF-8 to wide text, up to the first zero byte; empty when `text` is not well-formed.
[[nodiscard]] std::wstring utf8ToWide(const char* text);

/// Wide text to UTF-8, up to the first zero character; empty when `text` is not well-formed.
[[nodiscard]] std::string wideToUtf8(const wchar_t* text);

/// True for a letter of any alphabet.
[[nodiscard]] bool isLetter(wchar_t character);
