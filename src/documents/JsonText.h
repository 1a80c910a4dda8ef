#pragma once

#include "KvNJson.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace KvNReflasher {

/// A JSON value as its text, on one line without blanks. It is made of other values from front to back: members and
/// items are added, and neither looked at nor changed.
class KvCJsonText {
public:
    /// null
    KvCJsonText() : text_("null") {}
    KvCJsonText(bool value) : text_(value ? "true" : "false") {}
    /// An unsigned number.
    /// @{
    KvCJsonText(std::uint32_t value) : text_(std::to_string(value)) {}
    KvCJsonText(std::uint64_t value) : text_(std::to_string(value)) {}
    /// @}
    KvCJsonText(double value) : KvCJsonText(KvNJson::json(value)) {}
    /// A text. Bytes that are not UTF-8 become U+FFFD.
    /// @{
    KvCJsonText(const char* text) : KvCJsonText(std::string_view(text)) {}
    KvCJsonText(std::string_view text);
    /// @}
    explicit KvCJsonText(const KvNJson::json& value);

    [[nodiscard]] static KvCJsonText makeObject() { return bracketed("{}"); }
    [[nodiscard]] static KvCJsonText makeArray() { return bracketed("[]"); }

    /// Adds a member to this object. `key` is new, and needs no escaping.
    /// @{
    void set(std::string_view key, const KvCJsonText& value);
    void set(std::string_view key, std::string_view text);
    void set(std::string_view key, const char* text) { set(key, std::string_view(text)); }
    /// @}
    /// Adds an item to this array.
    void append(const KvCJsonText& value);

    [[nodiscard]] const std::string& text() const { return text_; }
    /// The text with a line end.
    [[nodiscard]] std::string takeLine() &&;

private:
    [[nodiscard]] static KvCJsonText bracketed(const char* brackets);
    void open();
    void openFor(std::string_view key);

    std::string text_;
};

} // namespace KvNReflasher
