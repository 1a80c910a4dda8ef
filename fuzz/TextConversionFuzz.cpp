// UTF-8 to wide text and back, and into messages, held against a decoder and an encoder of its own.

#include "Property.h"
#include "TextConversion.h"
#include "WideFormat.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

using CodePoints = std::vector<char32_t>;

constexpr char32_t firstSurrogate = 0xD800;
constexpr char32_t firstLowSurrogate = 0xDC00;
constexpr char32_t lastSurrogate = 0xDFFF;
constexpr char32_t firstOfPair = 0x10000;
constexpr char32_t lastCodePoint = 0x10FFFF;

bool isSurrogate(char32_t unit) {
    return unit >= firstSurrogate && unit <= lastSurrogate;
}

/// A lead byte: how many bytes it begins, and the code points that need as many.
struct Lead {
    std::size_t length;
    char32_t bits;
    char32_t lowest;
};

std::optional<Lead> leadOf(unsigned char byte) {
    if (byte < 0x80) {
        return Lead{1, byte, 0};
    }
    if (byte >= 0xC0 && byte < 0xE0) {
        return Lead{2, byte & 0x1FU, 0x80};
    }
    if (byte >= 0xE0 && byte < 0xF0) {
        return Lead{3, byte & 0x0FU, 0x800};
    }
    return byte >= 0xF0 && byte < 0xF8 ? std::optional(Lead{4, byte & 0x07U, 0x10000}) : std::nullopt;
}

/// The character at `position`, which is moved behind it; nothing when the bytes there are not well-formed.
std::optional<char32_t> takeCharacter(const std::string& text, std::size_t& position) {
    const auto lead = leadOf(static_cast<unsigned char>(text[position]));
    if (!lead || lead->length > text.size() - position) {
        return std::nullopt;
    }
    char32_t codePoint = lead->bits;
    for (std::size_t index = 1; index < lead->length; ++index) {
        const auto byte = static_cast<unsigned char>(text[position + index]);
        if ((byte & 0xC0U) != 0x80U) {
            return std::nullopt;
        }
        codePoint = codePoint << 6U | (byte & 0x3FU);
    }
    if (codePoint < lead->lowest || codePoint > lastCodePoint || isSurrogate(codePoint)) {
        return std::nullopt;
    }
    position += lead->length;
    return codePoint;
}

/// Nothing when the text is not well-formed.
std::optional<CodePoints> decodeUtf8(const std::string& text) {
    CodePoints result;
    for (std::size_t position = 0; position < text.size();) {
        const auto codePoint = takeCharacter(text, position);
        if (!codePoint) {
            return std::nullopt;
        }
        result.push_back(*codePoint);
    }
    return result;
}

/// The text as it goes into a message: what is not decoded goes byte by byte.
std::wstring messageOf(const std::string& text) {
    std::wstring message;
    for (std::size_t position = 0; position < text.size();) {
        const auto codePoint = decodesNarrowText() ? takeCharacter(text, position) : std::nullopt;
        message += codePoint ? static_cast<wchar_t>(*codePoint)
                             : static_cast<wchar_t>(static_cast<unsigned char>(text[position++]));
    }
    return message;
}

/// Formats into `result`, which is long enough.
int format(std::wstring& result, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = formatIntoBuffer(result.data(), result.size(), format, arguments);
    va_end(arguments);
    return length;
}

/// Nothing when the text is not well-formed. Units of 16 bits make pairs.
std::optional<CodePoints> decodeWide(const std::wstring& text) {
    CodePoints result;
    for (std::size_t position = 0; position < text.size(); ++position) {
        auto codePoint = static_cast<char32_t>(text[position]);
        if (sizeof(wchar_t) == 2 && codePoint >= firstSurrogate && codePoint < firstLowSurrogate &&
            position + 1 < text.size()) {
            const auto low = static_cast<char32_t>(text[position + 1]);
            if (low >= firstLowSurrogate && low <= lastSurrogate) {
                codePoint = firstOfPair + ((codePoint - firstSurrogate) << 10U) + (low - firstLowSurrogate);
                ++position;
            }
        }
        if (codePoint > lastCodePoint || isSurrogate(codePoint)) {
            return std::nullopt;
        }
        result.push_back(codePoint);
    }
    return result;
}

void checkNarrow(const std::string& text) {
    const auto expected = decodeUtf8(text);
    const std::wstring wide = utf8ToWide(text.c_str());
    require(wide.empty() == (!expected || expected->empty()), "Well-formed UTF-8 is converted, other bytes are not.");
    if (expected) {
        require(decodeWide(wide) == expected, "The wide text has the characters of the UTF-8 text.");
        require(wideToUtf8(wide.c_str()) == text, "UTF-8 that became wide comes back as it was.");
    }
}

void checkMessage(const std::string& text) {
    std::wstring message(text.size() + 1, L'~');
    const int length = format(message, L"%hs", text.c_str());
    require(length == static_cast<int>(text.size()), "A narrow text counts its bytes.");
    message.resize(message.find(L'\0'));
    require(message == messageOf(text), "A narrow text stands in a message character by character.");
}

void checkWide(const std::wstring& text) {
    const auto expected = decodeWide(text);
    const std::string narrow = wideToUtf8(text.c_str());
    require(narrow.empty() == (!expected || expected->empty()), "Well-formed wide text is converted, other is not.");
    if (expected) {
        require(decodeUtf8(narrow) == expected, "The UTF-8 text has the characters of the wide text.");
        require(utf8ToWide(narrow.c_str()) == text, "Wide text that became UTF-8 comes back as it was.");
    }
}

/// The bytes as wide characters, up to the first zero character. Most numbers are no characters at all: `mask` takes
/// them into a range where many are.
std::wstring wideText(const std::uint8_t* data, std::size_t size, std::uint32_t mask) {
    std::wstring text;
    for (std::size_t position = 0; position + sizeof(wchar_t) <= size; position += sizeof(wchar_t)) {
        wchar_t character = 0;
        std::memcpy(&character, data + position, sizeof character);
        character = static_cast<wchar_t>(static_cast<std::uint32_t>(character) & mask);
        if (character == 0) {
            break;
        }
        text += character;
    }
    return text;
}

void checkLetter(std::uint8_t byte) {
    const bool isLatin = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
    require(byte >= 0x80 || isLetter(static_cast<wchar_t>(byte)) == isLatin,
            "The letters of ASCII are the Latin ones.");
}

} // namespace

/// The bytes as a narrow and as a wide text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string all(reinterpret_cast<const char*>(data), size);
    checkNarrow(all.substr(0, all.find('\0')));
    checkMessage(all.substr(0, all.find('\0')));
    checkWide(wideText(data, size, 0xFFFFFFFF));
    checkWide(wideText(data, size, 0x1FFFFF));
    checkWide(wideText(data, size, 0xFFFF));
    if (size > 0) {
        checkLetter(*data);
    }
    return 0;
}
