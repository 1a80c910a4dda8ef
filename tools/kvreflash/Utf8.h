#pragma once

#include <boost/locale/encoding_utf.hpp>

#include <string>

/// UTF-8 to wide text; empty if `text` is not well-formed.
[[nodiscard]] inline std::wstring wideOf(const std::string& text) {
    try {
        return boost::locale::conv::utf_to_utf<wchar_t>(text, boost::locale::conv::stop);
    } catch (const boost::locale::conv::conversion_error&) {
        return {};
    }
}

/// Wide text to UTF-8; empty if `text` is not well-formed.
[[nodiscard]] inline std::string utf8Of(const std::wstring& text) {
    try {
        return boost::locale::conv::utf_to_utf<char>(text, boost::locale::conv::stop);
    } catch (const boost::locale::conv::conversion_error&) {
        return {};
    }
}
