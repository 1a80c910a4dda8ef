#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Numbers lines and chains them: each begins with its number and the SHA-256 of the line before, so that a line that
/// was changed, added or removed shows.
class KvCLineChain {
public:
    /// Adds the next line to `text`: `record`, a JSON object on one line with its line end, with the two members in
    /// front.
    void addTo(std::string& text, std::string_view record);
    /// True if `line`, without its line end, is the next one.
    [[nodiscard]] bool continuesWith(std::string_view line);

private:
    [[nodiscard]] std::string beginning() const;
    void take(std::string_view line);

    std::uint64_t number_ = 0;
    /// Of the last line; of the first one zeros.
    std::string digest_ = std::string(64, '0');
};

/// The lines of the file of a run that are to be trusted.
struct KvTJournalText {
    /// Without line ends.
    std::vector<std::string_view> lines;
    /// Why the rest is not to be trusted; empty if there is none. A last line that is cut is left out without a fault:
    /// the process, or its computer, has ended while it was written.
    std::string fault;
};

/// `text` must outlive the result.
[[nodiscard]] KvTJournalText journalTextOf(std::string_view text);
