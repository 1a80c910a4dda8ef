#pragma once

#include <string>

/// `text` as a terminal may show it: control characters other than line feed, carriage return and tab, and U+0080 to
/// U+009F, also as bytes of their own, are replaced by \xHH; characters that turn the direction of a text or take no
/// place by \u{HHHH}.
[[nodiscard]] std::string visibleOnTerminal(const std::string& text);

/// The same in one line: line feeds, carriage returns and tabs are replaced, too.
[[nodiscard]] std::string visibleInLine(const std::string& text);
