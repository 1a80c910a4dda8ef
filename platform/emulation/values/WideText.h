#pragma once

#include <string>
#include <string_view>

/// `text` in UTF-8. Surrogate pairs are joined whatever the width of a wide character; what is no character becomes
/// U+FFFD.
[[nodiscard]] std::string utf8OfWide(std::wstring_view text);
