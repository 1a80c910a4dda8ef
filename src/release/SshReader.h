#pragma once

#include "Crypto.h"

#include <cstdint>
#include <optional>
#include <string_view>

/// Reads the fields of an SSH message (RFC 4251, section 5) one after the other. A read beyond the end gives nothing,
/// and nothing after it is read.
class KvCSshReader {
public:
    /// `bytes` must outlive the object and what it returns.
    explicit KvCSshReader(KvTBytes bytes) : rest_(bytes) {}

    /// True if `text` comes next; it is read.
    [[nodiscard]] bool takes(std::string_view text);
    [[nodiscard]] std::optional<std::uint32_t> number();
    /// A field with its length in front.
    [[nodiscard]] std::optional<KvTBytes> string();
    [[nodiscard]] std::optional<std::string_view> text();
    /// The bytes of a positive number, most significant first, written as short as it can be: without the zero byte
    /// that keeps it positive.
    [[nodiscard]] std::optional<KvTBytes> positiveNumber();
    [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }

private:
    KvTBytes rest_;
};
