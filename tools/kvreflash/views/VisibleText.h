#pragma once

#include <string>

/// `text` as a terminal may show it: control characters other than line feed, carriage return and tab, and U+0080 to
/// U+009F, also as bytes of their own, are replaced by \xHH.
[[nodiscard]] std::string visibleOnTerminal(const std::string& text);
