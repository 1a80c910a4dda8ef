#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A line of a file of a trust folder.
struct KvTTrustLine {
    /// Counts from 1, all lines of the file.
    std::size_t number = 0;
    /// Without its end, and without blanks around it.
    std::string_view text;
    /// It has a control character: another program may see the end of a line there.
    bool hasControl = false;

    /// "line 3: " and the reason.
    [[nodiscard]] std::string refusedFor(const std::string& reason) const {
        return "line " + std::to_string(number) + ": " + reason;
    }
};

/// The lines of `text` but for empty ones and comments, which begin with "#". A line with a control character is never
/// left out.
[[nodiscard]] std::vector<KvTTrustLine> trustLinesOf(std::string_view text);
