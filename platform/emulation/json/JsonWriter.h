#pragma once

#include <boost/json/value.hpp>

#include <cstddef>
#include <string>

/// How JSON text is laid out.
struct JsonLayout {
    /// False: everything on one line, without blanks. True: a line for every member and item.
    bool hasLines = false;
    /// With lines: each level of nesting is so many `indentChar` deeper.
    std::size_t indent = 0;
    char indentChar = ' ';
    /// Characters above 0x7F as escapes.
    bool isAscii = false;
    /// Bytes that are not UTF-8 are left out; otherwise each ill-formed sequence becomes U+FFFD.
    bool dropsIllFormed = false;
};

/// Appends `value` as JSON text to `text`. A number that is not finite, which JSON cannot say, is written as null.
void appendJson(std::string& text, const boost::json::value& value, const JsonLayout& layout);
