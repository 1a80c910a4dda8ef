#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// UTF-8 to wide text; empty if `text` is not well-formed.
[[nodiscard]] std::wstring wideOf(const std::string& text);

/// Wide text to UTF-8; empty if `text` is not well-formed.
[[nodiscard]] std::string utf8Of(const std::wstring& text);

/// `text` as a terminal may show it: control characters other than line feed, carriage return and tab, and U+0080 to
/// U+009F, also as bytes of their own, are replaced by \xHH; characters that turn the direction of a text or take no
/// place by \u{HHHH}.
[[nodiscard]] std::string visibleOnTerminal(const std::string& text);

/// The same for a text of several lines: carriage returns, and bytes that belong to no character, are replaced, too.
[[nodiscard]] std::string visibleInLines(const std::string& text);

/// The same in one line: line feeds and tabs are replaced, too.
[[nodiscard]] std::string visibleInLine(const std::string& text);

/// The beginning of a text.
struct Beginning {
    /// As of visibleInLine().
    std::string shown;
    /// It is not all of the text.
    bool isCut = false;
    /// The number of characters of the whole text; a byte that belongs to none counts as one.
    std::size_t characterCount = 0;
};

/// The beginning of `text` that takes at most `limit` columns. A character that takes no column counts as one: the
/// beginning is not longer than `limit` characters either.
[[nodiscard]] Beginning beginningOf(const std::string& text, std::size_t limit);

/// The number of columns that `text` (UTF-8, as of visibleInLine()) takes on a terminal: wide characters take two,
/// combining marks none, all others one.
[[nodiscard]] std::size_t columnsOf(const std::string& text);

/// "1 item", "2 items".
[[nodiscard]] inline std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}
