#pragma once

#include "TextConversion.h"
#include "WideFormat.h"

#include <string>

// Narrow texts in the library's messages. Each system puts them there in its own way.

/// `narrow`, which is UTF-8, as it stands in a message.
[[nodiscard]] inline std::wstring inMessage(const std::string& narrow) {
    if (decodesNarrowText()) {
        return utf8ToWide(narrow.c_str());
    }
    std::wstring message;
    for (const char byte : narrow) {
        message += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    }
    return message;
}

/// The bytes of a message in which everything beyond ASCII comes from narrow texts that are UTF-8.
[[nodiscard]] inline std::string bytesOf(const std::wstring& message) {
    if (decodesNarrowText()) {
        return wideToUtf8(message.c_str());
    }
    std::string bytes;
    for (const wchar_t character : message) {
        bytes += static_cast<char>(static_cast<unsigned char>(character));
    }
    return bytes;
}
