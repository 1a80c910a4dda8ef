#include "TrustLines.h"

#include <algorithm>

namespace {

/// But for the tab, which is a blank.
bool isControl(char character) {
    constexpr char deletion = 0x7F;
    return character == deletion || (character >= 0 && character < ' ' && character != '\t');
}

/// Without blanks around it and the carriage return that may end it.
std::string_view trimmed(std::string_view line) {
    constexpr std::string_view blanks = " \t";
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    line.remove_prefix(std::min(line.size(), line.find_first_not_of(blanks)));
    return line.substr(0, line.find_last_not_of(blanks) + 1);
}

} // namespace

std::vector<KvTTrustLine> trustLinesOf(std::string_view text) {
    std::vector<KvTTrustLine> lines;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view whole = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), whole.size() + 1));
        const std::string_view line = trimmed(whole);
        const bool hasControl = std::any_of(line.begin(), line.end(), isControl);
        if (hasControl || (!line.empty() && !line.starts_with('#'))) {
            lines.push_back({.number = number, .text = line, .hasControl = hasControl});
        }
    }
    return lines;
}
