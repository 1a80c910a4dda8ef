#pragma once

#include <cstddef>
#include <string>

/// UTF-8 to wide text; empty if `text` is not well-formed.
[[nodiscard]] std::wstring wideOf(const std::string& text);

/// Wide text to UTF-8; empty if `text` is not well-formed.
[[nodiscard]] std::string utf8Of(const std::wstring& text);

/// `text` as a terminal may show it: control characters other than line feed, carriage return and tab, and U+0080 to
/// U+009F, also as bytes of their own, are replaced by \xHH; characters that turn the direction of a text or take no
/// place by \u{HHHH}.
[[nodiscard]] std::string visibleOnTerminal(const std::string& text);

/// The same in one line: line feeds, carriage returns and tabs are replaced, too.
[[nodiscard]] std::string visibleInLine(const std::string& text);

/// "1 item", "2 items".
[[nodiscard]] inline std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}
