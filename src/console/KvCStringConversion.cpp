#include "KvCStringConversion.h"

#include "TextConversion.h"

std::wstring toWide(const KvCString& text) {
    return utf8ToWide(text.c_str());
}

KvCString toUtf8(const std::wstring& text) {
    return KvCString(wideToUtf8(text.c_str()));
}
