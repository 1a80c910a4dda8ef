#pragma once

#include "JsonOutline.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class KvESeverity : std::uint8_t {
    /// The archive is refused.
    error,
    /// The archive is read, but it may not do what is expected.
    warning
};

/// Something to be said about an archive.
struct KvTFinding {
    KvESeverity severity = KvESeverity::error;
    /// What kind of finding it is, for programs; docs/archive-check.md lists them.
    std::string_view code;
    /// Offset in the description.
    std::size_t offset = 0;
    /// Place in the description, from 1; columns count characters.
    std::size_t line = 1;
    std::size_t column = 1;
    /// The JSON path of the value concerned.
    std::string path = "$";
    /// One sentence: what is the matter.
    std::string message;
    /// What to do.
    std::string hint;
};

/// Collects findings.
class FindingList {
public:
    /// Adds a finding on a value. `code` must outlive the list, as literals do.
    void add(KvESeverity severity, std::string_view code, OutlineValue value, std::string message, std::string hint);
    /// Adds a finding on the place at `offset`, where no value is known.
    void addAt(KvESeverity severity, std::string_view code, std::size_t offset, std::string message, std::string hint);
    /// Adds a warning on a value.
    void warn(std::string_view code, OutlineValue value, std::string message, std::string hint);
    /// Adds a warning on a member, at its key.
    void warnAtKey(std::string_view code, OutlineValue member, std::string message, std::string hint);

    /// The findings in the order of the description, whose text is `text`; findings on one place as they were added.
    /// The list is empty then.
    [[nodiscard]] std::vector<KvTFinding> takeInOrder(std::string_view text);

private:
    std::vector<KvTFinding> findings_;
};

/// `text` in quotation marks.
[[nodiscard]] std::string inQuotes(std::string_view text);
