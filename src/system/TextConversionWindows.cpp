#include "TextConversion.h"

#include <cwctype>
#include <windows.h>

static_assert(CP_UTF8 == 65001 && MB_ERR_INVALID_CHARS == 8 && WC_ERR_INVALID_CHARS == 128);

std::wstring utf8ToWide(const char* text) {
    const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, nullptr, 0);
    if (size <= 0) {
        return {};
    }
    std::wstring result(static_cast<std::size_t>(size), L'\0');
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, result.data(), size) != size) {
        return {};
    }
    result.pop_back(); // the terminating zero
    return result;
}

std::string wideToUtf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0) {
        return {};
    }
    std::string result(static_cast<std::size_t>(size), '\0');
    if (WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, -1, result.data(), size, nullptr, nullptr) != size) {
        return {};
    }
    result.pop_back(); // the terminating zero
    return result;
}

bool isLetter(wchar_t character) {
    return std::iswalpha(character) != 0;
}
