#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

class JsonOutline;

enum class KvEJsonKind : std::uint8_t { nothing, null, boolean, number, text, array, object };

/// A look at one value of an outline, which must outlive it. Asking a value for what it is not gives the empty text, 0,
/// or a look at nothing; of nothing, too.
class OutlineValue {
public:
    /// Looks at nothing.
    OutlineValue() = default;

    [[nodiscard]] bool isValid() const { return outline_ != nullptr; }
    [[nodiscard]] KvEJsonKind kind() const;
    /// Offset of the value's first byte.
    [[nodiscard]] std::size_t offset() const;
    /// Offset of the key's first byte, its quotation mark; of anything but a member that of the value.
    [[nodiscard]] std::size_t keyOffset() const;
    /// Key of a member, without escapes.
    [[nodiscard]] std::string_view key() const;
    /// Content of a text, without escapes, or a number as it is written.
    [[nodiscard]] std::string_view text() const;
    /// Number of items or members; members of one key count each.
    [[nodiscard]] std::size_t size() const;
    [[nodiscard]] OutlineValue at(std::size_t index) const;
    /// The last member of this key, which is the one that counts.
    [[nodiscard]] OutlineValue find(std::string_view key) const;
    /// Where the value is: `$.files[3].boards[0].id`; `$` of nothing.
    [[nodiscard]] std::string path() const;

private:
    friend class JsonOutline;
    OutlineValue(const JsonOutline& outline, std::uint32_t index) : outline_(&outline), index_(index) {}

    const JsonOutline* outline_ = nullptr;
    std::uint32_t index_ = 0;
};

/// Which values a JSON text holds and where they stand in it; of a repeated key every member.
class JsonOutline {
public:
    /// `text` must outlive the outline. A leading UTF-8 byte order mark is skipped. A text that is no JSON, or of 4 GiB
    /// and more, gives an outline without values.
    explicit JsonOutline(std::string_view text);
    JsonOutline(const JsonOutline&) = delete;
    JsonOutline& operator=(const JsonOutline&) = delete;
    ~JsonOutline() = default;

    /// The document's value; nothing when there are no values.
    [[nodiscard]] OutlineValue root() const { return value(0); }
    /// Number of values in the whole document.
    [[nodiscard]] std::size_t size() const { return records_.size(); }
    /// Value `index` in the order of the text; nothing behind the last one.
    [[nodiscard]] OutlineValue value(std::size_t index) const;

private:
    friend class OutlineValue;
    class Builder;

    struct Record {
        std::string_view key;
        std::string_view text;
        std::uint32_t offset = 0;
        std::uint32_t keyOffset = 0;
        /// Index of the array or object that the value is in, and which one of its values it is.
        std::uint32_t parent = 0;
        std::uint32_t position = 0;
        /// The values inside are listed one behind the other in children_.
        std::uint32_t firstChild = 0;
        std::uint32_t childCount = 0;
        KvEJsonKind kind = KvEJsonKind::nothing;
    };

    [[nodiscard]] const Record& recordOf(const OutlineValue& value) const { return records_[value.index_]; }

    /// In the order of the text: the document's value is the first one.
    std::vector<Record> records_;
    std::vector<std::uint32_t> children_;
    /// Texts that are written with escapes; the others are looked at in the document.
    std::deque<std::string> decoded_;
};
