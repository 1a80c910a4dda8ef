#include "Texts.h"

#include <boost/locale/encoding_utf.hpp>

namespace conv = boost::locale::conv;

std::wstring wideOf(const std::string& text) {
    try {
        return conv::utf_to_utf<wchar_t>(text, conv::stop);
    } catch (const conv::conversion_error&) {
        return {};
    }
}

std::string utf8Of(const std::wstring& text) {
    try {
        return conv::utf_to_utf<char>(text, conv::stop);
    } catch (const conv::conversion_error&) {
        return {};
    }
}
