#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

/// Narrow character string; the bytes are UTF-8 by convention and are never checked here. A value type; distinct
/// objects may be used from distinct threads.
class KvCString {
public:
    KvCString() = default;
    /// A copy of a zero-terminated text; null counts as the empty text.
    KvCString(const char* text) : bytes_(text != nullptr ? text : "") {}
    /// A copy of `text`, embedded zero bytes included.
    explicit KvCString(std::string_view text) : bytes_(text) {}
    /// Takes over `text`.
    explicit KvCString(std::string text) noexcept : bytes_(std::move(text)) {}
    /// The decimal text of `number`.
    explicit KvCString(std::uint32_t number) : bytes_(std::to_string(number)) {}

    /// The bytes, zero-terminated; valid until the next change of this string.
    [[nodiscard]] const char* c_str() const noexcept { return bytes_.c_str(); }
    /// The bytes, embedded zero bytes included; valid until the next change of this string.
    [[nodiscard]] std::string_view view() const noexcept { return bytes_; }
    /// Number of bytes (not of characters).
    [[nodiscard]] std::size_t length() const noexcept { return bytes_.size(); }
    /// True of the text without bytes.
    [[nodiscard]] bool isEmpty() const noexcept { return bytes_.empty(); }

    /// Appends the bytes of `other`, which is not null.
    /// @{
    KvCString& operator+=(const KvCString& other) {
        bytes_ += other.bytes_;
        return *this;
    }
    KvCString& operator+=(std::string_view other) {
        bytes_ += other;
        return *this;
    }
    KvCString& operator+=(const char* other) {
        bytes_ += other;
        return *this;
    }
    /// @}

    /// Byte by byte, case-sensitive.
    /// @{
    friend bool operator==(const KvCString& a, const KvCString& b) noexcept { return a.bytes_ == b.bytes_; }
    friend bool operator==(const KvCString& a, std::string_view b) noexcept { return a.bytes_ == b; }
    friend bool operator==(const KvCString& a, const char* b) noexcept { return a.bytes_ == b; }
    /// @}

private:
    std::string bytes_;
};
