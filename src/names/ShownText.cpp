#include "ShownText.h"

#include "FileNames.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace {

std::string shownText(std::string_view text) {
    constexpr std::size_t longestWhole = 255;
    constexpr std::size_t longestBeginning = 64;
    if (text.size() <= longestWhole && isUtf8(text) && hiddenCharacterOf(text).empty()) {
        return std::string(text);
    }
    std::string shown;
    for (const char character : text.substr(0, longestBeginning)) {
        std::array<char, 8> escaped{character};
        if (character < ' ' || character > '~') {
            std::snprintf(escaped.data(), escaped.size(), "\\x%02X",
                          static_cast<unsigned>(static_cast<std::uint8_t>(character)));
        }
        shown += escaped.data();
    }
    return shown.append(text.size() > longestBeginning ? "..." : "");
}

} // namespace

std::string shownInQuotes(std::string_view text) {
    std::string quoted("'");
    return quoted.append(shownText(text)).append("'");
}
