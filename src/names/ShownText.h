#pragma once

#include <string>
#include <string_view>

/// A text of a stranger in single quotes, as messages may show it: as it is if it is short UTF-8 without characters
/// that hide what they are, otherwise its beginning with all but printable ASCII as "\xHH".
[[nodiscard]] std::string shownInQuotes(std::string_view text);
