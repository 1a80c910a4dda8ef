#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class KvCJsonOutline;

enum class KvEJsonKind : std::uint8_t { nothing, null, boolean, number, text, array, object };

/// A look at one value of an outline, which must outlive it. Asking a value for what it is not gives the empty text, 0,
/// or a look at nothing; of nothing, too.
class KvCOutlineValue {
public:
    /// Looks at nothing.
    KvCOutlineValue() = default;

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
    /// The number, when it is written without sign, fraction and exponent and at most 2^64-1; `-0` counts, too.
    [[nodiscard]] std::optional<std::uint64_t> unsignedNumber() const;
    /// Number of items or members; members of one key count each.
    [[nodiscard]] std::size_t size() const;
    [[nodiscard]] KvCOutlineValue at(std::size_t index) const;
    /// The last member of this key, which is the one that counts.
    [[nodiscard]] KvCOutlineValue find(std::string_view key) const;
    /// Where the value is: `$.files[3].boards[0].id`; `$` of nothing.
    [[nodiscard]] std::string path() const;

private:
    friend class KvCJsonOutline;
    KvCOutlineValue(const KvCJsonOutline& outline, std::uint32_t index) : outline_(&outline), index_(index) {}

    const KvCJsonOutline* outline_ = nullptr;
    std::uint32_t index_ = 0;
};

/// Which values a JSON text holds and where they stand in it; of a repeated key every member.
class KvCJsonOutline {
public:
    /// `text` must outlive the outline. A leading UTF-8 byte order mark is skipped. A text that is no JSON, or of 2 GiB
    /// and more, gives an outline without values.
    explicit KvCJsonOutline(std::string_view text);
    KvCJsonOutline(const KvCJsonOutline&) = delete;
    KvCJsonOutline& operator=(const KvCJsonOutline&) = delete;
    ~KvCJsonOutline() = default;

    /// The document's value; nothing when there are no values.
    [[nodiscard]] KvCOutlineValue root() const {
        return records_.empty() ? KvCOutlineValue() : KvCOutlineValue(*this, 0);
    }

    /// Calls `visit` with every value of the document, in the order of the text.
    template <typename Visit>
    void forEachValue(Visit&& visit) const {
        for (std::size_t index = 0; index < records_.size(); ++index) {
            if (!records_[index].isKey) {
                visit(KvCOutlineValue(*this, static_cast<std::uint32_t>(index)));
            }
        }
    }

private:
    friend class KvCOutlineValue;
    class Builder;

    /// A value, or the key that stands before the value of a member. There may be as many as half of the text's bytes.
    struct Record {
        std::uint32_t offset = 0;
        /// The values of an array or object in children_; or the content of a key, text or number in the document or,
        /// behind the document's end, in decoded_.
        std::uint32_t begin = 0;
        std::uint32_t count = 0;
        /// Index of the array or object that it is in.
        std::uint32_t parent = 0;
        KvEJsonKind kind = KvEJsonKind::nothing;
        bool isKey = false;
    };

    [[nodiscard]] const Record& recordOf(const KvCOutlineValue& value) const { return records_[value.index_]; }
    /// The key of value `index`; null when it is no member.
    [[nodiscard]] const Record* keyOf(std::uint32_t index) const;
    /// The content of a key, text or number.
    [[nodiscard]] std::string_view contentOf(const Record& record) const;
    /// The step of a path that leads to value `index`.
    [[nodiscard]] std::string stepTo(std::uint32_t index) const;

    std::string_view text_;
    /// In the order of the text. It grows without being copied.
    std::deque<Record> records_;
    /// The values of each array or object, one behind the other in ascending order.
    std::vector<std::uint32_t> children_;
    /// Contents that are written with escapes, without them.
    std::string decoded_;
};
