#include "JsonDocument.h"

#include "SystemFiles.h"

#include <algorithm>
#include <cstddef>

namespace {

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

std::string lineAndColumn(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, std::min(offset, text.size()));
    const std::size_t lineBegin = before.rfind('\n') + 1;
    const std::string_view line = before.substr(lineBegin);
    return "line " + std::to_string(std::count(before.begin(), before.end(), '\n') + 1) + ", column " +
           std::to_string(std::count_if(line.begin(), line.end(), beginsCharacter) + 1);
}

} // namespace

bool fitsDocument(std::FILE& file, std::string& reason) {
    constexpr unsigned mebibyteShift = 20;
    const bool fits = SystemFiles::sizeOf(file) <= largestDocument;
    if (!fits) {
        reason = "is larger than " + std::to_string(largestDocument >> mebibyteShift) + " MiB";
    }
    return fits;
}

KvNJson::json parseDocument(std::string_view text, std::string& reason) {
    std::string sentence;
    std::size_t offset = 0;
    KvNJson::json document = KvNJson::json::parse(text, &sentence, &offset);
    if (document.is_invalid()) {
        reason = lineAndColumn(text, offset) + ": " + sentence;
    }
    return document;
}
