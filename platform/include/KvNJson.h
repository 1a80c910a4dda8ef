#pragma once

#include "KvCString.h"
#include "KvPlatformExport.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

/// The maker's JSON library. Strict RFC 8259 (a leading UTF-8 byte order mark is skipped); objects keep the order of
/// their keys, of a repeated key the first place and the last value; unsigned numbers are told from signed and
/// floating ones.
namespace KvNJson {

class json;

/// A read-only look at one value inside a `json`. It holds no memory and is valid as long as the `json` that it looks
/// into is neither changed, moved from, nor destroyed. Asking a value for what it is not (the text of a number, a
/// member of an array) is a programming error, and gives false, 0, the empty text, or a view of nothing.
class KV_PLATFORM_API jsonView {
public:
    /// Looks at nothing; is_valid() is false, and every test of a type is false.
    jsonView() noexcept = default;

    /// True when this looks at a value, a null included.
    [[nodiscard]] bool is_valid() const noexcept { return node_ != nullptr; }
    /// Tests of the value's type.
    /// @{
    [[nodiscard]] bool is_null() const noexcept;
    [[nodiscard]] bool is_boolean() const noexcept;
    [[nodiscard]] bool is_string() const noexcept;
    [[nodiscard]] bool is_array() const noexcept;
    [[nodiscard]] bool is_object() const noexcept;
    [[nodiscard]] bool is_number() const noexcept;
    /// @}
    /// Written without sign, fraction and exponent, and at most 2^64-1 (`-0` counts too).
    [[nodiscard]] bool is_number_unsigned() const noexcept;

    /// The value of true or false.
    [[nodiscard]] bool get_boolean() const noexcept;
    /// The text's bytes (UTF-8); valid as long as this view.
    [[nodiscard]] std::string_view get_string() const noexcept;
    /// The value of an unsigned number.
    [[nodiscard]] std::uint64_t get_unsigned() const noexcept;
    /// The value of any number, rounded to a double.
    [[nodiscard]] double get_double() const noexcept;

    /// Number of items of an array or members of an object; 0 of anything else.
    [[nodiscard]] std::size_t size() const noexcept;
    /// Item `index` of an array, or value of member `index` of an object in key order; `index` is below size().
    [[nodiscard]] jsonView at(std::size_t index) const noexcept;
    /// Key of member `index` of an object.
    [[nodiscard]] std::string_view key(std::size_t index) const noexcept;
    /// The value of member `key`; looks at nothing when this is no object or has no such member.
    [[nodiscard]] jsonView find(std::string_view key) const noexcept;
    /// True when this is an object that has such a member.
    [[nodiscard]] bool contains(std::string_view key) const noexcept { return find(key).is_valid(); }

private:
    friend class json;
    explicit jsonView(const void* node) noexcept : node_(node) {}
    const void* node_ = nullptr;
};

/// What dump() does with bytes of a text that are not UTF-8: `ignore` leaves them out, `replace` writes U+FFFD for each
/// longest beginning of a character, and so does `strict`, which has no way to refuse. Parsed texts have no such bytes.
enum class error_handler_t : std::uint32_t { strict = 0, replace = 1, ignore = 2 };

/// An owned JSON value. Copying copies the whole value; moving is cheap and leaves a null behind. A value taken out of
/// a parsed document shares the document's memory block, which lives until the last such value is gone and only grows
/// when such values are changed. Values of one document are changed by one thread at a time.
class KV_PLATFORM_API json {
public:
    /// null
    json() noexcept;
    /// true or false
    json(bool value) noexcept;
    /// An unsigned number.
    /// @{
    json(std::uint32_t value) noexcept;
    json(std::uint64_t value) noexcept;
    /// @}
    /// A number that is not finite, which JSON does not have, is dumped as null.
    json(double value) noexcept;
    /// Null counts as the empty text.
    json(const char* text);
    /// A copy of the text.
    /// @{
    json(std::string_view text);
    json(const KvCString& text);
    /// @}
    /// Copies and moves; see above.
    /// @{
    json(const json& other);
    json(json&& other) noexcept;
    json& operator=(const json& other);
    json& operator=(json&& other) noexcept;
    /// @}
    ~json();

    /// Reads `stream` from its position to its end. Anything but one JSON text of nesting at most 256 gives a value
    /// whose is_invalid() is true. The stream stays open.
    [[nodiscard]] static json parse(std::FILE* stream);
    /// The same for a text in memory. `reason`, when given, receives a sentence and `offset` the byte offset of the
    /// fault; both stay as they are when the text is valid.
    [[nodiscard]] static json parse(std::string_view text, std::string* reason = nullptr,
                                    std::size_t* offset = nullptr);

    /// True of the result of a parse that failed (which looks like null otherwise).
    [[nodiscard]] bool is_invalid() const noexcept { return invalid_; }

    /// A look at this value.
    [[nodiscard]] jsonView view() const noexcept;

    /// Moves item `index` out of this array, or the value of member `index` out of this object, leaving null in its
    /// place. An index that does not exist gives null.
    [[nodiscard]] json takeItem(std::size_t index);
    /// Sets member `key` of this object (anything else becomes an empty object first): replaces the value of an
    /// existing key in its place, otherwise adds the key at the end.
    void set(std::string_view key, json value);
    /// Adds an item to the end of this array (anything else becomes an empty array first).
    void append(json value);
    /// An empty object.
    [[nodiscard]] static json makeObject();
    /// An empty array.
    [[nodiscard]] static json makeArray();

    /// The value as text. With `indent` >= 0 every member and item on its own line, `indent` times `indentChar` deeper
    /// than its parent, `"key": value`, and `{}` and `[]` when empty; with a negative `indent` on one line without
    /// blanks. `ensureAscii` writes every character above 0x7F as `\uxxxx`.
    [[nodiscard]] std::string dump(int indent = -1, char indentChar = ' ', bool ensureAscii = false,
                                   error_handler_t onInvalidUtf8 = error_handler_t::strict) const;

private:
    struct Factory;
    void swap(json& other) noexcept;

    static constexpr std::size_t nodeSize = 24;
    alignas(8) unsigned char node_[nodeSize]{};
    /// The memory that the value lives in; null when it has memory of its own.
    std::shared_ptr<void> document_;
    bool invalid_ = false;
};

} // namespace KvNJson
